// SPDX-License-Identifier: Apache-2.0

#include "commands/check_report.h"

#include "text/quoted_text.h"

namespace nmos_instrument::program {
namespace {

using nlohmann::ordered_json;

std::string shown_name(const std::string& name)
{
    return name == "-" ? "standard input" : host::printable(name);
}

} // namespace

void CheckReport::add(const std::string& name, const SdpJudgement& judgement)
{
    ++(judgement.taken ? taken_ : refused_);
    const char* const verdict = judgement.taken ? "taken" : "refused";
    if (form_ == ReportForm::text) {
        out_ << shown_name(name) << ": " << verdict << '\n' << judgement.text;
    } else if (form_ == ReportForm::json) {
        ordered_json entry = {{"file", name}, {"verdict", verdict}};
        entry.update(judgement.members);
        files_.push_back(entry);
    }
}

void CheckReport::add_unreadable(const std::string& name, const std::string& reason)
{
    ++unreadable_;
    if (form_ == ReportForm::json)
        files_.push_back({{"file", name}, {"verdict", "not readable"}, {"reason", reason}});
    else
        errors_ << shown_name(name) << ": cannot be read: " << reason << '\n';
}

ExitStatus CheckReport::finish()
{
    if (form_ == ReportForm::json)
        print_json();
    else if (form_ == ReportForm::text && taken_ + refused_ + unreadable_ > 1)
        print_summary();
    if (unreadable_ != 0)
        return unreadable;
    return refused_ == 0 ? done : refused;
}

void CheckReport::print_summary()
{
    out_ << taken_ + refused_ + unreadable_ << " files: " << taken_ << " taken, " << refused_
         << " refused, " << unreadable_ << " not readable\n";
}

void CheckReport::print_json()
{
    const ordered_json report = {{"files", files_},
                                 {"summary",
                                  {{"files", files_.size()},
                                   {"taken", taken_},
                                   {"refused", refused_},
                                   {"not_readable", unreadable_}}}};
    // Escaped: some characters behind ASCII move a cursor too. A file name may hold any bytes.
    constexpr bool escaped = true;
    out_ << report.dump(4, ' ', escaped, ordered_json::error_handler_t::replace) << '\n';
}

} // namespace nmos_instrument::program

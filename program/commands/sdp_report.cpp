// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_report.h"

#include <algorithm>
#include <string_view>

#include <nlohmann/json.hpp>

#include "text/quoted_text.h"

namespace nmos_instrument::program {
namespace {

using host::printable;
using nlohmann::ordered_json;

constexpr const char* leg_names[2] = {"primary", "secondary"};

/// "-" if nothing was found.
std::string cell(const std::string& value)
{
    return value.empty() ? "-" : printable(value);
}

/// `text` with spaces up to the next column, at least one.
std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

void print_table(const SdpVerdict& verdict, std::ostream& out)
{
    const auto row = [&out](const std::string& leg, const std::string& source,
                            const std::string& address, const std::string& port) {
        out << "  " << padded(leg, 11) << padded(source, 17) << padded(address, 17) << port << '\n';
    };
    row("leg", "source", "address", "port");
    for (std::size_t i = 0; i < verdict.legs.size(); ++i) {
        const FoundLeg& leg = verdict.legs[i];
        row(leg_names[i], cell(leg.source), cell(leg.address), cell(leg.port));
    }
    for (const FoundValue& found : verdict.format) {
        if (!found.value.empty())
            out << "  " << padded(found.title, 15) << printable(found.value) << '\n';
    }
}

ordered_json or_null(const std::string& value)
{
    return value.empty() ? ordered_json() : ordered_json(value);
}

ordered_json as_json(const SdpVerdict& verdict)
{
    ordered_json object;
    object["verdict"] = verdict.taken ? "taken" : "refused";
    object["messages"] = ordered_json::array();
    for (const SdpMessage& message : verdict.messages)
        object["messages"].push_back(
            {{"line", message.line == 0 ? ordered_json() : ordered_json(message.line)},
             {"text", message.text}});
    object["cause"] = or_null(verdict.cause);
    object["hints"] = verdict.hints;
    object["legs"] = ordered_json::array();
    for (std::size_t i = 0; i < verdict.legs.size(); ++i) {
        const FoundLeg& leg = verdict.legs[i];
        object["legs"].push_back({{"leg", leg_names[i]},
                                  {"source", or_null(leg.source)},
                                  {"address", or_null(leg.address)},
                                  {"port", or_null(leg.port)}});
    }
    for (const FoundValue& found : verdict.format)
        object["format"][found.key] = or_null(found.value);
    return object;
}

} // namespace

void report_as_text(const CheckedFile& file, std::ostream& out, std::ostream& errors)
{
    const std::string name = file.name == "-" ? "standard input" : printable(file.name);
    if (!file.verdict) {
        errors << name << ": cannot be read: " << file.read_error << '\n';
        return;
    }
    const SdpVerdict& verdict = *file.verdict;
    out << name << ": " << (verdict.taken ? "taken" : "refused") << '\n';
    for (const SdpMessage& message : verdict.messages) {
        out << "  ";
        if (message.line != 0)
            out << "line " << message.line << ": ";
        out << printable(message.text) << '\n';
    }
    if (!verdict.cause.empty())
        out << "  " << verdict.cause << '\n';
    print_table(verdict, out);
    for (const std::string& hint : verdict.hints)
        out << "  hint: " << hint << '\n';
}

void report_as_json(const std::vector<CheckedFile>& files, std::ostream& out)
{
    ordered_json report = ordered_json::array();
    for (const CheckedFile& file : files) {
        ordered_json entry = {{"file", file.name}};
        if (file.verdict)
            entry.update(as_json(*file.verdict));
        else
            entry.update({{"verdict", "not readable"}, {"cause", file.read_error}});
        report.push_back(entry);
    }
    out << report.dump(4, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

} // namespace nmos_instrument::program

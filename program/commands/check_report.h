// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_CHECK_REPORT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_CHECK_REPORT_H

#include <cstddef>
#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

#include "commands/exit_status.h"
#include "commands/sdp_judgement.h"

namespace nmos_instrument::program {

enum class ReportForm
{
    text, ///< for people: file by file, then how many there were
    json, ///< for programs: one object at the end
    none
};

/// The report about all files of one command.
class CheckReport
{
public:
    /// As text, and without a report, files that cannot be read are said in `errors`.
    CheckReport(ReportForm form, std::ostream& out, std::ostream& errors)
        : form_(form), out_(out), errors_(errors)
    {}

    void add(const std::string& name, const SdpJudgement& judgement);
    void add_unreadable(const std::string& name, const std::string& reason);

    /// Ends the report. Returns the worst outcome.
    ExitStatus finish();

private:
    void print_summary();
    void print_json();

    const ReportForm form_;
    std::ostream& out_;
    std::ostream& errors_;
    std::size_t taken_ = 0;
    std::size_t refused_ = 0;
    std::size_t unreadable_ = 0;
    nlohmann::ordered_json files_ = nlohmann::ordered_json::array();
};

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_report.h"

#include <cstddef>
#include <optional>
#include <sstream>
#include <string>

#include "commands/report_values.h"
#include "commands/sdp_format.h"
#include "sdp/reading_report.h"
#include "text/quoted_text.h"

namespace nmos_instrument::program {
namespace {

using host::printable;

bool is_error(const host::SdpFinding& finding)
{
    return host::rule_of(finding.code).refuses;
}

void print_findings(const host::SdpFindings& findings, std::ostream& out)
{
    for (const host::SdpFinding& finding : findings.shown())
        out << "  " << (is_error(finding) ? "" : "warning: ")
            << printable(host::finding_text(finding)) << '\n';
    if (findings.left_out() != 0)
        out << "  and " << findings.left_out() << " more findings\n";
}

void print_leg(std::size_t number, const std::optional<host::SdpLeg>& leg,
               const host::MediaInterface& interface, std::ostream& out)
{
    const auto row = [&](const std::string& address, const std::string& source,
                         const std::string& port) {
        out << "  " << padded(std::to_string(number), 5) << padded(address, 17)
            << padded(source, 17) << padded(port, 7) << printable(interface.name) << " ("
            << interface.address << ")\n";
    };
    if (leg)
        row(leg->address, leg->source.empty() ? "any" : leg->source, std::to_string(leg->port));
    else
        row("nothing", "-", "-");
}

/// What the receiver would join.
void print_legs(const OfferedFile& offered, const host::Configuration& configuration,
                std::ostream& out)
{
    out << "  leg  address          source           port   interface\n";
    for (std::size_t i = 0; i < host::leg_count; ++i)
        print_leg(i + 1, offered.reading.legs[i], configuration.interfaces[i], out);
}

std::string as_text(const OfferedFile& offered, const host::Configuration& configuration)
{
    const host::SdpReading& reading = offered.reading;
    std::ostringstream out;
    print_findings(reading.findings, out);
    if (reading.taken())
        print_legs(offered, configuration, out);
    out << "  receiver       " << name_of(offered.receiver) << '\n';
    if (!reading.origin.empty())
        out << "  origin         " << printable(reading.origin) << '\n';
    print_format(host::format_values(reading.format), out);
    for (const std::string& hint : offered.hints)
        out << "  hint: " << hint << '\n';
    return out.str();
}

} // namespace

SdpJudgement report_on(const OfferedFile& offered, const host::Configuration& configuration)
{
    return {offered.reading.taken(), as_text(offered, configuration),
            nlohmann::ordered_json::parse(host::reading_report(
                {offered.reading, offered.receiver, configuration.interfaces, offered.hints}))};
}

} // namespace nmos_instrument::program

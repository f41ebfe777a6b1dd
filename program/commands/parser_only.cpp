// SPDX-License-Identifier: Apache-2.0

#include "commands/parser_only.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <optional>
#include <sstream>
#include <utility>

#include "commands/option_rules.h"
#include "commands/report_values.h"
#include "commands/sdp_format.h"
#include "text/quoted_text.h"

namespace nmos_instrument::program {
namespace {

using host::printable;
using nlohmann::ordered_json;

constexpr const char* leg_names[2] = {"primary", "secondary"};

/// The library's code of a video format; only the class of the code matters.
short format_code(const std::string& word)
{
    constexpr std::pair<const char*, short> words[] = {
        {"2k", current_format_2k}, {"4k", current_format_4k}, {"any", current_format_any}};
    for (const auto& [name, code] : words) {
        if (word == name)
            return code;
    }
    const std::optional<long long> code = parse_number(word);
    if (!code || *code < std::numeric_limits<short>::min() ||
        *code > std::numeric_limits<short>::max())
        throw CLI::ValidationError(
            "--current-format", refusal_of(word, "2k, 4k, any, or a number from -32768 to 32767"));
    return static_cast<short>(*code);
}

/// "--NAME" and "--no-NAME" for something that is true by default, which `chooser` allows.
void add_switch(CLI::App& command, CLI::Option* chooser, const std::string& name, bool& value,
                const std::string& help)
{
    CLI::Option* const yes = command.add_flag_callback(
        "--" + name, [&value] { value = true; }, "with --parser-only: " + help + " (default)");
    CLI::Option* const no = command.add_flag_callback(
        "--no-" + name, [&value] { value = false; }, "with --parser-only: the opposite");
    no->excludes(yes);
    yes->needs(chooser);
    no->needs(chooser);
}

/// "-" if nothing was found.
std::string cell(const std::string& value)
{
    return value.empty() ? "-" : printable(value);
}

void print_legs(const SdpVerdict& verdict, std::ostream& out)
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
}

std::string as_text(const SdpVerdict& verdict)
{
    std::ostringstream out;
    for (const SdpMessage& message : verdict.messages) {
        out << "  ";
        if (message.line != 0)
            out << "line " << message.line << ": ";
        out << printable(message.text) << '\n';
    }
    if (!verdict.cause.empty())
        out << "  " << verdict.cause << '\n';
    print_legs(verdict, out);
    print_format(verdict.format, out);
    for (const std::string& hint : verdict.hints)
        out << "  hint: " << hint << '\n';
    return out.str();
}

ordered_json as_json(const SdpVerdict& verdict)
{
    ordered_json object = {{"messages", ordered_json::array()},
                           {"cause", or_null(verdict.cause)},
                           {"hints", verdict.hints},
                           {"legs", ordered_json::array()},
                           {"format", format_as_json(verdict.format)}};
    for (const SdpMessage& message : verdict.messages)
        object["messages"].push_back(
            {{"line", line_or_null(message.line)}, {"text", message.text}});
    for (std::size_t i = 0; i < verdict.legs.size(); ++i) {
        const FoundLeg& leg = verdict.legs[i];
        object["legs"].push_back({{"leg", leg_names[i]},
                                  {"source", or_null(leg.source)},
                                  {"address", or_null(leg.address)},
                                  {"port", or_null(leg.port)}});
    }
    return object;
}

} // namespace

CLI::Option* ParserOnlyOptions::add_to(CLI::App& command)
{
    CLI::Option* const chooser =
        command.add_flag("--parser-only", chosen,
                         "show what the library's parser says about each file, and nothing else");
    add_switch(command, chooser, "switch-capable", instrument.switch_capable,
               "the instrument can switch between 2K and 4K");
    add_switch(command, chooser, "switch-allowed", instrument.switch_allowed,
               "its settings permit the switch");
    command
        .add_option_function<std::string>(
            "--current-format",
            [this](const std::string& word) { instrument.current_format = format_code(word); },
            "with --parser-only: the video format that the instrument is set to: 2k (stays at 2K), "
            "4k or any (may change), or its code as a number")
        ->default_str("any")
        ->type_name("2k|4k|any|N")
        ->needs(chooser);
    return chooser;
}

SdpJudgement judge_by_parser(const std::string& sdp, const ReceivingInstrument& instrument)
{
    const SdpVerdict verdict = judge_sdp(sdp, instrument);
    return {verdict.taken, as_text(verdict), as_json(verdict)};
}

} // namespace nmos_instrument::program

// SPDX-License-Identifier: Apache-2.0

#include "commands/check_sdp.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/check_report.h"
#include "commands/configuration_options.h"
#include "commands/explain_sdp.h"
#include "commands/offered_receivers.h"
#include "commands/option_rules.h"
#include "commands/parser_only.h"
#include "commands/sdp_inputs.h"
#include "commands/sdp_report.h"
#include "text/whole_file.h"
#include "text/word_list.h"

namespace nmos_instrument::program {
namespace {

/// Hundreds of times the size of an SDP file.
constexpr std::size_t largest_file = std::size_t{4} << 20;

struct CheckSdpOptions
{
    std::vector<std::string> names;
    std::optional<host::Essence> receiver;
    std::string format = "text";
    bool quiet = false;
    std::string explain;
    ConfigurationOptions configuration;
    ParserOnlyOptions parser_only;
};

ReportForm form_of(const CheckSdpOptions& options)
{
    if (options.quiet)
        return ReportForm::none;
    return options.format == "json" ? ReportForm::json : ReportForm::text;
}

ExitStatus check_files(const CheckSdpOptions& options, const SdpJudge& judge)
{
    CheckReport report(form_of(options), std::cout, std::cerr);
    for (const SdpInput& input : sdp_inputs(options.names)) {
        if (!input.error.empty()) {
            report.add_unreadable(input.name, input.error);
            continue;
        }
        try {
            report.add(input.name, judge(host::read_whole_file(input.name, largest_file)));
        } catch (const host::UnreadableFile& error) {
            report.add_unreadable(input.name, error.what());
        }
    }
    return report.finish();
}

/// Whether there is a receiver of the kind that the options name; if not, it is said.
bool can_be_asked(const OfferedReceivers& receivers, std::optional<host::Essence> kind)
{
    if (!kind || receivers.are_shown(*kind))
        return true;
    std::vector<host::Essence> shown;
    std::copy_if(host::all_essences.begin(), host::all_essences.end(), std::back_inserter(shown),
                 [&](host::Essence other) { return receivers.are_shown(other); });
    std::cerr << "--receiver: " << refusal_of(name_of(*kind), host::word_list(shown, host::name_of))
              << ": the configuration shows no other receivers\n";
    return false;
}

ExitStatus check_as_receiver(const CheckSdpOptions& options,
                             const host::Configuration& configuration)
{
    const OfferedReceivers receivers(configuration);
    if (!can_be_asked(receivers, options.receiver))
        return wrong_use;
    return check_files(options, [&](const std::string& sdp) {
        return report_on(receivers.offer(sdp, options.receiver), configuration);
    });
}

ExitStatus check_with_parser(const CheckSdpOptions& options)
{
    return check_files(options, [&](const std::string& sdp) {
        return judge_by_parser(sdp, options.parser_only.instrument);
    });
}

/// Whether the names can be checked; if not, it is said.
bool are_usable(const std::vector<std::string>& names)
{
    if (names.empty())
        std::cerr << "check-sdp: FILE is missing: an SDP file, a directory, or - for standard "
                     "input\n";
    const auto standard_input = std::count(names.begin(), names.end(), "-");
    if (standard_input > 1)
        std::cerr << "FILE: standard input (\"-\") can be read only once\n";
    return !names.empty() && standard_input <= 1;
}

ExitStatus check_sdp(const CheckSdpOptions& options)
{
    if (!options.explain.empty())
        return explain_sdp(options.explain, std::cout, std::cerr);
    const bool about_configuration = options.configuration.asks_about_configuration();
    if (!about_configuration && !are_usable(options.names))
        return wrong_use;
    if (options.parser_only.chosen)
        return check_with_parser(options);

    ExitStatus status = done;
    const std::optional<host::Configuration> configuration =
        load(options.configuration, std::cerr, status);
    if (!configuration)
        return status;
    if (!about_configuration)
        return check_as_receiver(options, *configuration);
    answer_about(*configuration, options.configuration, std::cout);
    return done;
}

/// The kind of receiver that `word`, one of their names, stands for.
host::Essence receiver_kind(const std::string& word)
{
    return *std::find_if(host::all_essences.begin(), host::all_essences.end(),
                         [&](host::Essence kind) { return word == name_of(kind); });
}

void add_options(CLI::App& command, CheckSdpOptions& options)
{
    CLI::Option* const names = command.add_option(
        "FILE", options.names,
        "SDP files; - is standard input; a directory stands for the files in it and below it "
        "whose names end in .sdp");
    names->type_name("");
    CLI::Option* const receiver = command.add_option_function<std::string>(
        "--receiver",
        [&options](const std::string& word) { options.receiver = receiver_kind(word); },
        "the kind of receiver that is offered the files; without it, the kind of the first medium "
        "in each file");
    receiver->check(one_of({"video", "audio", "ancillary"}))->type_name("video|audio|ancillary");
    command
        .add_option("--format", options.format, "how to report; docs/check-sdp.md explains both")
        ->check(one_of({"text", "json"}))
        ->capture_default_str()
        ->type_name("text|json");
    command.add_flag("--quiet", options.quiet, "no report; the exit status tells");
    command
        .add_option("--explain", options.explain,
                    "explain the code of a finding, like SDP048, or all of them, and exit")
        ->excludes(names)
        ->type_name("CODE|all");
    options.configuration.add_to(command);
    CLI::Option* const parser_only = options.parser_only.add_to(command);
    for (CLI::Option* const option :
         {receiver, command.get_option("--config"), command.get_option("--print-config"),
          command.get_option("--check-config")})
        parser_only->excludes(option);
}

} // namespace

void add_check_sdp_command(CLI::App& program, ExitStatus& status)
{
    const auto options = std::make_shared<CheckSdpOptions>();
    CLI::App* const command = program.add_subcommand(
        "check-sdp", "Tells whether a receiver of serve would take SDP files");
    add_options(*command, *options);
    command->callback([options, &status] { status = check_sdp(*options); });
}

} // namespace nmos_instrument::program

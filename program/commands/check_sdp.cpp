// SPDX-License-Identifier: Apache-2.0

#include "commands/check_sdp.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "commands/number_option.h"
#include "commands/sdp_report.h"
#include "commands/sdp_verdict.h"
#include "text/whole_file.h"

namespace nmos_instrument::program {
namespace {

/// Hundreds of times the size of an SDP file.
constexpr std::size_t largest_file = std::size_t{4} << 20;

struct CheckSdpOptions
{
    std::vector<std::string> files;
    ReceivingInstrument instrument;
    bool json = false;
};

CheckedFile check(const std::string& name, const ReceivingInstrument& instrument)
{
    CheckedFile file;
    file.name = name;
    try {
        file.verdict = judge_sdp(host::read_whole_file(name, largest_file), instrument);
    } catch (const host::UnreadableFile& error) {
        file.read_error = error.what();
    }
    return file;
}

ExitStatus status_of(const CheckedFile& file)
{
    if (!file.verdict)
        return unreadable;
    return file.verdict->taken ? done : refused;
}

ExitStatus check_sdp(const CheckSdpOptions& options)
{
    if (std::count(options.files.begin(), options.files.end(), "-") > 1) {
        std::cerr << "FILE: standard input (\"-\") can be read only once\n";
        return wrong_use;
    }
    ExitStatus worst = done;
    std::vector<CheckedFile> files;
    for (const std::string& name : options.files) {
        files.push_back(check(name, options.instrument));
        worst = std::max(worst, status_of(files.back()));
        if (!options.json)
            report_as_text(files.back(), std::cout, std::cerr);
    }
    if (options.json)
        report_as_json(files, std::cout);
    return worst;
}

/// The library's code of a video format; only the class of the code matters.
short format_code(const std::string& word)
{
    constexpr std::pair<const char*, short> words[] = {
        {"2k", host::format_2k}, {"4k", host::format_4k}, {"any", host::format_any}};
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

/// "--NAME" and "--no-NAME" for something that is true by default.
void add_switch(CLI::App& command, const std::string& name, bool& value, const std::string& help)
{
    CLI::Option* const yes = command.add_flag_callback(
        "--" + name, [&value] { value = true; }, help + " (default)");
    command
        .add_flag_callback(
            "--no-" + name, [&value] { value = false; }, "the opposite")
        ->excludes(yes);
}

} // namespace

void add_check_sdp_command(CLI::App& program, ExitStatus& status)
{
    const auto options = std::make_shared<CheckSdpOptions>();
    CLI::App* const command =
        program.add_subcommand("check-sdp", "Tells whether a receiver would take SDP files");
    command->add_option("FILE", options->files, "SDP files; - is standard input")
        ->required()
        ->type_name("");
    ReceivingInstrument& instrument = options->instrument;
    add_switch(*command, "switch-capable", instrument.switch_capable,
               "the instrument can switch between 2K and 4K");
    add_switch(*command, "switch-allowed", instrument.switch_allowed,
               "its settings permit the switch");
    command
        ->add_option_function<std::string>(
            "--current-format",
            [&instrument](const std::string& word) {
                instrument.current_format = format_code(word);
            },
            "the video format that the instrument is set to: 2k (stays at 2K), 4k or any (may "
            "change), or its code as a number")
        ->default_str("any")
        ->type_name("2k|4k|any|N");
    command->add_flag("--json", options->json, "report as JSON");
    command->callback([options, &status] { status = check_sdp(*options); });
}

} // namespace nmos_instrument::program

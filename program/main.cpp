// SPDX-License-Identifier: Apache-2.0
//
// nmos-instrument: a virtual instrument around the library, of which it includes the public headers
// only.

#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "commands/check_sdp.h"
#include "commands/exit_status.h"
#include "commands/print.h"
#include "commands/serve_options.h"
#include "commands/version_text.h"
#include "text/word_list.h"

namespace {

using namespace nmos_instrument::program;

/// CLI11 would only call it an unexpected argument, without naming the commands that there are.
bool is_unknown_command(const CLI::App& program, int argc, char** argv)
{
    if (argc < 2 || argv[1][0] == '-' || argv[1][0] == '\0')
        return false;
    const auto commands = program.get_subcommands([](const CLI::App*) { return true; });
    const auto name_of = [](const CLI::App* command) { return command->get_name(); };
    for (const CLI::App* const command : commands) {
        if (name_of(command) == argv[1])
            return false;
    }
    std::cerr << "no command \"" << argv[1] << "\"; there are "
              << nmos_instrument::host::word_list(commands, name_of) << '\n';
    return true;
}

ExitStatus run(int argc, char** argv)
{
    ExitStatus status = done;
    CLI::App program("A virtual SMPTE ST 2110 measuring instrument in an AMWA NMOS network",
                     "nmos-instrument");
    program.set_version_flag("--version", version_text());
    program.require_subcommand(0, 1);
    add_print_command(program, status);
    add_check_sdp_command(program, status);
    add_serve_command(program, status);
    if (is_unknown_command(program, argc, argv))
        return wrong_use;
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? done : wrong_use;
    }
    // We ask for the command ourselves: CLI11 would do so before it looks at a word that is not a
    // command, and would never name that word.
    if (program.get_subcommands().empty()) {
        std::cerr << "A command is required\nRun with --help for more information.\n";
        return wrong_use;
    }
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const ExitStatus status = run(argc, argv);
        // A full disk or a closed pipe is noticed only here.
        if (!std::cout.flush()) {
            std::cerr << "standard output: cannot be written\n";
            return unreadable;
        }
        return status;
    } catch (const std::exception& error) {
        std::cerr << "internal error: " << error.what() << '\n';
        return unreadable;
    }
}

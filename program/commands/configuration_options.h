// SPDX-License-Identifier: Apache-2.0
//
// The options with which a command takes its configuration.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_CONFIGURATION_OPTIONS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_CONFIGURATION_OPTIONS_H

#include <optional>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>

#include "commands/exit_status.h"
#include "configuration/configuration.h"

namespace nmos_instrument::program {

struct ConfigurationOptions
{
    std::optional<std::string> file; ///< none: the default configuration
    bool print = false;
    bool check = false;

    /// `command` keeps references to this object.
    void add_to(CLI::App& command);

    bool asks_about_configuration() const { return print || check; }
};

/// The configuration that the options ask for; nothing, and a status other than `done`, when it
/// could not be had. What is wrong goes to `errors`.
std::optional<host::Configuration> load(const ConfigurationOptions& options, std::ostream& errors,
                                        ExitStatus& status);

/// What --print-config or --check-config ask for.
void answer_about(const host::Configuration& configuration, const ConfigurationOptions& options,
                  std::ostream& out);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The options that tell a command which configuration to use.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_CONFIGURATION_OPTIONS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_CONFIGURATION_OPTIONS_H

#include <optional>
#include <ostream>
#include <string>

#include "commands/cli11_names.h"
#include "commands/exit_status.h"
#include "configuration/configuration.h"

namespace nmos_instrument::program {

struct ConfigurationOptions
{
    std::optional<std::string> file; ///< without it: the default configuration
    bool print = false;
    bool check = false;

    /// `command` keeps references to this object.
    void add_to(CLI::App& command);

    bool asks_about_configuration() const { return print || check; }
};

/// The configuration that the options ask for. Returns nothing, with a status other than `done`, if
/// it cannot be read or is refused; `errors` then receives the reasons.
std::optional<host::Configuration> load(const ConfigurationOptions& options, std::ostream& errors,
                                        ExitStatus& status);

/// Answers --print-config and --check-config.
void answer_about(const host::Configuration& configuration, const ConfigurationOptions& options,
                  std::ostream& out);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_PRINT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_PRINT_H

#include "commands/cli11_names.h"
#include "commands/exit_status.h"

namespace nmos_instrument::program {

/// Adds `print TEXT [INDEX]`, which prints any text of the library. `status` receives the outcome
/// if the command line asks for this command.
void add_print_command(CLI::App& program, ExitStatus& status);

} // namespace nmos_instrument::program

#endif

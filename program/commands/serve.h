// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_H

#include <CLI/CLI.hpp>

#include "commands/exit_status.h"

namespace nmos_instrument::program {

/// Adds `serve`, which runs the instrument on the network until SIGTERM or SIGINT.
void add_serve_command(CLI::App& program, ExitStatus& status);

} // namespace nmos_instrument::program

#endif

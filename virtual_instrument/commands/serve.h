// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_COMMANDS_SERVE_H
#define VIRTUAL_INSTRUMENT_COMMANDS_SERVE_H

#include <CLI/CLI.hpp>

#include "exit_status.h"

namespace virtual_instrument {

/// Adds `serve`, which runs the instrument on the network until SIGTERM or SIGINT.
void add_serve_command(CLI::App& program, ExitStatus& status);

} // namespace virtual_instrument

#endif

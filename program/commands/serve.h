// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_H

#include "commands/exit_status.h"
#include "commands/serve_options.h"

namespace nmos_instrument::program {

/// Runs the instrument on the network until SIGTERM or SIGINT.
ExitStatus serve(const ServeOptions& options);

} // namespace nmos_instrument::program

#endif

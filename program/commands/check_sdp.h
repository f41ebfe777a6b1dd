// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_CHECK_SDP_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_CHECK_SDP_H

#include "commands/cli11_names.h"
#include "commands/exit_status.h"

namespace nmos_instrument::program {

/// Adds `check-sdp FILE...`, which tells whether a receiver of `serve` would take SDP files.
/// `status` receives the worst outcome if the command line asks for this command.
void add_check_sdp_command(CLI::App& program, ExitStatus& status);

} // namespace nmos_instrument::program

#endif

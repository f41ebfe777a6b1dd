// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_COMMANDS_CHECK_SDP_H
#define VIRTUAL_INSTRUMENT_COMMANDS_CHECK_SDP_H

#include <CLI/CLI.hpp>

#include "exit_status.h"

namespace virtual_instrument {

/// Adds `check-sdp FILE...`, which tells whether a receiver would take SDP files. When the command
/// line asks for it, `status` receives the worst outcome.
void add_check_sdp_command(CLI::App& program, ExitStatus& status);

} // namespace virtual_instrument

#endif

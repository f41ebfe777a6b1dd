// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_EXPLAIN_SDP_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_EXPLAIN_SDP_H

#include <ostream>
#include <string>

#include "commands/exit_status.h"

namespace nmos_instrument::program {

/// What a finding with this code means. "all": a table of all codes, in Markdown, which the manual
/// has. A word that is no code is said in `errors`.
ExitStatus explain_sdp(const std::string& code, std::ostream& out, std::ostream& errors);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_REPORT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_REPORT_H

#include "commands/offered_receivers.h"
#include "commands/sdp_judgement.h"
#include "configuration/configuration.h"

namespace nmos_instrument::program {

/// What there is to say about a file that was offered to a receiver with the interfaces of
/// `configuration`.
SdpJudgement report_on(const OfferedFile& offered, const host::Configuration& configuration);

} // namespace nmos_instrument::program

#endif

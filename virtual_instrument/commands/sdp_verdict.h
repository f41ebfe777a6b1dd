// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_COMMANDS_SDP_VERDICT_H
#define VIRTUAL_INSTRUMENT_COMMANDS_SDP_VERDICT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

namespace virtual_instrument {

/// The instrument that receives.
struct ReceivingInstrument
{
    bool switch_capable = true;
    short current_format = 3;
    bool switch_allowed = true;
};

struct SdpMessage
{
    std::size_t line; ///< of the file, from 1; 0 when it is not known
    std::string text; ///< without line break
};

struct SdpVerdict
{
    bool taken = false;
    std::vector<SdpMessage> messages; ///< the parser's, in its order
    std::string cause;                ///< why the parser gave up; empty when it did not
    std::vector<std::string> hints;   ///< what is worth knowing in either case
    sdp_str found = sdp_str();
};

/// What ConnectionApi::analyze_sdp_file says about a file.
SdpVerdict judge_sdp(const std::string& sdp, const ReceivingInstrument& instrument);

/// The leading integer of a text of sdp_str, as the parser reads it; empty when there is none.
std::string leading_number(std::string_view text);

} // namespace virtual_instrument

#endif

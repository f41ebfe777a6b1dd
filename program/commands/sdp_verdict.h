// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_VERDICT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_VERDICT_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "configuration/video_format.h"
#include "sdp/format_values.h"

namespace nmos_instrument::program {

/// The instrument whose receivers are offered the file.
struct ReceivingInstrument
{
    bool switch_capable = true;
    short current_format = current_format_any;
    bool switch_allowed = true;
};

struct SdpMessage
{
    std::size_t line; ///< of the file, from 1; 0 if unknown
    std::string text; ///< without its line break
};

/// Texts as they are in the file; empty where it has none.
struct FoundLeg
{
    std::string source;
    std::string address;
    std::string port;
};

struct SdpVerdict
{
    bool taken = false;
    std::vector<SdpMessage> messages; ///< of the parser, in its order
    std::string cause;            ///< why the file was not read to its end, or at all; else empty
    std::array<FoundLeg, 2> legs; ///< primary, secondary
    std::vector<host::FormatValue> format;
    std::vector<std::string> hints; ///< worth knowing whatever the verdict
};

/// What ConnectionApi::analyze_sdp_file says about a file; a file without a line is refused.
SdpVerdict judge_sdp(const std::string& sdp, const ReceivingInstrument& instrument);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_VERDICT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_VERDICT_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace nmos_instrument::program {

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

/// Texts as they stand in the file; empty when it does not say them.
struct FoundLeg
{
    std::string source;
    std::string address;
    std::string port;
};

/// One thing that a file says about both legs together.
struct FoundValue
{
    const char* key;   ///< for programs
    const char* title; ///< for people
    std::string value; ///< empty when the file does not say it
};

struct SdpVerdict
{
    bool taken = false;
    std::vector<SdpMessage> messages; ///< the parser's, in its order
    std::string cause;                ///< why the parser gave up; empty when it did not
    std::array<FoundLeg, 2> legs;     ///< primary, secondary
    std::vector<FoundValue> format;
    std::vector<std::string> hints; ///< what is worth knowing in either case
};

/// What ConnectionApi::analyze_sdp_file says about a file.
SdpVerdict judge_sdp(const std::string& sdp, const ReceivingInstrument& instrument);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What the command line names to be checked.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_INPUTS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_INPUTS_H

#include <string>
#include <vector>

namespace nmos_instrument::program {

/// A file to check, or why there is none.
struct SdpInput
{
    std::string name; ///< "-" is standard input
    std::string error;
};

/// A directory stands for the regular files in it and below it whose names end in ".sdp", sorted by
/// name. Links to directories are not followed.
std::vector<SdpInput> sdp_inputs(const std::vector<std::string>& names);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The library's parser searches lines for keywords and takes everything behind the first a=mid line
// for the second leg. So it is given only what it understands: the two legs, each with its own
// lines and a=mid at the end, without an o= line, whose address it would take for a source.

#ifndef NMOS_INSTRUMENT_HOST_SDP_NORMAL_SDP_H
#define NMOS_INSTRUMENT_HOST_SDP_NORMAL_SDP_H

#include <cstddef>
#include <string>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

#include "sdp/leg_paths.h"
#include "sdp/sdp_finding.h"
#include "sdp/sdp_receiver.h"
#include "sdp/select_media.h"

namespace nmos_instrument::host {

struct NormalLine
{
    std::string text;      ///< without its line break
    std::size_t line;      ///< of the file that it came from; 0: none
    bool describes_format; ///< a=rtpmap or a=fmtp, as they are in the file
};

/// A leg whose path is not known has its format only.
std::vector<NormalLine> normal_sdp(const LegMedia& media, const SdpLegs& legs);

/// Asks the library about a file in that form. What it complains about becomes findings; `found` is
/// what it found.
void ask_library(const std::vector<NormalLine>& lines, const SdpLegs& legs,
                 const SdpReceiver& receiver, SdpFindings& findings, sdp_str& found);

} // namespace nmos_instrument::host

#endif

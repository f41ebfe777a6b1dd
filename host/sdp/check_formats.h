// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_CHECK_FORMATS_H
#define NMOS_INSTRUMENT_HOST_SDP_CHECK_FORMATS_H

#include <string>
#include <vector>

#include "sdp/sdp_finding.h"
#include "sdp/select_media.h"

namespace nmos_instrument::host {

/// Whether the payload types, encodings and clock rates of the legs fit a receiver of `media_types`,
/// and whether both legs carry the same. What the format parameters may be, the library's parser
/// knows: see normal_sdp.h.
void check_formats(const LegMedia& media, const std::vector<std::string>& media_types,
                   SdpFindings& findings);

} // namespace nmos_instrument::host

#endif

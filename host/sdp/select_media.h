// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_SELECT_MEDIA_H
#define NMOS_INSTRUMENT_HOST_SDP_SELECT_MEDIA_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "sdp/rtp_format.h"
#include "sdp/sdp_description.h"
#include "sdp/sdp_finding.h"

namespace nmos_instrument::host {

/// A medium that is one of the legs, with the format in which it is received.
struct LegMedium
{
    const SdpMedium* medium;
    RtpFormat format;
};

using LegMedia = std::array<std::optional<LegMedium>, leg_count>;

struct SelectedMedia
{
    LegMedia legs;
    bool named_as_pair = false; ///< in a DUP group
};

/// Which media of a file are the legs for a receiver of `media_types`. There are none if the
/// findings say why.
///
/// - Media of a DUP group (RFC 7104): the pair that is named first, in the order in which the media
///   stand in the file, which is the order of the paths.
/// - Without such a group: the one medium that fits.
SelectedMedia select_media(const SdpDescription& description,
                           const std::vector<std::string>& media_types, SdpFindings& findings);

} // namespace nmos_instrument::host

#endif

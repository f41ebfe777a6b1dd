// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_SDP_RECEIVER_H
#define NMOS_INSTRUMENT_HOST_SDP_SDP_RECEIVER_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "configuration/video_format.h"

namespace nmos_instrument::host {

/// The receiver that is offered a file.
struct SdpReceiver
{
    std::vector<std::string> media_types; ///< like "video/raw"
    /// For each leg: the only unicast address at which it can receive; nothing: any.
    std::array<std::optional<std::string>, leg_count> interface_addresses;
    bool switch_capable = true; ///< between 2K and 4K
    bool switch_allowed = true;
    short current_format = current_format_any; ///< as ConnectionApi::analyze_sdp_file takes it
};

} // namespace nmos_instrument::host

#endif

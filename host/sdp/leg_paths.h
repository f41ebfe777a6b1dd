// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_LEG_PATHS_H
#define NMOS_INSTRUMENT_HOST_SDP_LEG_PATHS_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "sdp/sdp_finding.h"
#include "sdp/select_media.h"

namespace nmos_instrument::host {

/// What a receiver joins on one of its interfaces.
struct SdpLeg
{
    std::string address; ///< dotted quad: a multicast group, or the unicast address of the receiver
    bool multicast = true;
    std::string source; ///< dotted quad; empty: any
    int port = 0;
    std::size_t line = 0; ///< of its m= line, from 1

    bool operator==(const SdpLeg&) const = default;
};

using SdpLegs = std::array<std::optional<SdpLeg>, leg_count>;

/// The paths of the media that are the legs. A medium that is not one of a pair is both legs if it has
/// two sources (RFC 7104 4.1) or is sent twice from one (RFC 7104 4.3): `selected` then has it twice.
/// `interface_addresses`: for each leg, the only unicast address that it can have; nothing: any.
SdpLegs leg_paths(const SdpSection& session, SelectedMedia& selected,
                  const std::array<std::optional<std::string>, leg_count>& interface_addresses,
                  SdpFindings& findings);

} // namespace nmos_instrument::host

#endif

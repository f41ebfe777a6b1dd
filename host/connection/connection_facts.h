// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_CONNECTION_FACTS_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_CONNECTION_FACTS_H

#include <array>
#include <string>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "configuration/resource_counts.h"
#include "configuration/video_format.h"
#include "connection/connection_patch.h"

namespace nmos_instrument::host {

/// What is fixed about one sender or receiver. A change is checked against these facts and the
/// staged half.
struct ConnectionFacts
{
    Side side = Side::sender;
    /// For each leg: the only address that a sender's "source_ip" or a receiver's "interface_ip"
    /// can have.
    std::array<std::string, leg_count> interface_addresses;
    std::array<std::string, leg_count> start_addresses; ///< senders: "auto" for "destination_ip"
    std::vector<std::string> media_types;               ///< receivers, like "video/raw"
    bool switch_capable = true;                         ///< between 2K and 4K
    bool switch_allowed = true;
    short current_format = format_any; ///< as ConnectionApi::analyze_sdp_file takes it
};

ConnectionFacts facts_about(const Configuration& configuration, const NMOS_IS04_ST& node,
                            const ConnectionKey& key);

} // namespace nmos_instrument::host

#endif

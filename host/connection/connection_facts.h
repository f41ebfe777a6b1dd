// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_CONNECTION_FACTS_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_CONNECTION_FACTS_H

#include <array>
#include <map>
#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "configuration/resource_counts.h"
#include "connection/connection_patch.h"
#include "sdp/read_sdp.h"

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
    SdpReceiver sdp;                                    ///< receivers: which SDP files they take
};

ConnectionFacts facts_about(const Configuration& configuration, const NMOS_IS04_ST& node,
                            const ConnectionKey& key);

/// Of every sender and receiver that the node has.
std::map<ConnectionKey, ConnectionFacts> facts_about_all(const Configuration& configuration,
                                                         const NMOS_IS04_ST& node);

/// The ids of the same.
std::map<ConnectionKey, std::string> connection_ids(const NMOS_IS04_ST& node);

} // namespace nmos_instrument::host

#endif

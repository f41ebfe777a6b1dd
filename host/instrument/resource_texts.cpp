// SPDX-License-Identifier: Apache-2.0

#include "instrument/resource_texts.h"

#include "configuration/resource_counts.h"

namespace nmos_instrument::host {

std::string sdp_text(Records& records, const Conformance& conformance, std::size_t sender)
{
    set_sdp_session(records, sender);
    NMOS_IS05_ST& connections = records.connections;
    return conformance.sdp(ConnectionApi().make_single_senderid_sdp(
                               &connections, static_cast<int>(sender), &records.settings),
                           essence_of_sender(sender), connections.senders[sender].active);
}

std::uint64_t sdp_hash(Records& records, const Conformance& conformance, std::size_t sender)
{
    std::uint64_t& version = records.sdp_sessions.at(sender).version;
    const PutBack kept(version);
    version = 0;
    return stable_hash(sdp_text(records, conformance, sender));
}

} // namespace nmos_instrument::host

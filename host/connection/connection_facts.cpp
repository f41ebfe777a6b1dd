// SPDX-License-Identifier: Apache-2.0

#include "connection/connection_facts.h"

#include "records/fill_records.h"
#include "records/record_shape.h"
#include "records/record_text.h"
#include "sdp/rtp_format.h"

namespace nmos_instrument::host {

ConnectionFacts facts_about(const Configuration& configuration, const NMOS_IS04_ST& node,
                            const ConnectionKey& key)
{
    ConnectionFacts facts;
    facts.side = key.side;
    for (std::size_t i = 0; i < leg_count; ++i)
        facts.interface_addresses[i] = configuration.interfaces[i].address;
    if (key.side == Side::sender) {
        const SenderDestinations& destinations = configuration.destinations.at(key.index);
        facts.start_addresses = {destinations.primary.address, destinations.secondary.address};
        return facts;
    }
    const RECEIVER_IS04_ST& receiver = node.receivers[key.index];
    if (configuration.carriage == Carriage::st2022_6 &&
        essence_of_receiver(key.index) == Essence::video) {
        // The record has no room for this text.
        facts.sdp.media_types.emplace_back(st2022_6_media_type);
    } else {
        for (std::int32_t i = 0; i < receiver.media_types_count; ++i)
            facts.sdp.media_types.emplace_back(text_of(receiver.media_types[i]));
    }
    for (std::size_t i = 0; i < leg_count; ++i)
        facts.sdp.interface_addresses[i] = configuration.interfaces[i].address;
    facts.sdp.switch_capable = configuration.format_switching.capable;
    facts.sdp.switch_allowed = configuration.format_switching.allowed;
    facts.sdp.current_format = current_format(configuration);
    return facts;
}

std::map<ConnectionKey, ConnectionFacts> facts_about_all(const Configuration& configuration,
                                                         const NMOS_IS04_ST& node)
{
    std::map<ConnectionKey, ConnectionFacts> facts;
    for (const auto& [key, id] : connection_ids(node))
        facts[key] = facts_about(configuration, node, key);
    return facts;
}

std::map<ConnectionKey, std::string> connection_ids(const NMOS_IS04_ST& node)
{
    std::map<ConnectionKey, std::string> ids;
    for (std::size_t i = 0; i < sender_count; ++i) {
        if (has_sender(node, i))
            ids[{Side::sender, i}] = text_of(node.senders[i].id);
    }
    for (std::size_t i = 0; i < receiver_count; ++i) {
        if (has_receiver(node, i))
            ids[{Side::receiver, i}] = text_of(node.receivers[i].id);
    }
    return ids;
}

} // namespace nmos_instrument::host

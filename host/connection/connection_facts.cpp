// SPDX-License-Identifier: Apache-2.0

#include "connection/connection_facts.h"

#include "records/fill_records.h"
#include "records/record_text.h"

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
    for (std::int32_t i = 0; i < receiver.media_types_count; ++i)
        facts.media_types.emplace_back(text_of(receiver.media_types[i]));
    facts.switch_capable = configuration.format_switching.capable;
    facts.switch_allowed = configuration.format_switching.allowed;
    facts.current_format = current_format(configuration);
    return facts;
}

} // namespace nmos_instrument::host

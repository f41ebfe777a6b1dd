// SPDX-License-Identifier: Apache-2.0

#include "records/fill_connections.h"

#include "records/record_text.h"
#include "text/ascii.h"

namespace nmos_instrument::host {
namespace {

void start_half(CONNECTION_HALF_IS05_ST& half, bool enabled)
{
    half.leg_count = leg_count;
    half.master_enable = enabled;
    set_text(half.peer_id, null_text);
    set_text(half.mode, null_text);
    set_text(half.requested_time, null_text);
    set_text(half.activation_time, null_text);
    set_text(half.transport_file_data, null_text);
    set_text(half.transport_file_type, null_text);
}

CONNECTION_HALF_IS05_ST sender_half(const Configuration& configuration, std::size_t sender)
{
    CONNECTION_HALF_IS05_ST half{};
    start_half(half, true);
    const SenderDestinations& settings = configuration.destinations[sender];
    const Destination* const destinations[leg_count] = {&settings.primary, &settings.secondary};
    for (std::size_t i = 0; i < leg_count; ++i) {
        CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
        set_text(leg.source_ip, configuration.interfaces[i].address);
        set_text(leg.destination_ip, destinations[i]->address);
        leg.destination_port = destinations[i]->port;
        leg.rtp_enabled = 1;
    }
    return half;
}

CONNECTION_HALF_IS05_ST receiver_half(const Configuration& configuration)
{
    CONNECTION_HALF_IS05_ST half{};
    start_half(half, false);
    for (std::size_t i = 0; i < leg_count; ++i) {
        CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
        set_text(leg.source_ip, null_text);
        set_text(leg.destination_ip, null_text);
        set_text(leg.interface_ip, configuration.interfaces[i].address);
        leg.destination_port = auto_port;
        leg.rtp_enabled = 1;
    }
    return half;
}

} // namespace

void fill_connections(const Configuration& configuration, NMOS_IS05_ST& connections)
{
    // SDP files spell it in upper case, as RFC 7273 does; IS-04 uses lower case.
    set_text(connections.ptp_grandmaster_id, upper_case(configuration.clock.grandmaster));
    for (std::size_t i = 0; i < sender_count; ++i) {
        connections.senders[i].active = sender_half(configuration, i);
        connections.senders[i].staged = connections.senders[i].active;
    }
    for (CONNECTION_IS05_ST& receiver : connections.receivers) {
        receiver.active = receiver_half(configuration);
        receiver.staged = receiver.active;
    }
}

} // namespace nmos_instrument::host

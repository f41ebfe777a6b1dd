// SPDX-License-Identifier: Apache-2.0

#include "connection/activate_staged.h"

#include "records/record_text.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

template <std::size_t N>
void resolve_auto(char (&field)[N], const std::string& choice)
{
    if (text_of(field) == auto_text)
        set_text(field, choice);
}

/// True if no leg that is switched on sends to a group; if both are off, both legs count.
bool is_unicast(const CONNECTION_HALF_IS05_ST& active)
{
    bool any_on = false;
    for (std::int32_t i = 0; i < active.leg_count; ++i)
        any_on = any_on || active.transport_params[i].rtp_enabled != 0;
    for (std::int32_t i = 0; i < active.leg_count; ++i) {
        const CONNECTION_LEG_IS05_ST& leg = active.transport_params[i];
        const auto address = ipv4_from_dotted_quad(std::string(text_of(leg.destination_ip)));
        const bool counts = leg.rtp_enabled != 0 || !any_on;
        if (counts && (!address || is_multicast(*address)))
            return false;
    }
    return true;
}

} // namespace

CONNECTION_HALF_IS05_ST activate_staged(const CONNECTION_HALF_IS05_ST& staged,
                                        const ConnectionFacts& facts,
                                        const ActivationTexts& activation)
{
    CONNECTION_HALF_IS05_ST active = staged;
    for (std::size_t i = 0; i < leg_count; ++i) {
        CONNECTION_LEG_IS05_ST& leg = active.transport_params[i];
        if (facts.side == Side::sender) {
            resolve_auto(leg.source_ip, facts.interface_addresses[i]);
            resolve_auto(leg.destination_ip, facts.start_addresses[i]);
        } else {
            resolve_auto(leg.interface_ip, facts.interface_addresses[i]);
        }
    }
    set_activation(active, activation);
    return active;
}

SUBSCRIPTION_IS04_ST subscription_of(const CONNECTION_HALF_IS05_ST& active, Side side)
{
    SUBSCRIPTION_IS04_ST subscription{};
    subscription.active = active.master_enable != 0;
    const bool names_peer =
        active.master_enable != 0 && (side == Side::receiver || is_unicast(active));
    set_text(subscription.peer_id, names_peer ? text_of(active.peer_id) : null_text);
    return subscription;
}

} // namespace nmos_instrument::host

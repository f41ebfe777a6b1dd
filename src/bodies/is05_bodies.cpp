// SPDX-License-Identifier: Apache-2.0

#include "bodies/is05_bodies.h"

#include <cstddef>
#include <string_view>

#include "records/record_fields.h"

namespace nmos_instrument {
namespace {

void write_activation(JsonWriter& json, const CONNECTION_HALF_IS05_ST& half)
{
    json.key("activation").begin_object();
    json.member_or_null("activation_time", half.activation_time);
    json.member_or_null("mode", half.mode);
    json.member_or_null("requested_time", half.requested_time);
    json.end_object();
}

/// What all four bodies begin with.
void write_common_part(JsonWriter& json, const CONNECTION_HALF_IS05_ST& half,
                       std::string_view peer_key)
{
    write_activation(json, half);
    json.flag("master_enable", half.master_enable);
    json.member_or_null(peer_key, half.peer_id);
}

void write_receiver_leg(JsonWriter& json, const CONNECTION_LEG_IS05_ST& leg)
{
    json.begin_object();
    json.member("destination_port", leg.destination_port);
    json.member_or_null("interface_ip", leg.interface_ip);
    json.member_or_null("multicast_ip", leg.destination_ip);
    json.flag("rtp_enabled", leg.rtp_enabled);
    json.member_or_null("source_ip", leg.source_ip);
    json.end_object();
}

template <std::size_t N>
void write_sender_address(JsonWriter& json, const char (&address)[N], UnsetAddress unset)
{
    if (unset == UnsetAddress::automatic && holds(address, "null"))
        json.literal("auto");
    else
        json.string_or_null(address);
}

void write_sender_leg(JsonWriter& json, const CONNECTION_LEG_IS05_ST& leg,
                      const CONNECTION_LEG_IS05_ST& staged_leg, UnsetAddress unset)
{
    json.begin_object();
    write_sender_address(json.key("destination_ip"), leg.destination_ip, unset);
    json.member("destination_port", leg.destination_port);
    json.flag("rtp_enabled", leg.rtp_enabled);
    write_sender_address(json.key("source_ip"), leg.source_ip, unset);
    json.member("source_port", staged_leg.destination_port);
    json.end_object();
}

} // namespace

[[gnu::flatten]] void write_receiver_connection(JsonText& text, const CONNECTION_HALF_IS05_ST& half)
{
    JsonWriter json(text);
    json.begin_object();
    write_common_part(json, half, "sender_id");
    json.key("transport_file").begin_object();
    json.member_or_null("data", half.transport_file_data);
    json.member_or_null("type", half.transport_file_type);
    json.end_object();
    json.key("transport_params").begin_array();
    for (const CONNECTION_LEG_IS05_ST& leg : valid_entries(half.transport_params, half.leg_count))
        write_receiver_leg(json, leg);
    json.end_array();
    json.end_object();
}

[[gnu::flatten]] void write_sender_connection(JsonText& text, const CONNECTION_HALF_IS05_ST& half,
                                              const CONNECTION_HALF_IS05_ST& staged,
                                              UnsetAddress unset)
{
    JsonWriter json(text);
    json.begin_object();
    write_common_part(json, half, "receiver_id");
    json.key("transport_params").begin_array();
    for (std::size_t i = 0; i < valid_count(half.transport_params, half.leg_count); ++i)
        write_sender_leg(json, half.transport_params[i], staged.transport_params[i], unset);
    json.end_array();
    json.end_object();
}

} // namespace nmos_instrument

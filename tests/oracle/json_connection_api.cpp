// SPDX-License-Identifier: Apache-2.0

#include "oracle/json_oracle.h"

#include <stdexcept>

#include "oracle/random_records.h"

namespace oracle {

namespace {

picojson::value string_or_auto(const char (&field)[32])
{
    return says_null(field) ? picojson::value("auto") : string_of(field);
}

picojson::value activation(const CONNECTION_HALF_IS05_ST& half)
{
    picojson::object object;
    add(object, "mode", string_or_null(half.mode));
    add(object, "requested_time", string_or_null(half.requested_time));
    add(object, "activation_time", string_or_null(half.activation_time));
    return picojson::value(object);
}

picojson::value receiver_leg(const CONNECTION_LEG_IS05_ST& leg)
{
    picojson::object object;
    add(object, "destination_port", number(leg.destination_port));
    add(object, "interface_ip", string_or_null(leg.interface_ip));
    add(object, "multicast_ip", string_or_null(leg.destination_ip));
    add(object, "rtp_enabled", boolean(leg.rtp_enabled));
    add(object, "source_ip", string_or_null(leg.source_ip));
    return picojson::value(object);
}

std::string receiver_body(const CONNECTION_HALF_IS05_ST& half)
{
    picojson::object object;
    add(object, "sender_id", string_or_null(half.peer_id));
    add(object, "master_enable", boolean(half.master_enable));
    add(object, "activation", activation(half));

    picojson::object transport_file;
    add(transport_file, "data", string_or_null(half.transport_file_data));
    add(transport_file, "type", string_or_null(half.transport_file_type));
    add(object, "transport_file", picojson::value(transport_file));

    picojson::array legs;
    for (int i = 0; i < bounded(half.leg_count, 2); ++i)
        legs.push_back(receiver_leg(half.transport_params[i]));
    add(object, "transport_params", picojson::value(legs));
    return with_escaped_slashes(picojson::value(object));
}

picojson::value staged_sender_leg(const CONNECTION_LEG_IS05_ST& leg)
{
    picojson::object object;
    add(object, "destination_ip", string_or_auto(leg.destination_ip));
    add(object, "source_ip", string_or_auto(leg.source_ip));
    add(object, "destination_port", number(leg.destination_port));
    add(object, "source_port", number(leg.destination_port));
    add(object, "rtp_enabled", boolean(leg.rtp_enabled));
    return picojson::value(object);
}

picojson::value active_sender_leg(const CONNECTION_LEG_IS05_ST& leg,
                                  const CONNECTION_LEG_IS05_ST& staged)
{
    picojson::object object;
    add(object, "destination_ip", string_or_null(leg.destination_ip));
    add(object, "source_ip", string_or_null(leg.source_ip));
    add(object, "destination_port", number(leg.destination_port));
    add(object, "source_port", number(staged.destination_port));
    add(object, "rtp_enabled", boolean(leg.rtp_enabled));
    return picojson::value(object);
}

std::string sender_body(const CONNECTION_HALF_IS05_ST& half, const picojson::array& legs)
{
    picojson::object object;
    add(object, "master_enable", boolean(half.master_enable));
    add(object, "receiver_id", string_or_null(half.peer_id));
    add(object, "activation", activation(half));
    add(object, "transport_params", picojson::value(legs));
    return with_escaped_slashes(picojson::value(object));
}

void check_receiver_index(int index)
{
    if (index < 0)
        throw std::out_of_range("0");
}

/// The comma looks at the index alone, whether or not a later entry is listed.
std::string id_line(const char (&id)[48], int index, int count)
{
    return "  \"" + text_of(id) + (index < count - 1 ? "/\",\n" : "/\"\n");
}

} // namespace

std::string make_single_senderid_staged(const NMOS_IS05_ST& state, int index)
{
    check_index(index, 6);
    const CONNECTION_HALF_IS05_ST& half = state.senders[index].staged;
    picojson::array legs;
    for (int i = 0; i < bounded(half.leg_count, 2); ++i)
        legs.push_back(staged_sender_leg(half.transport_params[i]));
    return sender_body(half, legs);
}

std::string make_single_senderid_active(const NMOS_IS05_ST& state, int index)
{
    check_index(index, 6);
    const CONNECTION_IS05_ST& connection = state.senders[index];
    picojson::array legs;
    for (int i = 0; i < bounded(connection.active.leg_count, 2); ++i)
        legs.push_back(active_sender_leg(connection.active.transport_params[i],
                                         connection.staged.transport_params[i]));
    return sender_body(connection.active, legs);
}

std::string make_single_receiverid_staged(NMOS_IS05_ST& state, int index)
{
    check_receiver_index(index);
    return receiver_body(receiver_of(state, index).staged);
}

std::string make_single_receiverid_active(NMOS_IS05_ST& state, int index)
{
    check_receiver_index(index);
    return receiver_body(receiver_of(state, index).active);
}

std::string make_single_senders(const NMOS_IS04_ST& record, bool all)
{
    std::string text = "[\n";
    const int count = bounded(record.senders_count, 6);
    for (int i = 0; i < count; ++i) {
        const bool listed = i == 0 || i >= 4 || all;
        if (listed)
            text += id_line(record.senders[i].id, i, count);
    }
    return text + "]\n";
}

std::string make_single_receivers(const NMOS_IS04_ST& record, int restricted, int audio_mode)
{
    std::string text = "[\n";
    const int count = bounded(record.receivers_count, 24);
    for (int i = 0; i < count; ++i) {
        bool listed = true;
        if (i >= 4 && i <= 19) {
            const int group = i % 4;
            listed = restricted == 0 && (audio_mode == 0   ? group == 0
                                         : audio_mode == 1 ? group <= 1
                                                           : true);
        } else if (i >= 20) {
            listed = restricted == 0;
        }
        if (listed)
            text += id_line(record.receivers[i].id, i, count);
    }
    return text + "]\n";
}

} // namespace oracle

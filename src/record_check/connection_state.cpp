// SPDX-License-Identifier: Apache-2.0
//
// The fields are visited in the order of the record, and only those that a body
// or an SDP file shows.

#include "nmos_instrument/record_check.h"

#include <iterator>

#include "record_check/checks.h"
#include "record_check/rules.h"
#include "records/membership.h"
#include "records/record_fields.h"

namespace nmos_instrument {

namespace {

enum class Side : std::uint8_t
{
    sender,
    receiver
};

bool is_cleared(const CONNECTION_HALF_IS05_ST& half)
{
    return half.leg_count == 0 && half.peer_id[0] == '\0' && half.master_enable == 0 &&
           half.mode[0] == '\0' && half.requested_time[0] == '\0' &&
           half.activation_time[0] == '\0';
}

std::size_t legs_of(const CONNECTION_HALF_IS05_ST& half)
{
    return valid_entries(half.transport_params, half.leg_count).size();
}

void check_transport_file(const RecordPart& part, const CONNECTION_HALF_IS05_ST& half)
{
    const bool data_is_text =
        part.text_or_null("transport_file_data", half.transport_file_data, any_text);
    // IS-05 v1.0, v1.0-receiver-response-schema.json: both are strings or both are null.
    if (part.text_or_null("transport_file_type", half.transport_file_type, media_type) &&
        data_is_text &&
        holds(half.transport_file_data, "null") != holds(half.transport_file_type, "null"))
        part.report(
            "transport_file_type", half.transport_file_type,
            {"\"null\" must stand in both transport_file_data and this field or in neither"});
}

/// `with_auto`: "auto" is allowed in a staged half only, since active parameters are resolved.
void check_leg(const RecordPart& part, const CONNECTION_LEG_IS05_ST& leg, Side side, bool with_auto)
{
    const TextRule& may_be_auto = with_auto ? ipv4_address_or_auto : ipv4_address;
    const TextRule& remote = side == Side::sender ? may_be_auto : ipv4_address;
    part.text_or_null("source_ip", leg.source_ip, remote);
    part.text_or_null("destination_ip", leg.destination_ip, remote);
    if (side == Side::receiver)
        part.text_or_null("interface_ip", leg.interface_ip, may_be_auto);
    part.number("destination_port", leg.destination_port, 1, 65535);
}

/// A sender's SDP file shows both legs, in use or not. One that is not in use may be cleared.
void check_unused_leg(const RecordPart& part, const CONNECTION_LEG_IS05_ST& leg)
{
    if (leg.source_ip[0] != '\0')
        part.text_or_null("source_ip", leg.source_ip, ipv4_address);
    if (leg.destination_ip[0] != '\0')
        part.text_or_null("destination_ip", leg.destination_ip, ipv4_address);
    part.number("destination_port", leg.destination_port, 0, 65535);
}

void check_half(const RecordPart& part, const CONNECTION_HALF_IS05_ST& half, Side side,
                bool is_staged, std::size_t active_legs)
{
    const std::size_t legs = part.count("leg_count", half.leg_count, half.transport_params, 1);
    part.text_or_null("peer_id", half.peer_id, uuid);
    part.one_of("mode", half.mode,
                "activate_immediate, activate_scheduled_absolute, activate_scheduled_relative, "
                "null");
    part.text_or_null("requested_time", half.requested_time, version_time);
    part.text_or_null("activation_time", half.activation_time, version_time);
    if (side == Side::receiver)
        check_transport_file(part, half);

    for (std::size_t i = 0; i < legs; ++i)
        check_leg(RecordPart(part, {"transport_params", i}), half.transport_params[i], side,
                  is_staged);
    // The active body of a sender shows the staged port as its "source_port", even of a leg that
    // is no longer staged. IS-05 allows a source port of 0.
    if (side == Side::sender && is_staged) {
        for (std::size_t i = legs; i < active_legs; ++i)
            RecordPart(part, {"transport_params", i})
                .number("destination_port", half.transport_params[i].destination_port, 0, 65535);
    }
    if (side == Side::sender && !is_staged) {
        for (std::size_t i = legs; i < std::size(half.transport_params); ++i)
            check_unused_leg(RecordPart(part, {"transport_params", i}), half.transport_params[i]);
    }
}

void check_connection(const RecordPart& part, const CONNECTION_IS05_ST& connection, Side side)
{
    if (!is_in_use(connection))
        return;
    const std::size_t active_legs = legs_of(connection.active);
    check_half(RecordPart(part, "staged"), connection.staged, side, true, active_legs);
    check_half(RecordPart(part, "active"), connection.active, side, false, active_legs);
}

} // namespace

bool is_in_use(const CONNECTION_IS05_ST& connection)
{
    return !is_cleared(connection.staged) || !is_cleared(connection.active);
}

bool has_sdp_files(const NMOS_IS05_ST& record, const Selection& selection)
{
    for (std::size_t i = 0; i < std::size(record.senders); ++i) {
        if (shows_sender(selection, i) && is_in_use(record.senders[i]))
            return true;
    }
    return false;
}

void check_connections(const RecordPart& whole, const NMOS_IS05_ST& record,
                       const Selection& selection)
{
    for (std::size_t i = 0; i < std::size(record.senders); ++i) {
        if (shows_sender(selection, i))
            check_connection(RecordPart(whole, {"senders", i}), record.senders[i], Side::sender);
    }

    // Only the SDP files of senders show these.
    if (has_sdp_files(record, selection)) {
        whole.text("ptp_grandmaster_id", record.ptp_grandmaster_id, eui64);
        whole.text("sdp_session_id", record.sdp_session_id, digits);
        whole.text("sdp_session_version", record.sdp_session_version, digits);
    }

    for (std::size_t i = 0; i < std::size(record.receivers); ++i) {
        if (shows_receiver(selection, i))
            check_connection(RecordPart(whole, {"receivers", i}), record.receivers[i],
                             Side::receiver);
    }
}

std::vector<std::string> check_record(const NMOS_IS05_ST& record)
{
    std::vector<std::string> findings;
    check_connections(RecordPart(findings), record, everything_shown);
    return findings;
}

} // namespace nmos_instrument

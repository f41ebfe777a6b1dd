// SPDX-License-Identifier: Apache-2.0

#include "instrument/saved_state.h"

#include <cstddef>
#include <limits>

#include <nlohmann/json.hpp>

#include "configuration/resource_counts.h"
#include "instrument/saved_value.h"
#include "records/fill_records.h"
#include "records/record_text.h"
#include "text/json_input.h"
#include "text/json_output.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

constexpr std::uint64_t format_number = 1;
constexpr std::uint64_t any_hash = std::numeric_limits<std::uint64_t>::max();

/// Of all kinds: the node and its only device besides the rest.
constexpr std::size_t resource_count =
    2 + source_count + flow_count + sender_count + receiver_count;

// The members stand in ascending order of their keys.

void write_leg(JsonOutput& json, const CONNECTION_LEG_IS05_ST& leg)
{
    json.begin_object();
    json.key("destination_ip").text(text_of(leg.destination_ip));
    json.key("destination_port").number(static_cast<std::uint64_t>(leg.destination_port));
    json.key("interface_ip").text(text_of(leg.interface_ip));
    json.key("rtp_enabled").flag(leg.rtp_enabled != 0);
    json.key("source_ip").text(text_of(leg.source_ip));
    json.end_object();
}

void write_half(JsonOutput& json, const CONNECTION_HALF_IS05_ST& half)
{
    json.begin_object();
    json.key("activation_time").text(text_of(half.activation_time));
    json.key("legs").begin_array();
    for (const CONNECTION_LEG_IS05_ST& leg : half.transport_params)
        write_leg(json.element(), leg);
    json.end_array();
    json.key("master_enable").flag(half.master_enable != 0);
    json.key("mode").text(text_of(half.mode));
    json.key("peer_id").text(text_of(half.peer_id));
    json.key("requested_time").text(text_of(half.requested_time));
    json.key("transport_file_data").text(text_of(half.transport_file_data));
    json.key("transport_file_type").text(text_of(half.transport_file_type));
    json.end_object();
}

void write_connections(JsonOutput& json, const std::map<std::string, SavedConnection>& connections)
{
    json.begin_object();
    for (const auto& [id, connection] : connections) {
        json.key(id).begin_object();
        write_half(json.key("active"), connection.active);
        json.key("sdp_hash").number(connection.sdp_hash);
        json.key("sdp_version").number(connection.sdp_version);
        write_half(json.key("staged"), connection.staged);
        json.end_object();
    }
    json.end_object();
}

void write_counters(JsonOutput& json, const SavedCounters& counters)
{
    const auto write = [&](const char* name, int counter) {
        json.key(name).number(static_cast<std::uint64_t>(counter));
    };
    json.begin_object();
    write("devices", counters.devices);
    write("flows", counters.flows);
    write("receivers", counters.receivers);
    write("self", counters.self);
    write("senders", counters.senders);
    write("sources", counters.sources);
    json.end_object();
}

void write_state(JsonOutput& json, const SavedState& state)
{
    json.begin_object();
    write_counters(json.key("counters"), state.counters);
    write_connections(json.key("receivers"), state.receivers);
    json.key("resources").begin_object();
    for (const auto& [id, resource] : state.resources) {
        json.key(id).begin_object();
        json.key("body_hash").number(resource.body_hash);
        json.key("version").text(to_text(resource.version));
        json.end_object();
    }
    json.end_object();
    write_connections(json.key("senders"), state.senders);
    json.end_object();
}

CONNECTION_HALF_IS05_ST half_from(const SavedValue& value)
{
    CONNECTION_HALF_IS05_ST half{};
    half.leg_count = leg_count;
    value.member("peer_id").copy_to(half.peer_id);
    half.master_enable = value.member("master_enable").flag();
    value.member("mode").copy_to(half.mode);
    value.member("requested_time").copy_to(half.requested_time);
    value.member("activation_time").copy_to(half.activation_time);
    value.member("transport_file_data").copy_to(half.transport_file_data);
    value.member("transport_file_type").copy_to(half.transport_file_type);
    const SavedValue legs = value.member("legs");
    for (std::size_t i = 0; i < leg_count; ++i) {
        const SavedValue from = legs.element(i, leg_count);
        CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
        from.member("source_ip").copy_to(leg.source_ip);
        from.member("destination_ip").copy_to(leg.destination_ip);
        from.member("interface_ip").copy_to(leg.interface_ip);
        leg.destination_port =
            static_cast<int>(from.member("destination_port").whole_number(1, 65535));
        leg.rtp_enabled = from.member("rtp_enabled").flag();
    }
    return half;
}

std::map<std::string, SavedConnection> connections_from(const SavedValue& value, std::size_t most)
{
    std::map<std::string, SavedConnection> connections;
    value.for_each_member(most, [&](const std::string& id, const SavedValue& from) {
        SavedConnection& connection = connections[id];
        connection.staged = half_from(from.member("staged"));
        connection.active = half_from(from.member("active"));
        connection.sdp_version = from.member("sdp_version").whole_number(0, last_sdp_version);
        connection.sdp_hash = from.member("sdp_hash").whole_number(0, any_hash);
    });
    return connections;
}

SavedCounters counters_from(const SavedValue& value)
{
    // Nmos.h: 254 is followed by 0.
    const auto counter = [&](const char* name) {
        return static_cast<int>(value.member(name).whole_number(0, 254));
    };
    return {counter("self"),    counter("sources"), counter("flows"),
            counter("devices"), counter("senders"), counter("receivers")};
}

SavedState state_from(const SavedValue& value)
{
    SavedState state;
    state.counters = counters_from(value.member("counters"));
    value.member("resources")
        .for_each_member(resource_count, [&](const std::string& id, const SavedValue& from) {
            state.resources[id] = {from.member("version").version(),
                                   from.member("body_hash").whole_number(0, any_hash)};
        });
    state.senders = connections_from(value.member("senders"), sender_count);
    state.receivers = connections_from(value.member("receivers"), receiver_count);
    return state;
}

/// Throws DamagedState.
SavedState state_from_document(const nlohmann::json& document)
{
    const SavedValue whole(document);
    whole.member("format").whole_number(format_number, format_number);
    const SavedValue state = whole.member("state");
    if (whole.member("checksum").whole_number(0, any_hash) != stable_hash(state.json().dump()))
        throw DamagedState("the checksum does not match the content");
    return state_from(state);
}

} // namespace

std::uint64_t stable_hash(const std::string& text)
{
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3;
    }
    return hash;
}

std::string write_saved_state(const SavedState& state)
{
    JsonOutput compact(JsonForm::compact);
    write_state(compact, state);

    JsonOutput json(JsonForm::indented);
    json.begin_object();
    json.key("checksum").number(stable_hash(compact.take()));
    json.key("format").number(format_number);
    write_state(json.key("state"), state);
    json.end_object();
    return json.take() + '\n';
}

SavedState parse_saved_state(const std::string& text)
{
    try {
        const JsonDocument document = parse_json(text, JsonComments::refused);
        return state_from_document(document.value());
    } catch (const MalformedJson& error) {
        throw DamagedState(error.what());
    }
}

} // namespace nmos_instrument::host

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
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

constexpr std::uint64_t format_number = 1;
constexpr std::uint64_t any_hash = std::numeric_limits<std::uint64_t>::max();

/// Of all kinds: the node and its only device besides the rest.
constexpr std::size_t resource_count =
    2 + source_count + flow_count + sender_count + receiver_count;

json json_of(const CONNECTION_HALF_IS05_ST& half)
{
    json legs = json::array();
    for (const CONNECTION_LEG_IS05_ST& leg : half.transport_params) {
        legs.push_back({{"source_ip", text_of(leg.source_ip)},
                        {"destination_ip", text_of(leg.destination_ip)},
                        {"interface_ip", text_of(leg.interface_ip)},
                        {"destination_port", static_cast<int>(leg.destination_port)},
                        {"rtp_enabled", leg.rtp_enabled != 0}});
    }
    return {{"peer_id", text_of(half.peer_id)},
            {"master_enable", half.master_enable != 0},
            {"mode", text_of(half.mode)},
            {"requested_time", text_of(half.requested_time)},
            {"activation_time", text_of(half.activation_time)},
            {"transport_file_data", text_of(half.transport_file_data)},
            {"transport_file_type", text_of(half.transport_file_type)},
            {"legs", legs}};
}

json json_of(const std::map<std::string, SavedConnection>& connections)
{
    json object = json::object();
    for (const auto& [id, connection] : connections) {
        object[id] = {{"staged", json_of(connection.staged)},
                      {"active", json_of(connection.active)},
                      {"sdp_version", connection.sdp_version},
                      {"sdp_hash", connection.sdp_hash}};
    }
    return object;
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
SavedState state_from_document(const json& document)
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
    const SavedCounters& counters = state.counters;
    json resources = json::object();
    for (const auto& [id, resource] : state.resources)
        resources[id] = {{"version", to_text(resource.version)}, {"body_hash", resource.body_hash}};
    const json object = {{"counters",
                          {{"self", counters.self},
                           {"sources", counters.sources},
                           {"flows", counters.flows},
                           {"devices", counters.devices},
                           {"senders", counters.senders},
                           {"receivers", counters.receivers}}},
                         {"resources", resources},
                         {"senders", json_of(state.senders)},
                         {"receivers", json_of(state.receivers)}};
    const json document = {
        {"format", format_number}, {"checksum", stable_hash(object.dump())}, {"state", object}};
    return document.dump(1) + '\n';
}

SavedState parse_saved_state(const std::string& text)
{
    try {
        return state_from_document(parse_json(text, JsonComments::refused));
    } catch (const MalformedJson& error) {
        throw DamagedState(error.what());
    }
}

} // namespace nmos_instrument::host

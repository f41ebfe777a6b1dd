// SPDX-License-Identifier: Apache-2.0

#include "instrument/saved_state.h"

#include <nlohmann/json.hpp>

#include "configuration/resource_counts.h"
#include "records/record_text.h"
#include "text/json_input.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

constexpr int format_number = 1;

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

template <std::size_t N>
void read_text(const json& object, const char* key, char (&field)[N])
{
    set_text(field, object.at(key).get_ref<const std::string&>());
}

CONNECTION_HALF_IS05_ST half_from(const json& object)
{
    CONNECTION_HALF_IS05_ST half{};
    half.leg_count = leg_count;
    read_text(object, "peer_id", half.peer_id);
    half.master_enable = object.at("master_enable").get<bool>();
    read_text(object, "mode", half.mode);
    read_text(object, "requested_time", half.requested_time);
    read_text(object, "activation_time", half.activation_time);
    read_text(object, "transport_file_data", half.transport_file_data);
    read_text(object, "transport_file_type", half.transport_file_type);
    for (std::size_t i = 0; i < leg_count; ++i) {
        const json& from = object.at("legs").at(i);
        CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
        read_text(from, "source_ip", leg.source_ip);
        read_text(from, "destination_ip", leg.destination_ip);
        read_text(from, "interface_ip", leg.interface_ip);
        leg.destination_port = from.at("destination_port").get<int>();
        leg.rtp_enabled = from.at("rtp_enabled").get<bool>();
    }
    return half;
}

std::map<std::string, SavedConnection> connections_from(const json& object)
{
    std::map<std::string, SavedConnection> connections;
    for (const auto& [id, value] : object.items()) {
        SavedConnection& connection = connections[id];
        connection.staged = half_from(value.at("staged"));
        connection.active = half_from(value.at("active"));
        connection.sdp_version = value.at("sdp_version").get<std::uint64_t>();
        connection.sdp_hash = value.at("sdp_hash").get<std::uint64_t>();
    }
    return connections;
}

TaiTime time_from(const json& value)
{
    const auto time = parse_tai_time(value.get_ref<const std::string&>());
    if (!time)
        throw DamagedState("found " + value.dump() + " as the version of a resource");
    return *time;
}

SavedState state_from(const json& object)
{
    SavedState state;
    const json& counters = object.at("counters");
    state.counters = {counters.at("self").get<int>(),    counters.at("sources").get<int>(),
                      counters.at("flows").get<int>(),   counters.at("devices").get<int>(),
                      counters.at("senders").get<int>(), counters.at("receivers").get<int>()};
    for (const auto& [id, resource] : object.at("resources").items())
        state.resources[id] = {time_from(resource.at("version")),
                               resource.at("body_hash").get<std::uint64_t>()};
    state.senders = connections_from(object.at("senders"));
    state.receivers = connections_from(object.at("receivers"));
    return state;
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
        const JsonDocument parsed = parse_json(text, JsonComments::refused);
        const json& document = parsed.value();
        if (document.at("format") != format_number)
            throw DamagedState("found format " + document.at("format").dump() +
                               ", allowed: " + std::to_string(format_number));
        const json& object = document.at("state");
        if (document.at("checksum") != stable_hash(object.dump()))
            throw DamagedState("the checksum does not match the content");
        return state_from(object);
    } catch (const MalformedJson& error) {
        throw DamagedState(error.what());
    } catch (const json::exception& error) {
        throw DamagedState(error.what());
    } catch (const std::length_error& error) {
        throw DamagedState(error.what());
    }
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "connection/parse_patch.h"

#include <cstdint>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/json_place.h"
#include "records/record_text.h"
#include "text/ipv4_address.h"
#include "text/uuid.h"
#include "text/word_list.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

/// One member that an object may have, and the function that reads it into the patch.
template <class Target>
struct Member
{
    std::string_view name;
    void (*read)(const JsonPlace& place, Target& target);
};

/// False if `place` is not an object.
template <class Target>
bool read_object(const JsonPlace& place, std::span<const Member<Target>> members, Target& target)
{
    if (!place.value().is_object()) {
        place.refuse("an object with any of " + word_list(members, &Member<Target>::name));
        return false;
    }
    for (const auto& [key, value] : place.value().items()) {
        const JsonPlace found = place.member(key, value);
        const Member<Target>* known = nullptr;
        for (const Member<Target>& member : members) {
            if (member.name == key)
                known = &member;
        }
        if (known != nullptr)
            known->read(found, target);
        else
            found.say("unknown member, allowed: " + word_list(members, &Member<Target>::name));
    }
    return true;
}

void read_bool(const JsonPlace& place, std::optional<bool>& target)
{
    if (place.value().is_boolean())
        target = place.value().get<bool>();
    else
        place.refuse("true or false");
}

void read_port(const JsonPlace& place, std::optional<int>& target)
{
    const json& value = place.value();
    if (value == auto_text) {
        target = auto_port;
        return;
    }
    // get<int> would wrap a number that does not fit.
    if (value.is_number_unsigned()) {
        const auto port = value.get<std::uint64_t>();
        if (port >= 1 && port <= 65535) {
            target = static_cast<int>(port);
            return;
        }
    }
    place.refuse("an integer from 1 to 65535, or \"auto\"");
}

struct AddressRule
{
    bool null_too = false;
    bool auto_too = false;
    bool multicast_only = false;
};

std::string in_words(const AddressRule& rule)
{
    std::string words = rule.multicast_only
                            ? "a multicast IPv4 address, 224.0.0.0 to 239.255.255.255"
                            : "an IPv4 address as a dotted quad";
    if (rule.auto_too)
        words += ", or \"auto\"";
    if (rule.null_too)
        words += ", or null";
    return words;
}

void read_address(const JsonPlace& place, const AddressRule& rule,
                  std::optional<std::string>& target)
{
    const json& value = place.value();
    if (rule.null_too && value.is_null()) {
        target = null_text;
        return;
    }
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        if (rule.auto_too && text == auto_text) {
            target = auto_text;
            return;
        }
        if (const auto address = ipv4_from_dotted_quad(text);
            address && (!rule.multicast_only || is_multicast(*address))) {
            target = text;
            return;
        }
        if (is_ipv6(text)) {
            place.refuse(in_words(rule) + "; this instrument does not support IPv6");
            return;
        }
    }
    place.refuse(in_words(rule));
}

constexpr Member<LegPatch> sender_leg_members[] = {
    {"destination_ip",
     [](const JsonPlace& place, LegPatch& leg) {
         read_address(place, {.auto_too = true}, leg.destination_ip);
     }},
    {"destination_port",
     [](const JsonPlace& place, LegPatch& leg) { read_port(place, leg.destination_port); }},
    {"rtp_enabled",
     [](const JsonPlace& place, LegPatch& leg) { read_bool(place, leg.rtp_enabled); }},
    {"source_ip", [](const JsonPlace& place,
                     LegPatch& leg) { read_address(place, {.auto_too = true}, leg.source_ip); }},
    {"source_port",
     [](const JsonPlace& place, LegPatch& leg) { read_port(place, leg.source_port); }},
};

constexpr Member<LegPatch> receiver_leg_members[] = {
    {"destination_port",
     [](const JsonPlace& place, LegPatch& leg) { read_port(place, leg.destination_port); }},
    {"interface_ip",
     [](const JsonPlace& place, LegPatch& leg) {
         read_address(place, {.auto_too = true}, leg.interface_ip);
     }},
    {"multicast_ip",
     [](const JsonPlace& place, LegPatch& leg) {
         read_address(place, {.null_too = true, .multicast_only = true}, leg.destination_ip);
     }},
    {"rtp_enabled",
     [](const JsonPlace& place, LegPatch& leg) { read_bool(place, leg.rtp_enabled); }},
    {"source_ip", [](const JsonPlace& place,
                     LegPatch& leg) { read_address(place, {.null_too = true}, leg.source_ip); }},
};

void read_legs(const JsonPlace& place, std::span<const Member<LegPatch>> members,
               ConnectionPatch& patch)
{
    if (!place.value().is_array() || place.value().size() != patch.legs.size()) {
        place.refuse("an array of " + std::to_string(patch.legs.size()) +
                     " objects, one for each leg; {} leaves a leg as it is");
        return;
    }
    for (std::size_t i = 0; i < patch.legs.size(); ++i)
        read_object(place.element(i), members, patch.legs[i]);
}

void read_peer_id(const JsonPlace& place, ConnectionPatch& patch)
{
    if (place.value().is_null())
        patch.peer_id = null_text;
    else if (place.value().is_string() && is_uuid(place.value().get_ref<const std::string&>()))
        patch.peer_id = place.value().get<std::string>();
    else
        place.refuse("a UUID in lower case, or null");
}

void read_master_enable(const JsonPlace& place, ConnectionPatch& patch)
{
    read_bool(place, patch.master_enable);
}

void read_file_text(const JsonPlace& place, std::optional<std::string>& target)
{
    if (place.value().is_null())
        target = null_text;
    else if (place.value().is_string() && place.value() != null_text)
        target = place.value().get<std::string>();
    else
        place.refuse("a string other than \"null\", or null");
}

constexpr Member<TransportFilePatch> transport_file_members[] = {
    {"data",
     [](const JsonPlace& place, TransportFilePatch& file) { read_file_text(place, file.data); }},
    {"type",
     [](const JsonPlace& place, TransportFilePatch& file) { read_file_text(place, file.type); }},
};

void read_file_member(const JsonPlace& place, ConnectionPatch& patch)
{
    TransportFilePatch file;
    if (read_object<TransportFilePatch>(place, transport_file_members, file))
        patch.transport_file = file;
}

struct ActivationMembers
{
    std::optional<ActivationMode> mode;
    std::optional<TaiTime> requested_time;
    std::string requested_time_text;
};

constexpr ActivationMode modes[] = {ActivationMode::immediate, ActivationMode::scheduled_absolute,
                                    ActivationMode::scheduled_relative};

void read_mode(const JsonPlace& place, ActivationMembers& target)
{
    if (place.value().is_null()) {
        target.mode = ActivationMode::none;
        return;
    }
    for (const ActivationMode mode : modes) {
        if (place.value() == text_of(mode)) {
            target.mode = mode;
            return;
        }
    }
    place.refuse("\"activate_immediate\", \"activate_scheduled_absolute\", "
                 "\"activate_scheduled_relative\" or null");
}

void read_requested_time(const JsonPlace& place, ActivationMembers& target)
{
    if (place.value().is_null())
        return;
    if (place.value().is_string()) {
        const auto& text = place.value().get_ref<const std::string&>();
        constexpr std::size_t room = sizeof CONNECTION_HALF_IS05_ST::requested_time - 1;
        target.requested_time = parse_tai_time(text);
        target.requested_time_text = text;
        if (target.requested_time && text.size() <= room)
            return;
    }
    target.requested_time.reset();
    place.refuse(std::string(allowed_tai_time()) + ", or null");
}

constexpr Member<ActivationMembers> activation_members[] = {
    {"mode", read_mode},
    {"requested_time", read_requested_time},
};

void read_activation(const JsonPlace& place, ConnectionPatch& patch)
{
    ActivationMembers members;
    if (!read_object<ActivationMembers>(place, activation_members, members))
        return;
    if (!place.value().contains("mode")) {
        place.say("\"mode\" is missing; it may be null");
        return;
    }
    if (!members.mode)
        return;
    ActivationRequest request{*members.mode, {}, {}};
    if (is_scheduled(request.mode)) {
        const auto time = place.value().find("requested_time");
        if (time == place.value().end() || time->is_null())
            place.say("\"requested_time\" is missing; " + std::string(text_of(request.mode)) +
                      " needs " + std::string(allowed_tai_time()));
        if (!members.requested_time)
            return;
        request.requested_time = *members.requested_time;
        request.requested_time_text = members.requested_time_text;
    }
    patch.activation = request;
}

constexpr Member<ConnectionPatch> sender_members[] = {
    {"activation", read_activation},
    {"master_enable", read_master_enable},
    {"receiver_id", read_peer_id},
    {"transport_params",
     [](const JsonPlace& place, ConnectionPatch& patch) {
         read_legs(place, sender_leg_members, patch);
     }},
};

constexpr Member<ConnectionPatch> receiver_members[] = {
    {"activation", read_activation},
    {"master_enable", read_master_enable},
    {"sender_id", read_peer_id},
    {"transport_file", read_file_member},
    {"transport_params",
     [](const JsonPlace& place, ConnectionPatch& patch) {
         read_legs(place, receiver_leg_members, patch);
     }},
};

} // namespace

ConnectionPatch parse_patch(const json& document, Side side, Findings& findings)
{
    ConnectionPatch patch;
    const JsonPlace place(document, findings);
    if (side == Side::sender)
        read_object<ConnectionPatch>(place, sender_members, patch);
    else
        read_object<ConnectionPatch>(place, receiver_members, patch);
    return patch;
}

} // namespace nmos_instrument::host

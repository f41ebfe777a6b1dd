// SPDX-License-Identifier: Apache-2.0

#include "connection/target_request.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "connection/json_place.h"
#include "records/record_text.h"
#include "text/uuid.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

bool is_text(const json& value)
{
    return value.is_string();
}

bool is_id(const json& value)
{
    return value.is_string() && is_uuid(value.get_ref<const std::string&>());
}

bool is_id_or_null(const json& value)
{
    return value.is_null() || is_id(value);
}

bool is_version(const json& value)
{
    return value.is_string() && parse_tai_time(value.get_ref<const std::string&>()).has_value();
}

bool is_list_of_texts(const json& value)
{
    return value.is_array() && std::all_of(value.begin(), value.end(), is_text);
}

bool is_tags(const json& value)
{
    return value.is_object() && std::all_of(value.begin(), value.end(), is_list_of_texts);
}

bool is_transport(const json& value)
{
    constexpr std::string_view known[] = {"", ".ucast", ".mcast"};
    if (!value.is_string())
        return false;
    const auto& text = value.get_ref<const std::string&>();
    return std::any_of(std::begin(known), std::end(known), [&](std::string_view suffix) {
        return text == "urn:x-nmos:transport:rtp" + std::string(suffix);
    });
}

bool is_http_url(const json& value)
{
    if (!value.is_string())
        return false;
    const auto& text = value.get_ref<const std::string&>();
    return (text.starts_with("http://") || text.starts_with("https://")) &&
           std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

bool is_subscription(const json& value)
{
    if (!value.is_object())
        return false;
    const auto receiver = value.find("receiver_id");
    const auto active = value.find("active");
    return receiver != value.end() && is_id_or_null(*receiver) && active != value.end() &&
           active->is_boolean();
}

struct RequiredMember
{
    const char* name;
    bool (*fits)(const json& value);
    std::string_view allowed;
};

/// IS-04 v1.2, resource_core.json and sender.json. Other members are allowed too.
constexpr RequiredMember required_members[] = {
    {"id", is_id, "a UUID in lower case"},
    {"version", is_version, "\"<seconds>:<nanoseconds>\""},
    {"label", is_text, "a string"},
    {"description", is_text, "a string"},
    {"tags", is_tags, "an object of arrays of strings"},
    {"flow_id", is_id_or_null, "a UUID in lower case, or null"},
    {"transport", is_transport,
     "\"urn:x-nmos:transport:rtp\", \"urn:x-nmos:transport:rtp.mcast\" or "
     "\"urn:x-nmos:transport:rtp.ucast\", which this instrument can receive"},
    {"device_id", is_id, "a UUID in lower case"},
    {"manifest_href", is_http_url, "an http or https URL"},
    {"interface_bindings", is_list_of_texts, "an array of strings"},
    {"subscription", is_subscription, "an object with receiver_id and active"},
};

} // namespace

std::optional<TargetSender> parse_target(const json& document, Findings& findings)
{
    const JsonPlace place(document, findings);
    if (!document.is_object()) {
        place.refuse("a sender, or {}");
        return std::nullopt;
    }
    if (document.empty())
        return std::nullopt;
    for (const RequiredMember& member : required_members) {
        const auto found = document.find(member.name);
        if (found == document.end())
            place.say('"' + std::string(member.name) +
                      "\" is missing, allowed: " + std::string(member.allowed));
        else if (!member.fits(*found))
            place.member(member.name, *found).refuse(member.allowed);
    }
    if (!findings.empty())
        return std::nullopt;
    return TargetSender{document.at("id").get<std::string>(),
                        document.at("manifest_href").get<std::string>()};
}

ConnectionPatch patch_to_connect(const std::string& sender_id, const std::string& sdp)
{
    ConnectionPatch patch;
    patch.peer_id = sender_id;
    patch.master_enable = true;
    patch.transport_file = TransportFilePatch{sdp, "application/sdp"};
    patch.activation = ActivationRequest{ActivationMode::immediate, {}, {}};
    return patch;
}

ConnectionPatch patch_to_disconnect()
{
    ConnectionPatch patch;
    patch.peer_id = null_text;
    patch.master_enable = false;
    patch.transport_file = TransportFilePatch{std::string(null_text), std::string(null_text)};
    patch.activation = ActivationRequest{ActivationMode::immediate, {}, {}};
    return patch;
}

} // namespace nmos_instrument::host

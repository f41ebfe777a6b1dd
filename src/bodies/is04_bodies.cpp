// SPDX-License-Identifier: Apache-2.0

#include "bodies/is04_bodies.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "records/positions.h"
#include "records/record_fields.h"

namespace nmos_instrument {
namespace {

/// Intentional: a node is reached at one address, so only the first endpoint is shown. The others
/// are checked for a port that JSON cannot hold.
void write_endpoints(JsonWriter& json, const NMOS_IS04_ST& node)
{
    const auto endpoints = valid_entries(node.endpoints, node.endpoints_count);
    if (endpoints.empty())
        return;
    for (const ENDPOINT_IS04_ST& endpoint : endpoints) {
        if (!std::isfinite(endpoint.port))
            throw std::overflow_error("");
    }
    const ENDPOINT_IS04_ST& endpoint = endpoints.front();
    json.key("endpoints").begin_array();
    json.begin_object();
    json.member("host", endpoint.host);
    json.member("port", endpoint.port);
    json.member("protocol", endpoint.protocol);
    json.end_object();
    json.end_array();
}

void write_clock(JsonWriter& json, const CLOCK_IS04_ST& clock)
{
    const bool is_ptp = holds(clock.ref_type, "ptp");
    json.begin_object();
    if (is_ptp) {
        json.member("gmid", clock.gmid);
        json.flag("locked", clock.locked);
    }
    json.member("name", clock.name);
    json.member("ref_type", clock.ref_type);
    if (is_ptp) {
        json.flag("traceable", clock.traceable);
        json.member("version", clock.version);
    }
    json.end_object();
}

void write_interface(JsonWriter& json, const INTERFACE_IS04_ST& interface)
{
    json.begin_object();
    json.member_or_null("chassis_id", interface.chassis_id);
    json.member("name", interface.name);
    json.member("port_id", interface.port_id);
    json.end_object();
}

void write_control(JsonWriter& json, const CONTROL_IS04_ST& control)
{
    json.begin_object();
    json.member("href", control.href);
    json.member("type", control.type);
    json.end_object();
}

void write_rate(JsonWriter& json, double numerator, double denominator)
{
    json.begin_object();
    json.member("denominator", denominator);
    json.member("numerator", numerator);
    json.end_object();
}

/// Intentional: all three components have the full size, Cb and Cr of 4:2:2 sampling too, since the
/// record holds one size.
void write_component(JsonWriter& json, const FLOW_IS04_ST& flow, std::string_view name)
{
    json.begin_object();
    json.member("bit_depth", flow.bit_depth);
    json.member("height", flow.frame_height);
    json.key("name").literal(name);
    json.member("width", flow.frame_width);
    json.end_object();
}

/// Intentional: only the first entry is shown, since a sender or receiver has one subscription.
template <std::size_t N>
void write_subscription(JsonWriter& json, std::string_view peer_key,
                        const SUBSCRIPTION_IS04_ST (&entries)[N], std::int32_t count)
{
    json.key("subscription").begin_object();
    if (count > 0) {
        json.flag("active", entries[0].active);
        json.member_or_null(peer_key, entries[0].peer_id);
    }
    json.end_object();
}

/// In a sender's own body every id is a string.
template <std::size_t N>
void write_sender_id(JsonWriter& json, const char (&id)[N], bool may_be_null)
{
    if (may_be_null && holds(id, "null"))
        json.null();
    else
        json.string(id);
}

} // namespace

[[gnu::flatten]] void write_node(JsonText& text, const NMOS_IS04_ST& node)
{
    JsonWriter json(text);
    json.begin_object();
    json.key("api").begin_object();
    write_endpoints(json, node);
    json.strings("versions", node.versions, node.versions_count);
    json.end_object();
    json.key("caps").empty_object();
    json.key("clocks").begin_array();
    for (const CLOCK_IS04_ST& clock : valid_entries(node.clocks, node.clocks_count))
        write_clock(json, clock);
    json.end_array();
    json.member("description", node.description);
    json.member("hostname", node.hostname);
    json.member("href", node.href);
    json.member("id", node.id);
    json.key("interfaces").begin_array();
    for (const INTERFACE_IS04_ST& interface : valid_entries(node.interfaces, node.interfaces_count))
        write_interface(json, interface);
    json.end_array();
    json.member("label", node.label);
    json.key("services").empty_array();
    json.key("tags").empty_object();
    json.member("version", node.version);
    json.end_object();
}

[[gnu::flatten]] void write_device(JsonText& text, const DEVICE_IS04_ST& device,
                                   const DeviceSelection& selection, DeviceTags tags)
{
    JsonWriter json(text);
    json.begin_object();
    json.key("controls").begin_array();
    for (const CONTROL_IS04_ST& control : valid_entries(device.controls, device.controls_count))
        write_control(json, control);
    json.end_array();
    json.member("description", device.description);
    json.member("id", device.id);
    json.member("label", device.label);
    json.member("node_id", device.node_id);
    json.key("receivers").begin_array();
    for (std::size_t i = 0; i < valid_count(device.receivers, device.receiver_ids_count); ++i) {
        if (shows_receiver(selection.receivers, i))
            json.string(device.receivers[i]);
    }
    json.end_array();
    json.key("senders").begin_array();
    for (std::size_t i = 0; i < valid_count(device.senders, device.sender_ids_count); ++i) {
        if (shows_sender(selection.all_senders, i))
            json.string(device.senders[i]);
    }
    json.end_array();
    if (tags == DeviceTags::present)
        json.key("tags").empty_object();
    json.member("type", device.type);
    json.member("version", device.version);
    json.end_object();
}

[[gnu::flatten]] void write_source(JsonText& text, const SOURCE_IS04_ST& source,
                                   std::size_t position)
{
    JsonWriter json(text);
    json.begin_object();
    json.key("caps").empty_object();
    if (position == audio_source) {
        json.key("channels").begin_array();
        json.begin_object();
        json.key("label").literal("");
        json.end_object();
        json.end_array();
    }
    json.member("clock_name", source.clock_name);
    json.member("description", source.description);
    json.member("device_id", source.device_id);
    json.member("format", source.format);
    json.member("id", source.id);
    json.member("label", source.label);
    json.key("parents").empty_array();
    json.key("tags").empty_object();
    json.member("version", source.version);
    json.end_object();
}

[[gnu::flatten]] void write_flow(JsonText& text, const FLOW_IS04_ST& flow, std::size_t position)
{
    const bool is_video = position == video_flow;
    const bool is_audio = position == audio_flow;

    JsonWriter json(text);
    json.begin_object();
    if (is_audio)
        json.member("bit_depth", flow.bit_depth);
    if (is_video) {
        json.member("colorspace", flow.colorspace);
        json.key("components").begin_array();
        write_component(json, flow, "Y");
        write_component(json, flow, "Cb");
        write_component(json, flow, "Cr");
        json.end_array();
    }
    json.member("description", flow.description);
    json.member("device_id", flow.device_id);
    json.member("format", flow.format);
    if (is_video) {
        json.member("frame_height", flow.frame_height);
        json.member("frame_width", flow.frame_width);
    }
    if (is_video || is_audio)
        write_rate(json.key("grain_rate"), flow.grain_rate_numerator, flow.grain_rate_denominator);
    json.member("id", flow.id);
    if (is_video)
        json.member("interlace_mode", flow.interlace_mode);
    json.member("label", flow.label);
    json.member("media_type", flow.media_type);
    json.key("parents").empty_array();
    if (is_audio)
        write_rate(json.key("sample_rate"), flow.sample_rate_numerator, 1);
    json.member("source_id", flow.source_id);
    json.key("tags").empty_object();
    if (is_video)
        json.member("transfer_characteristic", flow.transfer_characteristic);
    json.member("version", flow.version);
    json.end_object();
}

[[gnu::flatten]] void write_sender(JsonText& text, const SENDER_IS04_ST& sender, SenderForm form)
{
    const bool is_target = form == SenderForm::receiver_target;

    JsonWriter json(text);
    json.begin_object();
    if (is_target)
        json.key("caps").empty_object();
    json.member("description", sender.description);
    write_sender_id(json.key("device_id"), sender.device_id, is_target);
    write_sender_id(json.key("flow_id"), sender.flow_id, is_target);
    write_sender_id(json.key("id"), sender.id, is_target);
    json.strings("interface_bindings", sender.interface_bindings, sender.interface_bindings_count);
    json.member("label", sender.label);
    json.member("manifest_href", sender.manifest_href);
    write_subscription(json, "receiver_id", sender.subscription, sender.subscription_count);
    json.key("tags").empty_object();
    json.member("transport", sender.transport);
    json.member("version", sender.version);
    json.end_object();
}

[[gnu::flatten]] void write_receiver(JsonText& text, const RECEIVER_IS04_ST& receiver)
{
    JsonWriter json(text);
    json.begin_object();
    json.key("caps").begin_object();
    json.strings("media_types", receiver.media_types, receiver.media_types_count);
    json.end_object();
    json.member("description", receiver.description);
    json.member("device_id", receiver.device_id);
    json.member("format", receiver.format);
    json.member("id", receiver.id);
    json.strings("interface_bindings", receiver.interface_bindings,
                 receiver.interface_bindings_count);
    json.member("label", receiver.label);
    write_subscription(json, "sender_id", receiver.subscription, receiver.subscription_count);
    json.key("tags").empty_object();
    json.member("transport", receiver.transport);
    json.member("version", receiver.version);
    json.end_object();
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_EXAMPLE_NODE_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_EXAMPLE_NODE_H

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "nmos_instrument/node_state.h"
#include "support/set_text.h"

namespace example_parts {

inline void describe_node(NMOS_IS04_ST& rec)
{
    write_text(rec.id, "node/id");
    write_text(rec.version, "node/version");
    write_text(rec.label, "node/label");
    write_text(rec.description, "node/description");
    write_text(rec.href, "http://192.0.2.10:3212/");
    write_text(rec.hostname, "node/hostname");

    rec.versions_count = 2;
    write_text(rec.versions[0], "v1.1/");
    write_text(rec.versions[1], "v1.2/");

    rec.endpoints_count = 3;
    write_text(rec.endpoints[0].host, "192.0.2.10");
    rec.endpoints[0].port = 3212;
    write_text(rec.endpoints[0].protocol, "http");
    write_text(rec.endpoints[1].host, "192.0.2.11");
    rec.endpoints[1].port = 3213;
    write_text(rec.endpoints[1].protocol, "https");
    write_text(rec.endpoints[2].host, "192.0.2.12");
    rec.endpoints[2].port = 3214;
    write_text(rec.endpoints[2].protocol, "http");

    rec.clocks_count = 3;
    write_text(rec.clocks[0].name, "clk/0");
    write_text(rec.clocks[0].ref_type, "ptp");
    rec.clocks[0].traceable = 1;
    write_text(rec.clocks[0].version, "IEEE1588-2008");
    write_text(rec.clocks[0].gmid, "00-00-5e-ff-fe-00-53-01");
    rec.clocks[0].locked = 0;
    // What only a PTP clock has is left as it was.
    write_text(rec.clocks[1].name, "clk/1");
    write_text(rec.clocks[1].ref_type, "internal");
    write_text(rec.clocks[2].name, "clk/2");
    write_text(rec.clocks[2].ref_type, "ptp");
    rec.clocks[2].traceable = 0;
    write_text(rec.clocks[2].version, "profile/2");
    write_text(rec.clocks[2].gmid, "gmid/2");
    rec.clocks[2].locked = 1;

    rec.interfaces_count = 2;
    write_text(rec.interfaces[0].chassis_id, "null");
    write_text(rec.interfaces[0].port_id, "port/0");
    write_text(rec.interfaces[0].name, "eth/0");
    write_text(rec.interfaces[1].chassis_id, "chassis/1");
    write_text(rec.interfaces[1].port_id, "port/1");
    write_text(rec.interfaces[1].name, "eth/1");

    rec.version_seconds = 1700000123;
    rec.version_nanoseconds = 25;
}

template <typename Resource>
void describe_core(Resource& resource, const std::string& prefix)
{
    write_text(resource.id, prefix + "id");
    write_text(resource.version, prefix + "version");
    write_text(resource.label, prefix + "label");
    write_text(resource.description, prefix + "description");
}

inline void describe_source(SOURCE_IS04_ST& source, const std::string& prefix)
{
    describe_core(source, prefix);
    write_text(source.device_id, prefix + "device");
    write_text(source.clock_name, prefix + "clock");
    write_text(source.format, prefix + "format");
}

inline void describe_sources(NMOS_IS04_ST& rec)
{
    rec.sources_count = 4;
    describe_source(rec.sources[0], "source/0/");
    describe_source(rec.sources[1], "source/1/");
    describe_source(rec.sources[2], "source/2/");
    describe_source(rec.sources[3], "source/3/");
    // The position decides what is audio, not this text.
    write_text(rec.sources[0].format, "urn:x-nmos:format:audio");
    write_text(rec.sources[1].format, "urn:x-nmos:format:video");
}

inline void describe_flow(FLOW_IS04_ST& flow, const std::string& prefix)
{
    describe_core(flow, prefix);
    write_text(flow.format, prefix + "format");
    write_text(flow.source_id, prefix + "source");
    write_text(flow.device_id, prefix + "device");
}

/// Fields that the kind of an entry does not use are left as they were.
inline void describe_flows(NMOS_IS04_ST& rec)
{
    rec.flows_count = 4;
    FLOW_IS04_ST& video = rec.flows[0];
    describe_flow(video, "flow/0/");
    video.frame_width = 1920;
    video.frame_height = 1080;
    write_text(video.interlace_mode, "flow/0/interlace");
    write_text(video.colorspace, "flow/0/colorspace");
    write_text(video.transfer_characteristic, "flow/0/transfer");
    write_text(video.media_type, "video/raw");
    video.bit_depth = 10;
    video.grain_rate_denominator = 1001;
    video.grain_rate_numerator = 60000;

    FLOW_IS04_ST& audio = rec.flows[1];
    describe_flow(audio, "flow/1/");
    write_text(audio.media_type, "audio/L24");
    audio.bit_depth = 24;
    audio.grain_rate_denominator = 125;
    audio.grain_rate_numerator = 6000;
    audio.sample_rate_numerator = 48000;

    // The position decides what is video or audio, not these texts.
    describe_flow(rec.flows[2], "flow/2/");
    write_text(rec.flows[2].format, "urn:x-nmos:format:video");
    write_text(rec.flows[2].media_type, "video/raw");
    describe_flow(rec.flows[3], "flow/3/");
    write_text(rec.flows[3].format, "urn:x-nmos:format:audio");
    write_text(rec.flows[3].media_type, "audio/L16");
}

inline void describe_device(DEVICE_IS04_ST& device, const std::string& prefix)
{
    describe_core(device, prefix);
    write_text(device.type, prefix + "type");
    write_text(device.node_id, prefix + "node");
    device.receiver_ids_count = 0;
    device.sender_ids_count = 0;
    device.controls_count = 0;
}

inline void describe_devices(NMOS_IS04_ST& rec)
{
    rec.devices_count = 2;
    DEVICE_IS04_ST& full = rec.devices[0];
    describe_device(full, "device/0/");
    full.sender_ids_count = 6;
    for (int i = 0; i < 6; ++i)
        write_text(full.senders[i], "s/" + std::to_string(i));
    full.receiver_ids_count = 24;
    for (int i = 0; i < 24; ++i)
        write_text(full.receivers[i], "r/" + std::to_string(i));
    full.controls_count = 2;
    write_text(full.controls[0].href, "http://192.0.2.10/x-nmos/connection/v1.0/");
    write_text(full.controls[0].type, "urn:x-nmos:control:sr-ctrl/v1.0");
    write_text(full.controls[1].href, "http://192.0.2.11/second");
    write_text(full.controls[1].type, "control/1");

    describe_device(rec.devices[1], "device/1/");
}

/// The second subscription must not show.
template <typename Resource>
void bind_to_two_legs(Resource& resource, const char* second_peer)
{
    resource.interface_bindings_count = 2;
    write_text(resource.interface_bindings[0], "eth/0");
    write_text(resource.interface_bindings[1], "eth/1");
    resource.subscription_count = 2;
    write_text(resource.subscription[0].peer_id, "null");
    resource.subscription[0].active = 0;
    write_text(resource.subscription[1].peer_id, second_peer);
    resource.subscription[1].active = 1;
}

template <typename Resource>
void bind_to_one_leg(Resource& resource, const char* peer)
{
    resource.interface_bindings_count = 1;
    write_text(resource.interface_bindings[0], "eth/1");
    resource.subscription_count = 1;
    write_text(resource.subscription[0].peer_id, peer);
    resource.subscription[0].active = 1;
}

inline void describe_sender(SENDER_IS04_ST& sender, const std::string& prefix)
{
    describe_core(sender, prefix);
    write_text(sender.flow_id, prefix + "flow");
    write_text(sender.transport, prefix + "transport");
    write_text(sender.device_id, prefix + "device");
    write_text(sender.manifest_href, "http://192.0.2.10/" + prefix + "sdp");
    sender.interface_bindings_count = 0;
    sender.subscription_count = 0;
}

inline void describe_senders(NMOS_IS04_ST& rec)
{
    rec.senders_count = 6;
    for (int i = 0; i < 6; ++i)
        describe_sender(rec.senders[i], "sender/" + std::to_string(i) + "/");

    SENDER_IS04_ST& two_legs = rec.senders[0];
    bind_to_two_legs(two_legs, "sender/0/peer");

    SENDER_IS04_ST& one_leg = rec.senders[1];
    bind_to_one_leg(one_leg, "sender/1/peer");

    SENDER_IS04_ST& without_flow = rec.senders[3];
    write_text(without_flow.id, "null");
    write_text(without_flow.flow_id, "null");
    write_text(without_flow.device_id, "null");

    SENDER_IS04_ST& capital_null = rec.senders[4];
    capital_null.subscription_count = 1;
    write_text(capital_null.subscription[0].peer_id, "NULL");
    capital_null.subscription[0].active = 255;
}

inline void describe_receiver(RECEIVER_IS04_ST& receiver, const std::string& prefix)
{
    describe_core(receiver, prefix);
    write_text(receiver.device_id, prefix + "device");
    write_text(receiver.transport, prefix + "transport");
    write_text(receiver.format, prefix + "format");
    receiver.interface_bindings_count = 0;
    receiver.subscription_count = 0;
    receiver.media_types_count = 0;
}

inline void describe_receivers(NMOS_IS04_ST& rec)
{
    rec.receivers_count = 24;
    for (int i = 0; i < 24; ++i)
        describe_receiver(rec.receivers[i], "receiver/" + std::to_string(i) + "/");

    RECEIVER_IS04_ST& two_legs = rec.receivers[0];
    bind_to_two_legs(two_legs, "receiver/0/peer");
    two_legs.media_types_count = 1;
    write_text(two_legs.media_types[0], "video/raw");

    RECEIVER_IS04_ST& one_leg = rec.receivers[1];
    bind_to_one_leg(one_leg, "receiver/1/peer");
    one_leg.media_types_count = 3;
    write_text(one_leg.media_types[0], "audio/L24");
    write_text(one_leg.media_types[1], "audio/L16");
    write_text(one_leg.media_types[2], "video/smpte291");
}

} // namespace example_parts

/// A node in which no two texts are the same and nearly every text has a slash, so that a body that
/// reads a wrong field or writes a wrong slash is seen. example_node_texts.h holds its bodies.
///
/// Whatever the bodies must not show holds `background`: reserved bytes, entries from their count
/// on, the bytes behind each NUL, and numbers that the kind of a flow does not use (0xFF makes
/// those NaN).
inline std::unique_ptr<NMOS_IS04_ST> example_node(unsigned char background = 0)
{
    auto rec = std::make_unique<NMOS_IS04_ST>();
    std::memset(rec.get(), background, sizeof *rec);
    example_parts::describe_node(*rec);
    example_parts::describe_sources(*rec);
    example_parts::describe_flows(*rec);
    example_parts::describe_devices(*rec);
    example_parts::describe_senders(*rec);
    example_parts::describe_receivers(*rec);
    return rec;
}

/// A node in which every byte is 0.
inline std::unique_ptr<NMOS_IS04_ST> empty_node()
{
    return std::make_unique<NMOS_IS04_ST>();
}

/// A node and one resource of each kind, with one label for all.
inline std::unique_ptr<NMOS_IS04_ST> labelled_node(std::string_view label)
{
    auto rec = empty_node();
    rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
        rec->receivers_count = 1;
    write_text(rec->label, label);
    write_text(rec->sources[0].label, label);
    write_text(rec->flows[0].label, label);
    write_text(rec->devices[0].label, label);
    write_text(rec->senders[0].label, label);
    write_text(rec->receivers[0].label, label);
    return rec;
}

#endif

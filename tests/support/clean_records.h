// SPDX-License-Identifier: Apache-2.0
//
// Records in which nothing is wrong. What no body shows holds `background`: reserved bytes, entries
// from their count on, the bytes behind each NUL, and members that the kind of an entry does not
// use.

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_CLEAN_RECORDS_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_CLEAN_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"
#include "support/example_node.h"

namespace clean_parts {

/// "5e000000-0000-4000-8000-000000000003" for kind "5e" and number 3.
inline std::string uuid_of(const char* kind, std::size_t number)
{
    std::string digits = std::to_string(number);
    return kind + std::string("000000-0000-4000-8000-") + std::string(12 - digits.size(), '0') +
           digits;
}

inline std::string node_id()
{
    return uuid_of("10", 0);
}

inline std::string device_id()
{
    return uuid_of("de", 0);
}

inline std::string source_id(std::size_t i)
{
    return uuid_of("50", i);
}

inline std::string flow_id(std::size_t i)
{
    return uuid_of("f1", i);
}

inline std::string sender_id(std::size_t i)
{
    return uuid_of("5e", i);
}

inline std::string receiver_id(std::size_t i)
{
    return uuid_of("4e", i);
}

/// A receiver's kind by its position: 0 video, 1 audio, 2 data.
inline std::size_t receiver_kind(std::size_t i)
{
    return i < 4 ? 0 : i < 20 ? 1 : 2;
}

inline constexpr const char* formats[] = {"urn:x-nmos:format:video", "urn:x-nmos:format:audio",
                                          "urn:x-nmos:format:data"};
inline constexpr const char* media_types[] = {"video/raw", "audio/L24", "video/smpte291"};

template <typename Resource>
void describe(Resource& resource, const std::string& id)
{
    write_text(resource.id, id);
    write_text(resource.version, "1700000123:25");
    write_text(resource.label, "label \xC3\xA9");
    write_text(resource.description, "");
}

template <typename Resource>
void connect(Resource& resource)
{
    write_text(resource.device_id, device_id());
    write_text(resource.transport, "urn:x-nmos:transport:rtp.mcast");
    resource.interface_bindings_count = 2;
    write_text(resource.interface_bindings[0], "eth0");
    write_text(resource.interface_bindings[1], "eth1");
    resource.subscription_count = 1;
    write_text(resource.subscription[0].peer_id, "null");
    resource.subscription[0].active = 0;
}

inline void describe_infrastructure(NMOS_IS04_ST& rec)
{
    describe(rec, node_id());
    write_text(rec.href, "http://192.0.2.10:3212/");
    write_text(rec.hostname, "instrument");
    rec.versions_count = 2;
    write_text(rec.versions[0], "v1.1");
    write_text(rec.versions[1], "v1.2");
    rec.endpoints_count = 2;
    write_text(rec.endpoints[0].host, "192.0.2.10");
    rec.endpoints[0].port = 3212;
    write_text(rec.endpoints[0].protocol, "http");
    write_text(rec.endpoints[1].host, "255.10.0.199");
    rec.endpoints[1].port = 65535;
    write_text(rec.endpoints[1].protocol, "https");
    rec.clocks_count = 2;
    write_text(rec.clocks[0].name, "clk0");
    write_text(rec.clocks[0].ref_type, "ptp");
    write_text(rec.clocks[0].version, "IEEE1588-2008");
    write_text(rec.clocks[0].gmid, "00-00-5e-ff-fe-00-53-01");
    write_text(rec.clocks[1].name, "clk1");
    write_text(rec.clocks[1].ref_type, "internal");
    rec.interfaces_count = 2;
    write_text(rec.interfaces[0].chassis_id, "null");
    write_text(rec.interfaces[0].port_id, "00-00-5e-00-53-01");
    write_text(rec.interfaces[0].name, "eth0");
    write_text(rec.interfaces[1].chassis_id, "rack 7");
    write_text(rec.interfaces[1].port_id, "00-00-5e-00-53-02");
    write_text(rec.interfaces[1].name, "eth1");
    rec.version_seconds = 1700000123;
    rec.version_nanoseconds = 999999999;
}

inline void describe_flow_numbers(NMOS_IS04_ST& rec)
{
    FLOW_IS04_ST& video = rec.flows[0];
    video.frame_width = 1920;
    video.frame_height = 1080;
    write_text(video.interlace_mode, "progressive");
    write_text(video.colorspace, "BT709");
    write_text(video.transfer_characteristic, "SDR");
    video.bit_depth = 10;
    video.grain_rate_denominator = 1001;
    video.grain_rate_numerator = 60000;

    FLOW_IS04_ST& audio = rec.flows[1];
    audio.bit_depth = 24;
    audio.grain_rate_denominator = 1;
    audio.grain_rate_numerator = 1000;
    audio.sample_rate_numerator = 48000;
}

inline void describe_device(DEVICE_IS04_ST& device)
{
    describe(device, device_id());
    write_text(device.type, "urn:x-nmos:device:generic");
    write_text(device.node_id, node_id());
    device.sender_ids_count = 6;
    for (std::size_t i = 0; i < 6; ++i)
        write_text(device.senders[i], sender_id(i));
    device.receiver_ids_count = 24;
    for (std::size_t i = 0; i < 24; ++i)
        write_text(device.receivers[i], receiver_id(i));
    device.controls_count = 1;
    write_text(device.controls[0].href, "http://192.0.2.10/x-nmos/connection/v1.0/");
    write_text(device.controls[0].type, "urn:x-nmos:control:sr-ctrl/v1.0");
}

inline void describe_half(CONNECTION_HALF_IS05_ST& half)
{
    half.leg_count = 2;
    write_text(half.peer_id, "null");
    half.master_enable = 1;
    write_text(half.mode, "null");
    write_text(half.requested_time, "null");
    write_text(half.activation_time, "null");
    for (CONNECTION_LEG_IS05_ST& leg : half.transport_params) {
        write_text(leg.source_ip, "192.0.2.10");
        write_text(leg.destination_ip, "239.0.0.1");
        leg.destination_port = 5004;
    }
}

inline void describe_receiving_half(CONNECTION_HALF_IS05_ST& half)
{
    describe_half(half);
    write_text(half.transport_file_data, "null");
    write_text(half.transport_file_type, "null");
    write_text(half.transport_params[0].interface_ip, "192.0.2.11");
    write_text(half.transport_params[1].interface_ip, "192.0.2.12");
}

} // namespace clean_parts

/// One device with 3 sources and flows, 6 senders and 24 receivers.
inline std::unique_ptr<NMOS_IS04_ST> clean_node(unsigned char background = 0)
{
    using namespace clean_parts;
    auto rec = std::make_unique<NMOS_IS04_ST>();
    std::memset(rec.get(), background, sizeof *rec);
    describe_infrastructure(*rec);

    rec->sources_count = 3;
    rec->flows_count = 3;
    for (std::size_t i = 0; i < 3; ++i) {
        describe(rec->sources[i], source_id(i));
        write_text(rec->sources[i].device_id, device_id());
        write_text(rec->sources[i].clock_name, "clk0");
        write_text(rec->sources[i].format, formats[i]);
        describe(rec->flows[i], flow_id(i));
        write_text(rec->flows[i].format, formats[i]);
        write_text(rec->flows[i].media_type, media_types[i]);
        write_text(rec->flows[i].source_id, source_id(i));
        write_text(rec->flows[i].device_id, device_id());
    }
    describe_flow_numbers(*rec);

    rec->devices_count = 1;
    describe_device(rec->devices[0]);

    rec->senders_count = 6;
    for (std::size_t i = 0; i < 6; ++i) {
        SENDER_IS04_ST& sender = rec->senders[i];
        describe(sender, sender_id(i));
        connect(sender);
        write_text(sender.flow_id, flow_id(i < 4 ? 0 : i - 3));
        write_text(sender.manifest_href, "http://192.0.2.10/sdp");
    }
    rec->receivers_count = 24;
    for (std::size_t i = 0; i < 24; ++i) {
        RECEIVER_IS04_ST& receiver = rec->receivers[i];
        describe(receiver, receiver_id(i));
        connect(receiver);
        write_text(receiver.format, formats[receiver_kind(i)]);
        receiver.media_types_count = 1;
        write_text(receiver.media_types[0], media_types[receiver_kind(i)]);
    }
    return rec;
}

/// All senders and receivers with two legs in both halves.
inline std::unique_ptr<NMOS_IS05_ST> clean_connections(unsigned char background = 0)
{
    using namespace clean_parts;
    auto rec = std::make_unique<NMOS_IS05_ST>();
    std::memset(rec.get(), background, sizeof *rec);
    for (CONNECTION_IS05_ST& sender : rec->senders) {
        describe_half(sender.staged);
        describe_half(sender.active);
    }
    write_text(rec->ptp_grandmaster_id, "00-00-5E-FF-FE-00-53-01");
    write_text(rec->sdp_session_id, "1");
    write_text(rec->sdp_session_version, "1700000123");
    for (CONNECTION_IS05_ST& receiver : rec->receivers) {
        describe_receiving_half(receiver.staged);
        describe_receiving_half(receiver.active);
    }
    return rec;
}

/// All elements that are read are 0 but the payload types. `background` is that of an element.
inline std::unique_ptr<st_param_sys> clean_parameters(std::int16_t background = 0)
{
    auto sys = std::make_unique<st_param_sys>();
    constexpr std::size_t elements = sizeof *sys / sizeof background;
    for (std::size_t i = 0; i < elements; ++i)
        std::memcpy(reinterpret_cast<char*>(sys.get()) + i * sizeof background, &background,
                    sizeof background);
    const auto clear = [](auto& member) { std::memset(&member, 0, sizeof member); };
    clear(sys->pri_video_vlan_id);
    clear(sys->sec_video_vlan_id);
    clear(sys->pri_video_addresses);
    clear(sys->sec_video_addresses);
    clear(sys->pri_anc_vlan_id);
    clear(sys->sec_anc_vlan_id);
    clear(sys->pri_anc_addresses);
    clear(sys->sec_anc_addresses);
    for (std::size_t stream = 0; stream < 4; ++stream) {
        sys->pri_audio_vlan_id[stream][0] = 0;
        sys->sec_audio_vlan_id[stream][0] = 0;
        clear(sys->pri_audio_addresses[stream][0]);
        clear(sys->sec_audio_addresses[stream][0]);
        for (std::size_t byte = 0; byte < 2; ++byte) {
            sys->pri_video_dst_port[stream][byte] = 0;
            sys->sec_video_dst_port[stream * 4 + byte] = 0;
            sys->pri_audio_dst_port[stream][byte] = 0;
            sys->sec_audio_dst_port[stream * 16 + byte] = 0;
            sys->pri_anc_dst_port[stream][byte] = 0;
            sys->sec_anc_dst_port[stream][byte] = 0;
        }
    }
    sys->sdp_st2110_mode = 1;
    sys->sdp_rtp_payload_video = 96;
    sys->sdp_rtp_payload_audio = 97;
    sys->sdp_rtp_payload_anc = 127;
    return sys;
}

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The table is walked by element, in ascending order. Only what is more than a code of the
// instrument can be wrong: addresses, ports, VLAN identifiers and RTP payload types.

#include "nmos_instrument/record_check.h"

#include <cstddef>
#include <cstring>

#include "record_check/rules.h"

namespace nmos_instrument {

namespace {

enum class Shape : std::uint8_t
{
    vlan_id,   ///< [stream], audio [stream][0]
    addresses, ///< [stream].src_ip[octet] and .dst_ip[octet], audio [stream][0].src_ip[octet] ...
    port,      ///< [stream][byte]
    flat_port  ///< [stream * stride + byte]
};

/// A setting that each of the four streams has.
struct StreamSetting
{
    char name[20];
    std::uint16_t first; ///< element of stream 1
    std::uint8_t stride;
    Shape shape;
};

constexpr std::size_t streams = 4;

// clang-format off
#define ELEMENT(member) #member, offsetof(st_param_sys, member) / sizeof(std::int16_t)
constexpr StreamSetting stream_settings[] = {
    {ELEMENT(pri_video_vlan_id),    1, Shape::vlan_id},
    {ELEMENT(sec_video_vlan_id),    1, Shape::vlan_id},
    {ELEMENT(pri_video_addresses),  8, Shape::addresses},
    {ELEMENT(sec_video_addresses),  8, Shape::addresses},
    {ELEMENT(pri_video_dst_port),   4, Shape::port},
    {ELEMENT(sec_video_dst_port),   4, Shape::flat_port},
    {ELEMENT(pri_audio_vlan_id),    4, Shape::vlan_id},
    {ELEMENT(sec_audio_vlan_id),    4, Shape::vlan_id},
    {ELEMENT(pri_audio_addresses), 32, Shape::addresses},
    {ELEMENT(sec_audio_addresses), 32, Shape::addresses},
    {ELEMENT(pri_audio_dst_port),  16, Shape::port},
    {ELEMENT(sec_audio_dst_port),  16, Shape::flat_port},
    {ELEMENT(pri_anc_vlan_id),      1, Shape::vlan_id},
    {ELEMENT(sec_anc_vlan_id),      1, Shape::vlan_id},
    {ELEMENT(pri_anc_addresses),    8, Shape::addresses},
    {ELEMENT(sec_anc_addresses),    8, Shape::addresses},
    {ELEMENT(pri_anc_dst_port),     4, Shape::port},
    {ELEMENT(sec_anc_dst_port),     4, Shape::port},
};
#undef ELEMENT
// clang-format on

constexpr std::size_t elements_read(Shape shape)
{
    switch (shape) {
    case Shape::vlan_id:
        return 1;
    case Shape::addresses:
        return 8;
    default:
        return 2;
    }
}

std::int16_t element(const st_param_sys& record, std::size_t index)
{
    std::int16_t value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + index * sizeof value,
                sizeof value);
    return value;
}

/// As a host writes it: "pri_audio_addresses[3][0].dst_ip[2]".
std::string element_name(const StreamSetting& setting, std::size_t stream, std::size_t offset)
{
    std::string name;
    if (setting.shape == Shape::flat_port) {
        append_field_name(name, {setting.name, stream * setting.stride + offset});
        return name;
    }
    append_field_name(name, {setting.name, stream});
    if (setting.shape == Shape::port) {
        append_field_name(name, {"", offset});
        return name;
    }
    if (setting.stride > elements_read(setting.shape))
        append_field_name(name, {"", 0}); // of a stream's audio entries only the first is read
    if (setting.shape == Shape::addresses)
        append_field_name(name, {offset < 4 ? ".src_ip" : ".dst_ip", offset % 4});
    return name;
}

void check_setting(const RecordPart& part, const st_param_sys& record, const StreamSetting& setting)
{
    const std::int32_t highest = setting.shape == Shape::vlan_id ? 4095 : 255;
    for (std::size_t stream = 0; stream < streams; ++stream) {
        for (std::size_t offset = 0; offset < elements_read(setting.shape); ++offset) {
            const std::int16_t value =
                element(record, setting.first + stream * setting.stride + offset);
            if (value < 0 || value > highest)
                part.number(element_name(setting, stream, offset).c_str(), value, 0, highest);
        }
    }
}

} // namespace

std::vector<std::string> check_record(const st_param_sys& record)
{
    std::vector<std::string> findings;
    const RecordPart whole(findings);
    for (const StreamSetting& setting : stream_settings)
        check_setting(whole, record, setting);

    // The SDP file of a video sender says 98 by itself while ST 2022-6 is carried.
    if (record.sdp_st2110_mode != 0)
        whole.number("sdp_rtp_payload_video", record.sdp_rtp_payload_video, 96, 127);
    whole.number("sdp_rtp_payload_audio", record.sdp_rtp_payload_audio, 96, 127);
    whole.number("sdp_rtp_payload_anc", record.sdp_rtp_payload_anc, 96, 127);
    return findings;
}

} // namespace nmos_instrument

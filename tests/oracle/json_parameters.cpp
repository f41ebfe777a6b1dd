// SPDX-License-Identifier: Apache-2.0
//
// Reads the settings as a table of numbered elements, not through the record's members: whether
// those lie on the right elements is part of what is compared.

#include "oracle/json_oracle.h"

#include <array>
#include <cstdio>

namespace oracle {

namespace {

using Elements = std::array<std::int16_t, 937>;
static_assert(sizeof(Elements) == sizeof(st_param_sys));

struct PerStream
{
    const char* name;
    int first_element;
    int stride;
};

constexpr PerStream numbers[] = {
    {"pri_video_vlan_mask", 70, 1},
    {"sec_video_vlan_mask", 74, 1},
    {"pri_video_vlan_id", 78, 1},
    {"sec_video_vlan_id", 82, 1},
    {"pri_video_src_mask", 86, 2},
    {"pri_video_dst_mask", 87, 2},
    {"sec_video_src_mask", 94, 2},
    {"sec_video_dst_mask", 95, 2},
    {"pri_audio_vlan_mask", 198, 4},
    {"sec_audio_vlan_mask", 214, 4},
    {"pri_audio_vlan_id", 230, 4},
    {"sec_audio_vlan_id", 246, 4},
    {"pri_audio_src_mask", 262, 8},
    {"pri_audio_dst_mask", 263, 8},
    {"sec_audio_src_mask", 294, 8},
    {"sec_audio_dst_mask", 295, 8},
    {"pri_anc_vlan_mask", 710, 1},
    {"sec_anc_vlan_mask", 714, 1},
    {"pri_anc_vlan_id", 718, 1},
    {"sec_anc_vlan_id", 722, 1},
    {"pri_anc_src_mask", 726, 2},
    {"pri_anc_dst_mask", 727, 2},
    {"sec_anc_src_mask", 734, 2},
    {"sec_anc_dst_mask", 735, 2},
    {"st2110_vfmt_rtp_payload_video", 865, 1},
    {"st2110_vfmt_rtp_payload_audio", 869, 1},
    {"st2110_vfmt_rtp_payload_anc", 873, 1},
    {"st2110_vfmt_system", 877, 1},
    {"st2110_vfmt_struct", 881, 1},
    {"st2110_vfmt_frame_rate", 885, 1},
    {"st2110_vfmt_timestamp_read", 897, 1},
};

constexpr PerStream addresses[] = {
    {"pri_video_src_ip", 102, 8},  {"pri_video_dst_ip", 106, 8},  {"sec_video_src_ip", 134, 8},
    {"sec_video_dst_ip", 138, 8},  {"pri_audio_src_ip", 326, 32}, {"pri_audio_dst_ip", 330, 32},
    {"sec_audio_src_ip", 454, 32}, {"sec_audio_dst_ip", 458, 32}, {"pri_anc_src_ip", 742, 8},
    {"pri_anc_dst_ip", 746, 8},    {"sec_anc_src_ip", 774, 8},    {"sec_anc_dst_ip", 778, 8},
};

constexpr PerStream ports[] = {
    {"pri_video_dst_port", 168, 4},  {"sec_video_dst_port", 184, 4},
    {"pri_audio_dst_port", 584, 16}, {"sec_audio_dst_port", 648, 16},
    {"pri_anc_dst_port", 808, 4},    {"sec_anc_dst_port", 824, 4},
};

static_assert(std::size(numbers) + std::size(addresses) + std::size(ports) == 49);

struct Global
{
    const char* name;
    std::size_t element;
};

constexpr Global globals[] = {
    {"type", 66},
    {"redundancy", 67},
    {"ptp_profile", 856},
    {"ptp_domain_num_pri", 858},
    {"ptp_domain_num_sec", 859},
    {"ptp_comm_mode", 860},
    {"ptp_delay_msg_rate", 861},
    {"st2110_vfmt_auto_mode", 863},
};

std::size_t element_of(const PerStream& setting, int stream)
{
    return static_cast<std::size_t>(setting.first_element + (stream - 1) * setting.stride);
}

picojson::value address_of(const Elements& elements, std::size_t first)
{
    char text[40];
    std::snprintf(text, sizeof text, "%d.%d.%d.%d", elements[first], elements[first + 1],
                  elements[first + 2], elements[first + 3]);
    return picojson::value(text);
}

picojson::value port_of(const Elements& elements, std::size_t low)
{
    return number(elements[low] | (elements[low + 1] * 256));
}

void add_stream_settings(picojson::object& object, const Elements& elements, int stream)
{
    for (const PerStream& setting : numbers)
        add(object, setting.name, number(elements[element_of(setting, stream)]));
    for (const PerStream& setting : addresses)
        add(object, setting.name, address_of(elements, element_of(setting, stream)));
    for (const PerStream& setting : ports)
        add(object, setting.name, port_of(elements, element_of(setting, stream)));
}

} // namespace

std::string make_param_json(const st_param_sys& parameters)
{
    Elements elements;
    std::memcpy(elements.data(), &parameters, sizeof elements);

    picojson::object document;
    for (const Global& global : globals)
        add(document, global.name, number(elements[global.element]));

    // One object for all four streams, never emptied: its first values stay.
    picojson::object settings;
    for (int stream = 1; stream <= 4; ++stream) {
        add_stream_settings(settings, elements, stream);
        add(document, ("stream" + std::to_string(stream)).c_str(), picojson::value(settings));
    }

    picojson::object status;
    for (const char* const name : {"link_up", "bitrate", "decode", "picture", "timing"})
        add(status, name, picojson::value(true));
    add(status, "comment", picojson::value("No Comment"));
    for (int stream = 1; stream <= 4; ++stream)
        add(document, ("judge_stream" + std::to_string(stream)).c_str(), picojson::value(status));
    return with_escaped_slashes(picojson::value(document));
}

} // namespace oracle

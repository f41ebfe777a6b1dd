// SPDX-License-Identifier: Apache-2.0

#include "bodies/parameters_body.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "records/record_fields.h"
#include "text/number_text.h"

namespace nmos_instrument {
namespace {

/// How elements of the table become a JSON value.
enum class Conversion : std::uint8_t
{
    number,  ///< one element
    address, ///< four octets, as dotted text
    port,    ///< low byte, high byte
};

struct Setting
{
    char key[32];
    std::uint16_t element; ///< of IP stream 1
    Conversion conversion;
};

/// Element number of a member of the table.
#define ELEMENT(member) (offsetof(st_param_sys, member) / sizeof(std::int16_t))

// The members of a stream, in ascending order of their keys. Every stream shows the settings of IP
// stream 1, so no stride is needed here.
constexpr Setting stream_settings[] = {
    {"pri_anc_dst_ip", ELEMENT(pri_anc_addresses[0].dst_ip), Conversion::address},
    {"pri_anc_dst_mask", ELEMENT(pri_anc_masks[0].dst_mask), Conversion::number},
    {"pri_anc_dst_port", ELEMENT(pri_anc_dst_port), Conversion::port},
    {"pri_anc_src_ip", ELEMENT(pri_anc_addresses[0].src_ip), Conversion::address},
    {"pri_anc_src_mask", ELEMENT(pri_anc_masks[0].src_mask), Conversion::number},
    {"pri_anc_vlan_id", ELEMENT(pri_anc_vlan_id), Conversion::number},
    {"pri_anc_vlan_mask", ELEMENT(pri_anc_vlan_mask), Conversion::number},
    {"pri_audio_dst_ip", ELEMENT(pri_audio_addresses[0][0].dst_ip), Conversion::address},
    {"pri_audio_dst_mask", ELEMENT(pri_audio_masks[0][0].dst_mask), Conversion::number},
    {"pri_audio_dst_port", ELEMENT(pri_audio_dst_port), Conversion::port},
    {"pri_audio_src_ip", ELEMENT(pri_audio_addresses[0][0].src_ip), Conversion::address},
    {"pri_audio_src_mask", ELEMENT(pri_audio_masks[0][0].src_mask), Conversion::number},
    {"pri_audio_vlan_id", ELEMENT(pri_audio_vlan_id), Conversion::number},
    {"pri_audio_vlan_mask", ELEMENT(pri_audio_vlan_mask), Conversion::number},
    {"pri_video_dst_ip", ELEMENT(pri_video_addresses[0].dst_ip), Conversion::address},
    {"pri_video_dst_mask", ELEMENT(pri_video_masks[0].dst_mask), Conversion::number},
    {"pri_video_dst_port", ELEMENT(pri_video_dst_port), Conversion::port},
    {"pri_video_src_ip", ELEMENT(pri_video_addresses[0].src_ip), Conversion::address},
    {"pri_video_src_mask", ELEMENT(pri_video_masks[0].src_mask), Conversion::number},
    {"pri_video_vlan_id", ELEMENT(pri_video_vlan_id), Conversion::number},
    {"pri_video_vlan_mask", ELEMENT(pri_video_vlan_mask), Conversion::number},
    {"sec_anc_dst_ip", ELEMENT(sec_anc_addresses[0].dst_ip), Conversion::address},
    {"sec_anc_dst_mask", ELEMENT(sec_anc_masks[0].dst_mask), Conversion::number},
    {"sec_anc_dst_port", ELEMENT(sec_anc_dst_port), Conversion::port},
    {"sec_anc_src_ip", ELEMENT(sec_anc_addresses[0].src_ip), Conversion::address},
    {"sec_anc_src_mask", ELEMENT(sec_anc_masks[0].src_mask), Conversion::number},
    {"sec_anc_vlan_id", ELEMENT(sec_anc_vlan_id), Conversion::number},
    {"sec_anc_vlan_mask", ELEMENT(sec_anc_vlan_mask), Conversion::number},
    {"sec_audio_dst_ip", ELEMENT(sec_audio_addresses[0][0].dst_ip), Conversion::address},
    {"sec_audio_dst_mask", ELEMENT(sec_audio_masks[0][0].dst_mask), Conversion::number},
    {"sec_audio_dst_port", ELEMENT(sec_audio_dst_port), Conversion::port},
    {"sec_audio_src_ip", ELEMENT(sec_audio_addresses[0][0].src_ip), Conversion::address},
    {"sec_audio_src_mask", ELEMENT(sec_audio_masks[0][0].src_mask), Conversion::number},
    {"sec_audio_vlan_id", ELEMENT(sec_audio_vlan_id), Conversion::number},
    {"sec_audio_vlan_mask", ELEMENT(sec_audio_vlan_mask), Conversion::number},
    {"sec_video_dst_ip", ELEMENT(sec_video_addresses[0].dst_ip), Conversion::address},
    {"sec_video_dst_mask", ELEMENT(sec_video_masks[0].dst_mask), Conversion::number},
    {"sec_video_dst_port", ELEMENT(sec_video_dst_port), Conversion::port},
    {"sec_video_src_ip", ELEMENT(sec_video_addresses[0].src_ip), Conversion::address},
    {"sec_video_src_mask", ELEMENT(sec_video_masks[0].src_mask), Conversion::number},
    {"sec_video_vlan_id", ELEMENT(sec_video_vlan_id), Conversion::number},
    {"sec_video_vlan_mask", ELEMENT(sec_video_vlan_mask), Conversion::number},
    {"st2110_vfmt_frame_rate", ELEMENT(st2110_vfmt_frame_rate), Conversion::number},
    {"st2110_vfmt_rtp_payload_anc", ELEMENT(st2110_vfmt_rtp_payload_anc), Conversion::number},
    {"st2110_vfmt_rtp_payload_audio", ELEMENT(st2110_vfmt_rtp_payload_audio), Conversion::number},
    {"st2110_vfmt_rtp_payload_video", ELEMENT(st2110_vfmt_rtp_payload_video), Conversion::number},
    {"st2110_vfmt_struct", ELEMENT(st2110_vfmt_struct), Conversion::number},
    {"st2110_vfmt_system", ELEMENT(st2110_vfmt_system), Conversion::number},
    {"st2110_vfmt_timestamp_read", ELEMENT(st2110_vfmt_timestamp_read), Conversion::number},
};

#undef ELEMENT

std::int16_t element_value(const st_param_sys& sys, std::size_t element)
{
    std::int16_t value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&sys) + element * sizeof value, sizeof value);
    return value;
}

void write_address(JsonWriter& json, const st_param_sys& sys, std::size_t element)
{
    char address[4 * number_text_size];
    char* end = write_integer(address, element_value(sys, element));
    for (std::size_t octet = 1; octet < 4; ++octet) {
        *end++ = '.';
        end = write_integer(end, element_value(sys, element + octet));
    }
    *end = '\0';
    json.string(address);
}

/// Signed, as the two elements are.
int port_value(const st_param_sys& sys, std::size_t element)
{
    return element_value(sys, element) | element_value(sys, element + 1) * 256;
}

void write_setting(JsonWriter& json, const st_param_sys& sys, const Setting& setting)
{
    json.key(field_text(setting.key));
    switch (setting.conversion) {
    case Conversion::number:
        json.number(element_value(sys, setting.element));
        break;
    case Conversion::address:
        write_address(json, sys, setting.element);
        break;
    case Conversion::port:
        json.number(port_value(sys, setting.element));
        break;
    }
}

/// At most 2 KB: too short to be flushed.
[[gnu::flatten]] void write_stream(JsonText& text, const st_param_sys& sys)
{
    JsonWriter json(text);
    json.begin_object();
    for (const Setting& setting : stream_settings)
        write_setting(json, sys, setting);
    json.end_object();
}

/// Placeholders of the status report; nothing in the table feeds them.
void write_stream_status(JsonWriter& json)
{
    json.begin_object();
    json.key("bitrate").boolean(true);
    json.key("comment").literal("No Comment");
    json.key("decode").boolean(true);
    json.key("link_up").boolean(true);
    json.key("picture").boolean(true);
    json.key("timing").boolean(true);
    json.end_object();
}

} // namespace

[[gnu::flatten]] void write_parameters(JsonText& text, const st_param_sys& sys)
{
    JsonWriter json(text);
    json.begin_object();
    for (const std::string_view key :
         {"judge_stream1", "judge_stream2", "judge_stream3", "judge_stream4"})
        write_stream_status(json.key(key));
    json.key("ptp_comm_mode").number(sys.ptp_comm_mode);
    json.key("ptp_delay_msg_rate").number(sys.ptp_delay_msg_rate);
    json.key("ptp_domain_num_pri").number(sys.ptp_domain_num_pri);
    json.key("ptp_domain_num_sec").number(sys.ptp_domain_num_sec);
    json.key("ptp_profile").number(sys.ptp_profile);
    json.key("redundancy").number(sys.redundancy);
    json.key("st2110_vfmt_auto_mode").number(sys.st2110_vfmt_auto_mode);
    // Streams 2 to 4 repeat stream 1: readers of this document know it so.
    JsonText stream(text.slashes());
    write_stream(stream, sys);
    for (const std::string_view key : {"stream1", "stream2", "stream3", "stream4"})
        json.key(key).value_of(stream);
    json.key("type").number(sys.type);
    json.end_object();
}

} // namespace nmos_instrument

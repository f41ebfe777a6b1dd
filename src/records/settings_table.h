// SPDX-License-Identifier: Apache-2.0
//
// The settings of st_param_sys that each IP stream has, one row a setting, and how an element is
// read.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_SETTINGS_TABLE_H
#define NMOS_INSTRUMENT_SRC_RECORDS_SETTINGS_TABLE_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument {

enum class SettingKind : std::uint8_t
{
    number,   ///< one element, a code of the instrument
    vlan_id,  ///< one element
    address,  ///< four elements, one octet each; source and destination stand in one struct
    port,     ///< two elements, low byte and high byte
    flat_port ///< the same, in an array without an entry for each stream
};

struct StreamSetting
{
    char key[32];        ///< in the settings document
    std::uint16_t first; ///< element of IP stream 1
    std::uint8_t stride; ///< elements from one stream to the next
    SettingKind kind;
};

// clang-format off
#define ELEMENT(member) (offsetof(st_param_sys, member) / sizeof(std::int16_t))

/// In ascending order of their keys. Of a stream's audio entries only the first is read.
inline constexpr StreamSetting stream_settings[] = {
    {"pri_anc_dst_ip",      ELEMENT(pri_anc_addresses[0].dst_ip),       8, SettingKind::address},
    {"pri_anc_dst_mask",    ELEMENT(pri_anc_masks[0].dst_mask),         2, SettingKind::number},
    {"pri_anc_dst_port",    ELEMENT(pri_anc_dst_port),                  4, SettingKind::port},
    {"pri_anc_src_ip",      ELEMENT(pri_anc_addresses[0].src_ip),       8, SettingKind::address},
    {"pri_anc_src_mask",    ELEMENT(pri_anc_masks[0].src_mask),         2, SettingKind::number},
    {"pri_anc_vlan_id",     ELEMENT(pri_anc_vlan_id),                   1, SettingKind::vlan_id},
    {"pri_anc_vlan_mask",   ELEMENT(pri_anc_vlan_mask),                 1, SettingKind::number},
    {"pri_audio_dst_ip",    ELEMENT(pri_audio_addresses[0][0].dst_ip), 32, SettingKind::address},
    {"pri_audio_dst_mask",  ELEMENT(pri_audio_masks[0][0].dst_mask),    8, SettingKind::number},
    {"pri_audio_dst_port",  ELEMENT(pri_audio_dst_port),               16, SettingKind::port},
    {"pri_audio_src_ip",    ELEMENT(pri_audio_addresses[0][0].src_ip), 32, SettingKind::address},
    {"pri_audio_src_mask",  ELEMENT(pri_audio_masks[0][0].src_mask),    8, SettingKind::number},
    {"pri_audio_vlan_id",   ELEMENT(pri_audio_vlan_id),                 4, SettingKind::vlan_id},
    {"pri_audio_vlan_mask", ELEMENT(pri_audio_vlan_mask),               4, SettingKind::number},
    {"pri_video_dst_ip",    ELEMENT(pri_video_addresses[0].dst_ip),     8, SettingKind::address},
    {"pri_video_dst_mask",  ELEMENT(pri_video_masks[0].dst_mask),       2, SettingKind::number},
    {"pri_video_dst_port",  ELEMENT(pri_video_dst_port),                4, SettingKind::port},
    {"pri_video_src_ip",    ELEMENT(pri_video_addresses[0].src_ip),     8, SettingKind::address},
    {"pri_video_src_mask",  ELEMENT(pri_video_masks[0].src_mask),       2, SettingKind::number},
    {"pri_video_vlan_id",   ELEMENT(pri_video_vlan_id),                 1, SettingKind::vlan_id},
    {"pri_video_vlan_mask", ELEMENT(pri_video_vlan_mask),               1, SettingKind::number},
    {"sec_anc_dst_ip",      ELEMENT(sec_anc_addresses[0].dst_ip),       8, SettingKind::address},
    {"sec_anc_dst_mask",    ELEMENT(sec_anc_masks[0].dst_mask),         2, SettingKind::number},
    {"sec_anc_dst_port",    ELEMENT(sec_anc_dst_port),                  4, SettingKind::port},
    {"sec_anc_src_ip",      ELEMENT(sec_anc_addresses[0].src_ip),       8, SettingKind::address},
    {"sec_anc_src_mask",    ELEMENT(sec_anc_masks[0].src_mask),         2, SettingKind::number},
    {"sec_anc_vlan_id",     ELEMENT(sec_anc_vlan_id),                   1, SettingKind::vlan_id},
    {"sec_anc_vlan_mask",   ELEMENT(sec_anc_vlan_mask),                 1, SettingKind::number},
    {"sec_audio_dst_ip",    ELEMENT(sec_audio_addresses[0][0].dst_ip), 32, SettingKind::address},
    {"sec_audio_dst_mask",  ELEMENT(sec_audio_masks[0][0].dst_mask),    8, SettingKind::number},
    {"sec_audio_dst_port",  ELEMENT(sec_audio_dst_port),               16, SettingKind::flat_port},
    {"sec_audio_src_ip",    ELEMENT(sec_audio_addresses[0][0].src_ip), 32, SettingKind::address},
    {"sec_audio_src_mask",  ELEMENT(sec_audio_masks[0][0].src_mask),    8, SettingKind::number},
    {"sec_audio_vlan_id",   ELEMENT(sec_audio_vlan_id),                 4, SettingKind::vlan_id},
    {"sec_audio_vlan_mask", ELEMENT(sec_audio_vlan_mask),               4, SettingKind::number},
    {"sec_video_dst_ip",    ELEMENT(sec_video_addresses[0].dst_ip),     8, SettingKind::address},
    {"sec_video_dst_mask",  ELEMENT(sec_video_masks[0].dst_mask),       2, SettingKind::number},
    {"sec_video_dst_port",  ELEMENT(sec_video_dst_port),                4, SettingKind::flat_port},
    {"sec_video_src_ip",    ELEMENT(sec_video_addresses[0].src_ip),     8, SettingKind::address},
    {"sec_video_src_mask",  ELEMENT(sec_video_masks[0].src_mask),       2, SettingKind::number},
    {"sec_video_vlan_id",   ELEMENT(sec_video_vlan_id),                 1, SettingKind::vlan_id},
    {"sec_video_vlan_mask", ELEMENT(sec_video_vlan_mask),               1, SettingKind::number},
    {"st2110_vfmt_frame_rate", ELEMENT(st2110_vfmt_frame_rate), 1, SettingKind::number},
    {"st2110_vfmt_rtp_payload_anc", ELEMENT(st2110_vfmt_rtp_payload_anc), 1, SettingKind::number},
    {"st2110_vfmt_rtp_payload_audio", ELEMENT(st2110_vfmt_rtp_payload_audio), 1,
     SettingKind::number},
    {"st2110_vfmt_rtp_payload_video", ELEMENT(st2110_vfmt_rtp_payload_video), 1,
     SettingKind::number},
    {"st2110_vfmt_struct", ELEMENT(st2110_vfmt_struct), 1, SettingKind::number},
    {"st2110_vfmt_system", ELEMENT(st2110_vfmt_system), 1, SettingKind::number},
    {"st2110_vfmt_timestamp_read", ELEMENT(st2110_vfmt_timestamp_read), 1, SettingKind::number},
};

#undef ELEMENT
// clang-format on

/// How many elements of a stream a setting reads.
constexpr std::size_t elements_read(SettingKind kind) noexcept
{
    switch (kind) {
    case SettingKind::address:
        return 4;
    case SettingKind::port:
    case SettingKind::flat_port:
        return 2;
    default:
        return 1;
    }
}

constexpr std::size_t element_count = sizeof(st_param_sys) / sizeof(std::int16_t);

inline std::int16_t element_value(const st_param_sys& settings, std::size_t element) noexcept
{
    std::int16_t value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&settings) + element * sizeof value,
                sizeof value);
    return value;
}

} // namespace nmos_instrument

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The table is walked by element, in ascending order. The codes are the instrument's own; what can
// be checked are addresses, ports, VLAN identifiers and RTP payload types.

#include "nmos_instrument/record_check.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "record_check/checks.h"
#include "record_check/rules.h"
#include "records/positions.h"
#include "records/record_fields.h"
#include "records/settings_table.h"

namespace nmos_instrument {

namespace {

constexpr std::uint8_t no_row = 255;

using RowOfElement = std::array<std::uint8_t, element_count>;

/// For each element, the row of the setting that it is checked for.
constexpr RowOfElement rows_of_elements()
{
    RowOfElement rows{};
    rows.fill(no_row);
    for (std::size_t row = 0; row < std::size(stream_settings); ++row) {
        const StreamSetting& setting = stream_settings[row];
        if (setting.kind == SettingKind::number)
            continue;
        for (std::size_t stream = 0; stream < ip_streams; ++stream) {
            for (std::size_t i = 0; i < elements_read(setting.kind); ++i)
                rows[setting.first + stream * setting.stride + i] = static_cast<std::uint8_t>(row);
        }
    }
    return rows;
}

constexpr RowOfElement row_of_element = rows_of_elements();

/// As a host writes it: "pri_audio_addresses[3][0].dst_ip[2]".
std::string element_name(const StreamSetting& setting, std::size_t element)
{
    const std::size_t stream = (element - setting.first) / setting.stride;
    const std::size_t offset = (element - setting.first) % setting.stride;
    const std::string key(field_text(setting.key));
    const bool is_audio = key.find("_audio_") != std::string::npos;

    std::string name;
    switch (setting.kind) {
    case SettingKind::flat_port:
        append_field_name(name, {setting.key, element - setting.first});
        break;
    case SettingKind::port:
        append_field_name(name, {setting.key, stream});
        append_field_name(name, {"", offset});
        break;
    case SettingKind::address: {
        // "pri_audio_dst_ip" is the member "dst_ip" of "pri_audio_addresses".
        constexpr std::size_t member_size = 6;
        const std::string array = key.substr(0, key.size() - member_size) + "addresses";
        append_field_name(name, {array.c_str(), stream});
        if (is_audio)
            append_field_name(name, {"", 0});
        append_field_name(name, ".");
        append_field_name(name, {key.c_str() + key.size() - member_size, offset});
        break;
    }
    default:
        append_field_name(name, {setting.key, stream});
        if (is_audio)
            append_field_name(name, {"", 0});
        break;
    }
    return name;
}

void check_element(const RecordPart& part, const StreamSetting& setting, std::size_t element,
                   std::int16_t value)
{
    const std::int32_t highest = setting.kind == SettingKind::vlan_id ? 4095 : 255;
    if (value < 0 || value > highest)
        part.number(element_name(setting, element).c_str(), value, 0, highest);
}

} // namespace

void check_settings(const RecordPart& whole, const st_param_sys& record)
{
    for (std::size_t element = 0; element < element_count; ++element) {
        if (row_of_element[element] != no_row)
            check_element(whole, stream_settings[row_of_element[element]], element,
                          element_value(record, element));
    }

    // While ST 2022-6 is carried, the SDP file of a video sender says 98, whatever is set here.
    if (record.sdp_st2110_mode != stream_mode_st2022_6)
        whole.number("sdp_rtp_payload_video", record.sdp_rtp_payload_video, 96, 127);
    whole.number("sdp_rtp_payload_audio", record.sdp_rtp_payload_audio, 96, 127);
    whole.number("sdp_rtp_payload_anc", record.sdp_rtp_payload_anc, 96, 127);
}

std::vector<std::string> check_record(const st_param_sys& record)
{
    std::vector<std::string> findings;
    check_settings(RecordPart(findings), record);
    return findings;
}

} // namespace nmos_instrument

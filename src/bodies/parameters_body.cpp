// SPDX-License-Identifier: Apache-2.0

#include "bodies/parameters_body.h"

#include <cstddef>
#include <string_view>

#include "records/record_fields.h"
#include "records/settings_table.h"
#include "text/number_text.h"

namespace nmos_instrument {
namespace {

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

void write_setting(JsonWriter& json, const st_param_sys& sys, const StreamSetting& setting)
{
    json.key(field_text(setting.key));
    switch (setting.kind) {
    case SettingKind::number:
    case SettingKind::vlan_id:
        json.number(element_value(sys, setting.first));
        break;
    case SettingKind::address:
        write_address(json, sys, setting.first);
        break;
    case SettingKind::port:
    case SettingKind::flat_port:
        json.number(port_value(sys, setting.first));
        break;
    }
}

/// The settings of IP stream 1. At most 2 KB: too short to be flushed.
[[gnu::flatten]] void write_stream(JsonText& text, const st_param_sys& sys)
{
    JsonWriter json(text);
    json.begin_object();
    for (const StreamSetting& setting : stream_settings)
        write_setting(json, sys, setting);
    json.end_object();
}

/// Placeholders: the table holds no status.
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
    // Intentional: streams 2 to 4 repeat stream 1, as the readers of this document expect.
    JsonText stream(text.slashes());
    write_stream(stream, sys);
    for (const std::string_view key : {"stream1", "stream2", "stream3", "stream4"})
        json.key(key).value_of(stream);
    json.key("type").number(sys.type);
    json.end_object();
}

} // namespace nmos_instrument

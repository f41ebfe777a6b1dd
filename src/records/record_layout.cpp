// SPDX-License-Identifier: Apache-2.0
//
// The layout of the records is half of the binary interface: the same numbers on every CPU. A host
// that was built against other numbers would read other fields, so a change stops the build here.
// The 64-bit members are aligned to 8 on 32-bit x86 too, and with them the records.

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "nmos_instrument/nmos_instrument.h"

namespace {

#define RECORD(record, size, alignment)                                                            \
    static_assert(sizeof(record) == (size) && alignof(record) == (alignment));                     \
    static_assert(std::is_trivial_v<record> && std::is_standard_layout_v<record>);                 \
    static_assert(std::is_aggregate_v<record>)

/// With its width: a field in front of an aligned one may shrink without moving any other.
#define FIELD(record, field, offset, width)                                                        \
    static_assert(offsetof(record, field) == (offset) && sizeof(record::field) == (width))

/// st_param_sys counts in elements.
#define SETTING(member, number)                                                                    \
    static_assert(offsetof(st_param_sys, member) == (number) * sizeof(std::int16_t))

RECORD(SUBSCRIPTION_IS04_ST, 49, 1);
FIELD(SUBSCRIPTION_IS04_ST, peer_id, 0, 48);
FIELD(SUBSCRIPTION_IS04_ST, active, 48, 1);

RECORD(ENDPOINT_IS04_ST, 40, 8);
FIELD(ENDPOINT_IS04_ST, host, 0, 16);
FIELD(ENDPOINT_IS04_ST, port, 16, 8);
FIELD(ENDPOINT_IS04_ST, protocol, 24, 16);

RECORD(CLOCK_IS04_ST, 98, 1);
FIELD(CLOCK_IS04_ST, name, 0, 32);
FIELD(CLOCK_IS04_ST, ref_type, 32, 16);
FIELD(CLOCK_IS04_ST, traceable, 48, 1);
FIELD(CLOCK_IS04_ST, version, 49, 16);
FIELD(CLOCK_IS04_ST, gmid, 65, 32);
FIELD(CLOCK_IS04_ST, locked, 97, 1);

RECORD(INTERFACE_IS04_ST, 144, 1);
FIELD(INTERFACE_IS04_ST, chassis_id, 0, 48);
FIELD(INTERFACE_IS04_ST, port_id, 48, 48);
FIELD(INTERFACE_IS04_ST, name, 96, 48);

RECORD(CONTROL_IS04_ST, 128, 1);
FIELD(CONTROL_IS04_ST, href, 0, 64);
FIELD(CONTROL_IS04_ST, type, 64, 64);

RECORD(SOURCE_IS04_ST, 2500, 1);
FIELD(SOURCE_IS04_ST, id, 0, 48);
FIELD(SOURCE_IS04_ST, version, 48, 48);
FIELD(SOURCE_IS04_ST, label, 96, 64);
FIELD(SOURCE_IS04_ST, description, 160, 144);
FIELD(SOURCE_IS04_ST, device_id, 304, 96);
FIELD(SOURCE_IS04_ST, clock_name, 400, 20);
FIELD(SOURCE_IS04_ST, format, 420, 2080);

RECORD(FLOW_IS04_ST, 640, 8);
FIELD(FLOW_IS04_ST, id, 0, 48);
FIELD(FLOW_IS04_ST, version, 48, 48);
FIELD(FLOW_IS04_ST, label, 96, 64);
FIELD(FLOW_IS04_ST, description, 160, 128);
FIELD(FLOW_IS04_ST, format, 288, 32);
FIELD(FLOW_IS04_ST, frame_width, 320, 8);
FIELD(FLOW_IS04_ST, frame_height, 328, 8);
FIELD(FLOW_IS04_ST, interlace_mode, 336, 32);
FIELD(FLOW_IS04_ST, colorspace, 368, 32);
FIELD(FLOW_IS04_ST, transfer_characteristic, 400, 32);
FIELD(FLOW_IS04_ST, media_type, 432, 32);
FIELD(FLOW_IS04_ST, bit_depth, 464, 8);
FIELD(FLOW_IS04_ST, grain_rate_denominator, 472, 8);
FIELD(FLOW_IS04_ST, grain_rate_numerator, 480, 8);
FIELD(FLOW_IS04_ST, sample_rate_numerator, 488, 8);
FIELD(FLOW_IS04_ST, source_id, 496, 48);
FIELD(FLOW_IS04_ST, device_id, 544, 96);

RECORD(DEVICE_IS04_ST, 2844, 4);
FIELD(DEVICE_IS04_ST, id, 0, 48);
FIELD(DEVICE_IS04_ST, version, 48, 48);
FIELD(DEVICE_IS04_ST, label, 96, 64);
FIELD(DEVICE_IS04_ST, description, 160, 128);
FIELD(DEVICE_IS04_ST, receiver_ids_count, 288, 4);
FIELD(DEVICE_IS04_ST, sender_ids_count, 292, 4);
FIELD(DEVICE_IS04_ST, controls_count, 296, 4);
FIELD(DEVICE_IS04_ST, type, 300, 32);
FIELD(DEVICE_IS04_ST, node_id, 332, 48);
FIELD(DEVICE_IS04_ST, senders, 380, 288);
FIELD(DEVICE_IS04_ST, receivers, 668, 1152);
FIELD(DEVICE_IS04_ST, controls, 1820, 1024);

RECORD(SENDER_IS04_ST, 1700, 4);
FIELD(SENDER_IS04_ST, id, 0, 48);
FIELD(SENDER_IS04_ST, version, 48, 48);
FIELD(SENDER_IS04_ST, label, 96, 64);
FIELD(SENDER_IS04_ST, description, 160, 128);
FIELD(SENDER_IS04_ST, interface_bindings_count, 288, 4);
FIELD(SENDER_IS04_ST, subscription_count, 292, 4);
FIELD(SENDER_IS04_ST, reserved_before_flow_id, 296, 16);
FIELD(SENDER_IS04_ST, flow_id, 312, 48);
FIELD(SENDER_IS04_ST, transport, 360, 32);
FIELD(SENDER_IS04_ST, device_id, 392, 48);
FIELD(SENDER_IS04_ST, manifest_href, 440, 128);
FIELD(SENDER_IS04_ST, interface_bindings, 568, 640);
FIELD(SENDER_IS04_ST, subscription, 1208, 441);
FIELD(SENDER_IS04_ST, reserved_at_end, 1649, 51);

RECORD(RECEIVER_IS04_ST, 1736, 4);
FIELD(RECEIVER_IS04_ST, id, 0, 48);
FIELD(RECEIVER_IS04_ST, version, 48, 48);
FIELD(RECEIVER_IS04_ST, label, 96, 64);
FIELD(RECEIVER_IS04_ST, description, 160, 128);
FIELD(RECEIVER_IS04_ST, interface_bindings_count, 288, 4);
FIELD(RECEIVER_IS04_ST, subscription_count, 292, 4);
FIELD(RECEIVER_IS04_ST, device_id, 296, 48);
FIELD(RECEIVER_IS04_ST, transport, 344, 32);
FIELD(RECEIVER_IS04_ST, interface_bindings, 376, 640);
FIELD(RECEIVER_IS04_ST, subscription, 1016, 490);
FIELD(RECEIVER_IS04_ST, media_types_count, 1508, 4);
FIELD(RECEIVER_IS04_ST, format, 1512, 32);
FIELD(RECEIVER_IS04_ST, media_types, 1544, 192);

RECORD(NMOS_IS04_ST, 79864, 8);
FIELD(NMOS_IS04_ST, id, 0, 48);
FIELD(NMOS_IS04_ST, version, 48, 48);
FIELD(NMOS_IS04_ST, label, 96, 64);
FIELD(NMOS_IS04_ST, description, 160, 128);
FIELD(NMOS_IS04_ST, href, 288, 64);
FIELD(NMOS_IS04_ST, hostname, 352, 32);
FIELD(NMOS_IS04_ST, versions_count, 384, 4);
FIELD(NMOS_IS04_ST, endpoints_count, 388, 4);
FIELD(NMOS_IS04_ST, versions, 392, 256);
FIELD(NMOS_IS04_ST, endpoints, 648, 1040);
FIELD(NMOS_IS04_ST, reserved_before_clocks, 1688, 4);
FIELD(NMOS_IS04_ST, clocks_count, 1692, 4);
FIELD(NMOS_IS04_ST, clocks, 1696, 588);
FIELD(NMOS_IS04_ST, interfaces_count, 2284, 4);
FIELD(NMOS_IS04_ST, interfaces, 2288, 1728);
FIELD(NMOS_IS04_ST, sources_count, 4016, 4);
FIELD(NMOS_IS04_ST, sources, 4020, 10000);
FIELD(NMOS_IS04_ST, reserved_before_flows, 14020, 4);
FIELD(NMOS_IS04_ST, flows_count, 14024, 4);
FIELD(NMOS_IS04_ST, flows, 14032, 2560);
FIELD(NMOS_IS04_ST, devices_count, 16592, 4);
FIELD(NMOS_IS04_ST, devices, 16596, 11376);
FIELD(NMOS_IS04_ST, senders_count, 27972, 4);
FIELD(NMOS_IS04_ST, senders, 27976, 10200);
FIELD(NMOS_IS04_ST, receivers_count, 38176, 4);
FIELD(NMOS_IS04_ST, receivers, 38180, 41664);
FIELD(NMOS_IS04_ST, version_seconds, 79848, 8);
FIELD(NMOS_IS04_ST, version_nanoseconds, 79856, 4);

RECORD(CONNECTION_LEG_IS05_ST, 232, 8);
FIELD(CONNECTION_LEG_IS05_ST, source_ip, 0, 32);
FIELD(CONNECTION_LEG_IS05_ST, destination_ip, 32, 32);
FIELD(CONNECTION_LEG_IS05_ST, interface_ip, 64, 32);
FIELD(CONNECTION_LEG_IS05_ST, destination_port, 96, 8);
FIELD(CONNECTION_LEG_IS05_ST, reserved_after_port, 104, 120);
FIELD(CONNECTION_LEG_IS05_ST, rtp_enabled, 224, 1);
FIELD(CONNECTION_LEG_IS05_ST, reserved_at_end, 225, 7);

RECORD(CONNECTION_HALF_IS05_ST, 4784, 8);
FIELD(CONNECTION_HALF_IS05_ST, leg_count, 0, 4);
FIELD(CONNECTION_HALF_IS05_ST, reserved_after_leg_count, 4, 4);
FIELD(CONNECTION_HALF_IS05_ST, peer_id, 8, 48);
FIELD(CONNECTION_HALF_IS05_ST, master_enable, 56, 1);
FIELD(CONNECTION_HALF_IS05_ST, mode, 57, 32);
FIELD(CONNECTION_HALF_IS05_ST, requested_time, 89, 48);
FIELD(CONNECTION_HALF_IS05_ST, activation_time, 137, 48);
FIELD(CONNECTION_HALF_IS05_ST, transport_file_data, 185, 4096);
FIELD(CONNECTION_HALF_IS05_ST, transport_file_type, 4281, 39);
FIELD(CONNECTION_HALF_IS05_ST, transport_params, 4320, 464);

RECORD(CONNECTION_IS05_ST, 13800, 8);
FIELD(CONNECTION_IS05_ST, reserved_before_staged, 0, 4232);
FIELD(CONNECTION_IS05_ST, staged, 4232, 4784);
FIELD(CONNECTION_IS05_ST, active, 9016, 4784);

RECORD(NMOS_IS05_ST, 82928 + 24 * 13800, 8);
FIELD(NMOS_IS05_ST, reserved_header, 0, 24);
FIELD(NMOS_IS05_ST, senders, 24, 82800);
FIELD(NMOS_IS05_ST, ptp_grandmaster_id, 82824, 32);
FIELD(NMOS_IS05_ST, sdp_session_id, 82856, 32);
FIELD(NMOS_IS05_ST, sdp_session_version, 82888, 32);
FIELD(NMOS_IS05_ST, reserved_before_receivers, 82920, 8);
FIELD(NMOS_IS05_ST, receivers, 82928, 331200);

RECORD(st_param_masks, 4, 2);
FIELD(st_param_masks, src_mask, 0, 2);
FIELD(st_param_masks, dst_mask, 2, 2);

RECORD(st_param_addresses, 16, 2);
FIELD(st_param_addresses, src_ip, 0, 8);
FIELD(st_param_addresses, dst_ip, 8, 8);

RECORD(st_param_sys, std::size_t{937} * 2, 2);
SETTING(unread_0, 0);
SETTING(type, 66);
SETTING(redundancy, 67);
SETTING(unread_68, 68);
SETTING(pri_video_vlan_mask, 70);
SETTING(sec_video_vlan_mask, 74);
SETTING(pri_video_vlan_id, 78);
SETTING(sec_video_vlan_id, 82);
SETTING(pri_video_masks, 86);
SETTING(sec_video_masks, 94);
SETTING(pri_video_addresses, 102);
SETTING(sec_video_addresses, 134);
SETTING(unread_166, 166);
SETTING(pri_video_dst_port, 168);
SETTING(sec_video_dst_port, 184);
SETTING(pri_audio_vlan_mask, 198);
SETTING(sec_audio_vlan_mask, 214);
SETTING(pri_audio_vlan_id, 230);
SETTING(sec_audio_vlan_id, 246);
SETTING(pri_audio_masks, 262);
SETTING(sec_audio_masks, 294);
SETTING(pri_audio_addresses, 326);
SETTING(sec_audio_addresses, 454);
SETTING(unread_582, 582);
SETTING(pri_audio_dst_port, 584);
SETTING(sec_audio_dst_port, 648);
SETTING(pri_anc_vlan_mask, 710);
SETTING(sec_anc_vlan_mask, 714);
SETTING(pri_anc_vlan_id, 718);
SETTING(sec_anc_vlan_id, 722);
SETTING(pri_anc_masks, 726);
SETTING(sec_anc_masks, 734);
SETTING(pri_anc_addresses, 742);
SETTING(sec_anc_addresses, 774);
SETTING(unread_806, 806);
SETTING(pri_anc_dst_port, 808);
SETTING(sec_anc_dst_port, 824);
SETTING(unread_840, 840);
SETTING(ptp_profile, 856);
SETTING(unread_857, 857);
SETTING(ptp_domain_num_pri, 858);
SETTING(ptp_domain_num_sec, 859);
SETTING(ptp_comm_mode, 860);
SETTING(ptp_delay_msg_rate, 861);
SETTING(unread_862, 862);
SETTING(st2110_vfmt_auto_mode, 863);
SETTING(unread_864, 864);
SETTING(st2110_vfmt_rtp_payload_video, 865);
SETTING(st2110_vfmt_rtp_payload_audio, 869);
SETTING(st2110_vfmt_rtp_payload_anc, 873);
SETTING(st2110_vfmt_system, 877);
SETTING(st2110_vfmt_struct, 881);
SETTING(st2110_vfmt_frame_rate, 885);
SETTING(unread_889, 889);
SETTING(st2110_vfmt_timestamp_read, 897);
SETTING(unread_901, 901);
SETTING(sdp_st2110_mode, 906);
SETTING(unread_907, 907);
SETTING(sdp_video_system, 908);
SETTING(unread_909, 909);
SETTING(sdp_video_frame_rate, 910);
SETTING(unread_911, 911);
SETTING(sdp_audio_ptime, 931);
SETTING(unread_932, 932);
SETTING(sdp_rtp_payload_video, 934);
SETTING(sdp_rtp_payload_audio, 935);
SETTING(sdp_rtp_payload_anc, 936);

// These two hold strings: the order of their members is fixed, their size is the platform's.
constexpr std::size_t string_size = sizeof(void*) == 8 ? 32 : 24;
static_assert(sizeof(std::string) == string_size);

static_assert(offsetof(sdp_str, found_flags) == 0);
static_assert(offsetof(sdp_str, source_ip) == sizeof(void*));
static_assert(offsetof(sdp_str, multicast_ip) == sizeof(void*) + 2 * string_size);
static_assert(offsetof(sdp_str, destination_port) == sizeof(void*) + 4 * string_size);
static_assert(offsetof(sdp_str, rtp_payload_type) == sizeof(void*) + 6 * string_size);
static_assert(offsetof(sdp_str, sampling) == sizeof(void*) + 7 * string_size);
static_assert(offsetof(sdp_str, depth) == sizeof(void*) + 8 * string_size);
static_assert(offsetof(sdp_str, width) == sizeof(void*) + 9 * string_size);
static_assert(offsetof(sdp_str, height) == sizeof(void*) + 10 * string_size);
static_assert(offsetof(sdp_str, exactframerate) == sizeof(void*) + 11 * string_size);
static_assert(offsetof(sdp_str, size_interlaced) == sizeof(void*) + 12 * string_size);
static_assert(offsetof(sdp_str, rate_interlaced) == sizeof(void*) + 12 * string_size + 1);
static_assert(offsetof(sdp_str, colorimetry) == 2 * sizeof(void*) + 12 * string_size);
static_assert(offsetof(sdp_str, packing_mode) == 2 * sizeof(void*) + 13 * string_size);
static_assert(offsetof(sdp_str, tcs) == 2 * sizeof(void*) + 14 * string_size);
static_assert(sizeof(sdp_str) == 2 * sizeof(void*) + 15 * string_size);
static_assert(sizeof(sdp_str::source_ip) == 2 * string_size);
static_assert(sizeof(sdp_str::multicast_ip) == 2 * string_size);
static_assert(sizeof(sdp_str::destination_port) == 2 * string_size);

static_assert(offsetof(Nmos, text) == 0);
static_assert(offsetof(Nmos, port) == string_size);
static_assert(offsetof(Nmos, protocol) == string_size + 4);
static_assert(offsetof(Nmos, ver_slf) == string_size + 8);
static_assert(offsetof(Nmos, ver_src) == string_size + 12);
static_assert(offsetof(Nmos, ver_flw) == string_size + 16);
static_assert(offsetof(Nmos, ver_dvc) == string_size + 20);
static_assert(offsetof(Nmos, ver_snd) == string_size + 24);
static_assert(offsetof(Nmos, ver_rcv) == string_size + 28);
static_assert(sizeof(Nmos) == string_size + 32);

// The other classes hold nothing.
static_assert(sizeof(NodeApi) == 1);
static_assert(sizeof(RegistrationApi) == 1);
static_assert(sizeof(ConnectionApi) == 1);
static_assert(sizeof(NetworkControlApi) == 1);

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// The layout of the records is half of the binary interface: the same numbers on every CPU. A host
// that was built against other numbers would read other fields, so a change stops the build here.

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "nmos_instrument/Nmos.h"
#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

namespace {

#define SIZE(record, size)                                                                         \
    static_assert(sizeof(record) == (size));                                                       \
    static_assert(std::is_trivial_v<record> && std::is_standard_layout_v<record>)

#define FIELD(record, field, offset) static_assert(offsetof(record, field) == (offset))

/// st_param_sys counts in elements.
#define SETTING(member, number)                                                                    \
    static_assert(offsetof(st_param_sys, member) == (number) * sizeof(std::int16_t))

SIZE(SUBSCRIPTION_IS04_ST, 49);
FIELD(SUBSCRIPTION_IS04_ST, peer_id, 0);
FIELD(SUBSCRIPTION_IS04_ST, active, 48);

SIZE(ENDPOINT_IS04_ST, 40);
FIELD(ENDPOINT_IS04_ST, host, 0);
FIELD(ENDPOINT_IS04_ST, port, 16);
FIELD(ENDPOINT_IS04_ST, protocol, 24);

SIZE(CLOCK_IS04_ST, 98);
FIELD(CLOCK_IS04_ST, name, 0);
FIELD(CLOCK_IS04_ST, ref_type, 32);
FIELD(CLOCK_IS04_ST, traceable, 48);
FIELD(CLOCK_IS04_ST, version, 49);
FIELD(CLOCK_IS04_ST, gmid, 65);
FIELD(CLOCK_IS04_ST, locked, 97);

SIZE(INTERFACE_IS04_ST, 144);
FIELD(INTERFACE_IS04_ST, chassis_id, 0);
FIELD(INTERFACE_IS04_ST, port_id, 48);
FIELD(INTERFACE_IS04_ST, name, 96);

SIZE(CONTROL_IS04_ST, 128);
FIELD(CONTROL_IS04_ST, href, 0);
FIELD(CONTROL_IS04_ST, type, 64);

SIZE(SOURCE_IS04_ST, 2500);
FIELD(SOURCE_IS04_ST, id, 0);
FIELD(SOURCE_IS04_ST, version, 48);
FIELD(SOURCE_IS04_ST, label, 96);
FIELD(SOURCE_IS04_ST, description, 160);
FIELD(SOURCE_IS04_ST, device_id, 304);
FIELD(SOURCE_IS04_ST, clock_name, 400);
FIELD(SOURCE_IS04_ST, format, 420);

SIZE(FLOW_IS04_ST, 640);
FIELD(FLOW_IS04_ST, id, 0);
FIELD(FLOW_IS04_ST, version, 48);
FIELD(FLOW_IS04_ST, label, 96);
FIELD(FLOW_IS04_ST, description, 160);
FIELD(FLOW_IS04_ST, format, 288);
FIELD(FLOW_IS04_ST, frame_width, 320);
FIELD(FLOW_IS04_ST, frame_height, 328);
FIELD(FLOW_IS04_ST, interlace_mode, 336);
FIELD(FLOW_IS04_ST, colorspace, 368);
FIELD(FLOW_IS04_ST, transfer_characteristic, 400);
FIELD(FLOW_IS04_ST, media_type, 432);
FIELD(FLOW_IS04_ST, bit_depth, 464);
FIELD(FLOW_IS04_ST, grain_rate_denominator, 472);
FIELD(FLOW_IS04_ST, grain_rate_numerator, 480);
FIELD(FLOW_IS04_ST, sample_rate_numerator, 488);
FIELD(FLOW_IS04_ST, source_id, 496);
FIELD(FLOW_IS04_ST, device_id, 544);

SIZE(DEVICE_IS04_ST, 2844);
FIELD(DEVICE_IS04_ST, id, 0);
FIELD(DEVICE_IS04_ST, version, 48);
FIELD(DEVICE_IS04_ST, label, 96);
FIELD(DEVICE_IS04_ST, description, 160);
FIELD(DEVICE_IS04_ST, receiver_ids_count, 288);
FIELD(DEVICE_IS04_ST, sender_ids_count, 292);
FIELD(DEVICE_IS04_ST, controls_count, 296);
FIELD(DEVICE_IS04_ST, type, 300);
FIELD(DEVICE_IS04_ST, node_id, 332);
FIELD(DEVICE_IS04_ST, senders, 380);
FIELD(DEVICE_IS04_ST, receivers, 668);
FIELD(DEVICE_IS04_ST, controls, 1820);

SIZE(SENDER_IS04_ST, 1700);
FIELD(SENDER_IS04_ST, id, 0);
FIELD(SENDER_IS04_ST, version, 48);
FIELD(SENDER_IS04_ST, label, 96);
FIELD(SENDER_IS04_ST, description, 160);
FIELD(SENDER_IS04_ST, interface_bindings_count, 288);
FIELD(SENDER_IS04_ST, subscription_count, 292);
FIELD(SENDER_IS04_ST, reserved_before_flow_id, 296);
FIELD(SENDER_IS04_ST, flow_id, 312);
FIELD(SENDER_IS04_ST, transport, 360);
FIELD(SENDER_IS04_ST, device_id, 392);
FIELD(SENDER_IS04_ST, manifest_href, 440);
FIELD(SENDER_IS04_ST, interface_bindings, 568);
FIELD(SENDER_IS04_ST, subscription, 1208);
FIELD(SENDER_IS04_ST, reserved_at_end, 1649);

SIZE(RECEIVER_IS04_ST, 1736);
FIELD(RECEIVER_IS04_ST, id, 0);
FIELD(RECEIVER_IS04_ST, version, 48);
FIELD(RECEIVER_IS04_ST, label, 96);
FIELD(RECEIVER_IS04_ST, description, 160);
FIELD(RECEIVER_IS04_ST, interface_bindings_count, 288);
FIELD(RECEIVER_IS04_ST, subscription_count, 292);
FIELD(RECEIVER_IS04_ST, device_id, 296);
FIELD(RECEIVER_IS04_ST, transport, 344);
FIELD(RECEIVER_IS04_ST, interface_bindings, 376);
FIELD(RECEIVER_IS04_ST, subscription, 1016);
FIELD(RECEIVER_IS04_ST, media_types_count, 1508);
FIELD(RECEIVER_IS04_ST, format, 1512);
FIELD(RECEIVER_IS04_ST, media_types, 1544);

SIZE(NMOS_IS04_ST, 79864);
FIELD(NMOS_IS04_ST, id, 0);
FIELD(NMOS_IS04_ST, version, 48);
FIELD(NMOS_IS04_ST, label, 96);
FIELD(NMOS_IS04_ST, description, 160);
FIELD(NMOS_IS04_ST, href, 288);
FIELD(NMOS_IS04_ST, hostname, 352);
FIELD(NMOS_IS04_ST, versions_count, 384);
FIELD(NMOS_IS04_ST, endpoints_count, 388);
FIELD(NMOS_IS04_ST, versions, 392);
FIELD(NMOS_IS04_ST, endpoints, 648);
FIELD(NMOS_IS04_ST, reserved_before_clocks, 1688);
FIELD(NMOS_IS04_ST, clocks_count, 1692);
FIELD(NMOS_IS04_ST, clocks, 1696);
FIELD(NMOS_IS04_ST, interfaces_count, 2284);
FIELD(NMOS_IS04_ST, interfaces, 2288);
FIELD(NMOS_IS04_ST, sources_count, 4016);
FIELD(NMOS_IS04_ST, sources, 4020);
FIELD(NMOS_IS04_ST, reserved_before_flows, 14020);
FIELD(NMOS_IS04_ST, flows_count, 14024);
FIELD(NMOS_IS04_ST, flows, 14032);
FIELD(NMOS_IS04_ST, devices_count, 16592);
FIELD(NMOS_IS04_ST, devices, 16596);
FIELD(NMOS_IS04_ST, senders_count, 27972);
FIELD(NMOS_IS04_ST, senders, 27976);
FIELD(NMOS_IS04_ST, receivers_count, 38176);
FIELD(NMOS_IS04_ST, receivers, 38180);
FIELD(NMOS_IS04_ST, version_seconds, 79848);
FIELD(NMOS_IS04_ST, version_nanoseconds, 79856);

SIZE(CONNECTION_LEG_IS05_ST, 232);
FIELD(CONNECTION_LEG_IS05_ST, source_ip, 0);
FIELD(CONNECTION_LEG_IS05_ST, destination_ip, 32);
FIELD(CONNECTION_LEG_IS05_ST, interface_ip, 64);
FIELD(CONNECTION_LEG_IS05_ST, destination_port, 96);
FIELD(CONNECTION_LEG_IS05_ST, reserved_after_port, 104);
FIELD(CONNECTION_LEG_IS05_ST, rtp_enabled, 224);
FIELD(CONNECTION_LEG_IS05_ST, reserved_at_end, 225);

SIZE(CONNECTION_HALF_IS05_ST, 4784);
FIELD(CONNECTION_HALF_IS05_ST, leg_count, 0);
FIELD(CONNECTION_HALF_IS05_ST, reserved_after_leg_count, 4);
FIELD(CONNECTION_HALF_IS05_ST, peer_id, 8);
FIELD(CONNECTION_HALF_IS05_ST, master_enable, 56);
FIELD(CONNECTION_HALF_IS05_ST, mode, 57);
FIELD(CONNECTION_HALF_IS05_ST, requested_time, 89);
FIELD(CONNECTION_HALF_IS05_ST, activation_time, 137);
FIELD(CONNECTION_HALF_IS05_ST, transport_file_data, 185);
FIELD(CONNECTION_HALF_IS05_ST, transport_file_type, 4281);
FIELD(CONNECTION_HALF_IS05_ST, transport_params, 4320);

SIZE(CONNECTION_IS05_ST, 13800);
FIELD(CONNECTION_IS05_ST, reserved_before_staged, 0);
FIELD(CONNECTION_IS05_ST, staged, 4232);
FIELD(CONNECTION_IS05_ST, active, 9016);

SIZE(NMOS_IS05_ST, 82928 + 24 * 13800);
FIELD(NMOS_IS05_ST, reserved_header, 0);
FIELD(NMOS_IS05_ST, senders, 24);
FIELD(NMOS_IS05_ST, ptp_grandmaster_id, 82824);
FIELD(NMOS_IS05_ST, sdp_session_id, 82856);
FIELD(NMOS_IS05_ST, sdp_session_version, 82888);
FIELD(NMOS_IS05_ST, reserved_before_receivers, 82920);
FIELD(NMOS_IS05_ST, receivers, 82928);

SIZE(st_param_masks, 4);
FIELD(st_param_masks, src_mask, 0);
FIELD(st_param_masks, dst_mask, 2);

SIZE(st_param_addresses, 16);
FIELD(st_param_addresses, src_ip, 0);
FIELD(st_param_addresses, dst_ip, 8);

SIZE(st_param_sys, std::size_t{937} * 2);
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

// The 64-bit members are aligned to 8 on 32-bit x86 too, and with them the records.
static_assert(alignof(ENDPOINT_IS04_ST) == 8);
static_assert(alignof(FLOW_IS04_ST) == 8);
static_assert(alignof(NMOS_IS04_ST) == 8);
static_assert(alignof(CONNECTION_LEG_IS05_ST) == 8);
static_assert(alignof(NMOS_IS05_ST) == 8);
static_assert(alignof(st_param_sys) == 2);

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

} // namespace

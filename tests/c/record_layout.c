// SPDX-License-Identifier: Apache-2.0
//
// The records have the same layout in C as in C++: the sizes and alignments of all, and of each the
// members behind which something could have moved. record_layout.cpp has all members, for C++.

#include <stdalign.h>
#include <stddef.h>
#include <stdint.h>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

#define RECORD(record, size, alignment)                                                            \
    _Static_assert(sizeof(record) == (size) && alignof(record) == (alignment), #record)
#define FIELD(record, field, offset)                                                               \
    _Static_assert(offsetof(record, field) == (offset), #record "." #field)
#define SETTING(member, number)                                                                    \
    _Static_assert(offsetof(st_param_sys, member) == (number) * sizeof(int16_t), #member)

RECORD(SUBSCRIPTION_IS04_ST, 49, 1);
FIELD(SUBSCRIPTION_IS04_ST, active, 48);

RECORD(ENDPOINT_IS04_ST, 40, 8);
FIELD(ENDPOINT_IS04_ST, port, 16);
FIELD(ENDPOINT_IS04_ST, protocol, 24);

RECORD(CLOCK_IS04_ST, 98, 1);
FIELD(CLOCK_IS04_ST, traceable, 48);
FIELD(CLOCK_IS04_ST, gmid, 65);
FIELD(CLOCK_IS04_ST, locked, 97);

RECORD(INTERFACE_IS04_ST, 144, 1);
FIELD(INTERFACE_IS04_ST, port_id, 48);
FIELD(INTERFACE_IS04_ST, name, 96);

RECORD(CONTROL_IS04_ST, 128, 1);
FIELD(CONTROL_IS04_ST, type, 64);

RECORD(SOURCE_IS04_ST, 2500, 1);
FIELD(SOURCE_IS04_ST, label, 96);
FIELD(SOURCE_IS04_ST, device_id, 304);
FIELD(SOURCE_IS04_ST, format, 420);

RECORD(FLOW_IS04_ST, 640, 8);
FIELD(FLOW_IS04_ST, frame_width, 320);
FIELD(FLOW_IS04_ST, bit_depth, 464);
FIELD(FLOW_IS04_ST, device_id, 544);

RECORD(DEVICE_IS04_ST, 2844, 4);
FIELD(DEVICE_IS04_ST, receiver_ids_count, 288);
FIELD(DEVICE_IS04_ST, node_id, 332);
FIELD(DEVICE_IS04_ST, controls, 1820);

RECORD(SENDER_IS04_ST, 1700, 4);
FIELD(SENDER_IS04_ST, interface_bindings_count, 288);
FIELD(SENDER_IS04_ST, device_id, 392);
FIELD(SENDER_IS04_ST, reserved_at_end, 1649);

RECORD(RECEIVER_IS04_ST, 1736, 4);
FIELD(RECEIVER_IS04_ST, interface_bindings_count, 288);
FIELD(RECEIVER_IS04_ST, interface_bindings, 376);
FIELD(RECEIVER_IS04_ST, media_types, 1544);

RECORD(NMOS_IS04_ST, 79864, 8);
FIELD(NMOS_IS04_ST, versions, 392);
FIELD(NMOS_IS04_ST, endpoints, 648);
FIELD(NMOS_IS04_ST, clocks_count, 1692);
FIELD(NMOS_IS04_ST, clocks, 1696);
FIELD(NMOS_IS04_ST, interfaces_count, 2284);
FIELD(NMOS_IS04_ST, interfaces, 2288);
FIELD(NMOS_IS04_ST, sources_count, 4016);
FIELD(NMOS_IS04_ST, sources, 4020);
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

RECORD(CONNECTION_LEG_IS05_ST, 232, 8);
FIELD(CONNECTION_LEG_IS05_ST, interface_ip, 64);
FIELD(CONNECTION_LEG_IS05_ST, reserved_after_port, 104);
FIELD(CONNECTION_LEG_IS05_ST, reserved_at_end, 225);

RECORD(CONNECTION_HALF_IS05_ST, 4784, 8);
FIELD(CONNECTION_HALF_IS05_ST, master_enable, 56);
FIELD(CONNECTION_HALF_IS05_ST, activation_time, 137);
FIELD(CONNECTION_HALF_IS05_ST, transport_params, 4320);

RECORD(CONNECTION_IS05_ST, 13800, 8);
FIELD(CONNECTION_IS05_ST, staged, 4232);
FIELD(CONNECTION_IS05_ST, active, 9016);

RECORD(NMOS_IS05_ST, 414128, 8);
FIELD(NMOS_IS05_ST, ptp_grandmaster_id, 82824);
FIELD(NMOS_IS05_ST, sdp_session_version, 82888);
FIELD(NMOS_IS05_ST, receivers, 82928);

RECORD(st_param_masks, 4, 2);
FIELD(st_param_masks, dst_mask, 2);

RECORD(st_param_addresses, 16, 2);
FIELD(st_param_addresses, dst_ip, 8);

RECORD(st_param_sys, 1874, 2);

SETTING(type, 66);
SETTING(pri_video_masks, 86);
SETTING(sec_video_dst_port, 184);
SETTING(sec_audio_addresses, 454);
SETTING(sec_audio_dst_port, 648);
SETTING(sec_anc_dst_port, 824);
SETTING(ptp_profile, 856);
SETTING(st2110_vfmt_timestamp_read, 897);
SETTING(sdp_st2110_mode, 906);
SETTING(sdp_audio_ptime, 931);
SETTING(sdp_rtp_payload_anc, 936);

_Static_assert(sdp_found_tcs == 0x1000, "the last bit of sdp_found_flag");
_Static_assert(sdp_examined_lines == 100, "lines of an SDP file");

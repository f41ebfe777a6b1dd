// SPDX-License-Identifier: Apache-2.0
//
// What the list of offsets in src/records/record_layout.cpp does not show, also at compile time: a
// field in front of an aligned one may shrink without moving any other.

#include <cstddef>
#include <string>
#include <type_traits>

#include "nmos_instrument/nmos_instrument.h"

namespace {

#define WIDTH(record, field, bytes) static_assert(sizeof(record::field) == (bytes))

WIDTH(ENDPOINT_IS04_ST, host, 16);
WIDTH(ENDPOINT_IS04_ST, port, 8);
WIDTH(ENDPOINT_IS04_ST, protocol, 16);

WIDTH(FLOW_IS04_ST, format, 32);
WIDTH(FLOW_IS04_ST, frame_width, 8);
WIDTH(FLOW_IS04_ST, frame_height, 8);
WIDTH(FLOW_IS04_ST, media_type, 32);
WIDTH(FLOW_IS04_ST, bit_depth, 8);
WIDTH(FLOW_IS04_ST, grain_rate_denominator, 8);
WIDTH(FLOW_IS04_ST, grain_rate_numerator, 8);
WIDTH(FLOW_IS04_ST, sample_rate_numerator, 8);
WIDTH(FLOW_IS04_ST, device_id, 96);

WIDTH(DEVICE_IS04_ST, description, 128);
WIDTH(DEVICE_IS04_ST, receiver_ids_count, 4);
WIDTH(DEVICE_IS04_ST, sender_ids_count, 4);
WIDTH(DEVICE_IS04_ST, controls_count, 4);
WIDTH(DEVICE_IS04_ST, controls, 1024);

WIDTH(SENDER_IS04_ST, description, 128);
WIDTH(SENDER_IS04_ST, interface_bindings_count, 4);
WIDTH(SENDER_IS04_ST, subscription_count, 4);
WIDTH(SENDER_IS04_ST, reserved_at_end, 51);

WIDTH(RECEIVER_IS04_ST, description, 128);
WIDTH(RECEIVER_IS04_ST, interface_bindings_count, 4);
WIDTH(RECEIVER_IS04_ST, subscription_count, 4);
WIDTH(RECEIVER_IS04_ST, subscription, 490);
WIDTH(RECEIVER_IS04_ST, media_types_count, 4);
WIDTH(RECEIVER_IS04_ST, media_types, 192);

WIDTH(NMOS_IS04_ST, hostname, 32);
WIDTH(NMOS_IS04_ST, versions_count, 4);
WIDTH(NMOS_IS04_ST, endpoints_count, 4);
WIDTH(NMOS_IS04_ST, versions, 256);
WIDTH(NMOS_IS04_ST, endpoints, 1040);
WIDTH(NMOS_IS04_ST, reserved_before_clocks, 4);
WIDTH(NMOS_IS04_ST, clocks_count, 4);
WIDTH(NMOS_IS04_ST, clocks, 588);
WIDTH(NMOS_IS04_ST, interfaces_count, 4);
WIDTH(NMOS_IS04_ST, interfaces, 1728);
WIDTH(NMOS_IS04_ST, sources_count, 4);
WIDTH(NMOS_IS04_ST, sources, 10000);
WIDTH(NMOS_IS04_ST, reserved_before_flows, 4);
WIDTH(NMOS_IS04_ST, flows_count, 4);
WIDTH(NMOS_IS04_ST, flows, 2560);
WIDTH(NMOS_IS04_ST, devices_count, 4);
WIDTH(NMOS_IS04_ST, devices, 11376);
WIDTH(NMOS_IS04_ST, senders_count, 4);
WIDTH(NMOS_IS04_ST, senders, 10200);
WIDTH(NMOS_IS04_ST, receivers_count, 4);
WIDTH(NMOS_IS04_ST, receivers, 41664);
WIDTH(NMOS_IS04_ST, version_seconds, 8);
WIDTH(NMOS_IS04_ST, version_nanoseconds, 4);

WIDTH(CONNECTION_LEG_IS05_ST, interface_ip, 32);
WIDTH(CONNECTION_LEG_IS05_ST, destination_port, 8);
WIDTH(CONNECTION_LEG_IS05_ST, reserved_at_end, 7);

WIDTH(CONNECTION_HALF_IS05_ST, leg_count, 4);
WIDTH(CONNECTION_HALF_IS05_ST, transport_file_type, 39);
WIDTH(CONNECTION_HALF_IS05_ST, transport_params, 464);

WIDTH(CONNECTION_IS05_ST, reserved_before_staged, 4232);
WIDTH(CONNECTION_IS05_ST, staged, 4784);
WIDTH(CONNECTION_IS05_ST, active, 4784);

WIDTH(NMOS_IS05_ST, reserved_header, 24);
WIDTH(NMOS_IS05_ST, reserved_before_receivers, 8);
WIDTH(NMOS_IS05_ST, receivers, 331200);

#undef WIDTH

static_assert(sizeof(sdp_str::source_ip) == 2 * sizeof(std::string));
static_assert(sizeof(sdp_str::multicast_ip) == 2 * sizeof(std::string));
static_assert(sizeof(sdp_str::destination_port) == 2 * sizeof(std::string));

/// Aggregates can be listed and cleared by a host of C++11.
template <typename Record>
constexpr bool is_aggregate_aligned_to(std::size_t alignment)
{
    return std::is_aggregate_v<Record> && alignof(Record) == alignment;
}

static_assert(is_aggregate_aligned_to<SUBSCRIPTION_IS04_ST>(1));
static_assert(is_aggregate_aligned_to<ENDPOINT_IS04_ST>(8));
static_assert(is_aggregate_aligned_to<CLOCK_IS04_ST>(1));
static_assert(is_aggregate_aligned_to<INTERFACE_IS04_ST>(1));
static_assert(is_aggregate_aligned_to<SOURCE_IS04_ST>(1));
static_assert(is_aggregate_aligned_to<FLOW_IS04_ST>(8));
static_assert(is_aggregate_aligned_to<CONTROL_IS04_ST>(1));
static_assert(is_aggregate_aligned_to<DEVICE_IS04_ST>(4));
static_assert(is_aggregate_aligned_to<SENDER_IS04_ST>(4));
static_assert(is_aggregate_aligned_to<RECEIVER_IS04_ST>(4));
static_assert(is_aggregate_aligned_to<NMOS_IS04_ST>(8));
static_assert(is_aggregate_aligned_to<CONNECTION_LEG_IS05_ST>(8));
static_assert(is_aggregate_aligned_to<CONNECTION_HALF_IS05_ST>(8));
static_assert(is_aggregate_aligned_to<CONNECTION_IS05_ST>(8));
static_assert(is_aggregate_aligned_to<NMOS_IS05_ST>(8));
static_assert(is_aggregate_aligned_to<st_param_sys>(2));

static_assert(sizeof(NodeApi) == 1);
static_assert(sizeof(RegistrationApi) == 1);
static_assert(sizeof(ConnectionApi) == 1);
static_assert(sizeof(NetworkControlApi) == 1);

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// The flat records are half of the binary interface: every field at its byte, on every CPU. Hosts
// that were built yesterday, perhaps by another compiler, count on these numbers.

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"

namespace {

struct Field
{
    const char* name;
    std::size_t offset;
    std::size_t width;
    std::size_t expected_offset;
    std::size_t expected_width;
};

#define FIELD(record, field, offset, width)                                                        \
    Field                                                                                          \
    {                                                                                              \
#record "::" #field, offsetof(record, field), sizeof(record::field), offset, width         \
    }

template <std::size_t N>
void expect_layout(const Field (&fields)[N])
{
    for (const Field& field : fields) {
        EXPECT_EQ(field.offset, field.expected_offset) << field.name;
        EXPECT_EQ(field.width, field.expected_width) << field.name;
    }
}

template <typename Record>
void expect_flat(std::size_t size, std::size_t alignment)
{
    EXPECT_EQ(sizeof(Record), size);
    EXPECT_EQ(alignof(Record), alignment);
    // A host may clear it with memset and copy it with memcpy.
    static_assert(std::is_trivial_v<Record> && std::is_standard_layout_v<Record>);
    static_assert(std::is_aggregate_v<Record>);
}

// clang-format off
TEST(RecordLayout, Subscription)
{
    expect_flat<SUBSCRIPTION_IS04_ST>(49, 1);
    expect_layout({
        FIELD(SUBSCRIPTION_IS04_ST, peer_id,  0, 48),
        FIELD(SUBSCRIPTION_IS04_ST, active,  48,  1),
    });
}

TEST(RecordLayout, Endpoint)
{
    expect_flat<ENDPOINT_IS04_ST>(40, 8);
    expect_layout({
        FIELD(ENDPOINT_IS04_ST, host,      0, 16),
        FIELD(ENDPOINT_IS04_ST, port,     16,  8),
        FIELD(ENDPOINT_IS04_ST, protocol, 24, 16),
    });
}

TEST(RecordLayout, Clock)
{
    expect_flat<CLOCK_IS04_ST>(98, 1);
    expect_layout({
        FIELD(CLOCK_IS04_ST, name,       0, 32),
        FIELD(CLOCK_IS04_ST, ref_type,  32, 16),
        FIELD(CLOCK_IS04_ST, traceable, 48,  1),
        FIELD(CLOCK_IS04_ST, version,   49, 16),
        FIELD(CLOCK_IS04_ST, gmid,      65, 32),
        FIELD(CLOCK_IS04_ST, locked,    97,  1),
    });
}

TEST(RecordLayout, Interface)
{
    expect_flat<INTERFACE_IS04_ST>(144, 1);
    expect_layout({
        FIELD(INTERFACE_IS04_ST, chassis_id,  0, 48),
        FIELD(INTERFACE_IS04_ST, port_id,    48, 48),
        FIELD(INTERFACE_IS04_ST, name,       96, 48),
    });
}

TEST(RecordLayout, Source)
{
    expect_flat<SOURCE_IS04_ST>(2500, 1);
    expect_layout({
        FIELD(SOURCE_IS04_ST, id,            0,   48),
        FIELD(SOURCE_IS04_ST, version,      48,   48),
        FIELD(SOURCE_IS04_ST, label,        96,   64),
        FIELD(SOURCE_IS04_ST, description, 160,  144),
        FIELD(SOURCE_IS04_ST, device_id,   304,   96),
        FIELD(SOURCE_IS04_ST, clock_name,  400,   20),
        FIELD(SOURCE_IS04_ST, format,      420, 2080),
    });
}

TEST(RecordLayout, Flow)
{
    expect_flat<FLOW_IS04_ST>(640, 8);
    expect_layout({
        FIELD(FLOW_IS04_ST, id,                        0,  48),
        FIELD(FLOW_IS04_ST, version,                  48,  48),
        FIELD(FLOW_IS04_ST, label,                    96,  64),
        FIELD(FLOW_IS04_ST, description,             160, 128),
        FIELD(FLOW_IS04_ST, format,                  288,  32),
        FIELD(FLOW_IS04_ST, frame_width,             320,   8),
        FIELD(FLOW_IS04_ST, frame_height,            328,   8),
        FIELD(FLOW_IS04_ST, interlace_mode,          336,  32),
        FIELD(FLOW_IS04_ST, colorspace,              368,  32),
        FIELD(FLOW_IS04_ST, transfer_characteristic, 400,  32),
        FIELD(FLOW_IS04_ST, media_type,              432,  32),
        FIELD(FLOW_IS04_ST, bit_depth,               464,   8),
        FIELD(FLOW_IS04_ST, grain_rate_denominator,  472,   8),
        FIELD(FLOW_IS04_ST, grain_rate_numerator,    480,   8),
        FIELD(FLOW_IS04_ST, sample_rate_numerator,   488,   8),
        FIELD(FLOW_IS04_ST, source_id,               496,  48),
        FIELD(FLOW_IS04_ST, device_id,               544,  96),
    });
}

TEST(RecordLayout, Control)
{
    expect_flat<CONTROL_IS04_ST>(128, 1);
    expect_layout({
        FIELD(CONTROL_IS04_ST, href,  0, 64),
        FIELD(CONTROL_IS04_ST, type, 64, 64),
    });
}

TEST(RecordLayout, Device)
{
    expect_flat<DEVICE_IS04_ST>(2844, 4);
    expect_layout({
        FIELD(DEVICE_IS04_ST, id,                    0,   48),
        FIELD(DEVICE_IS04_ST, version,              48,   48),
        FIELD(DEVICE_IS04_ST, label,                96,   64),
        FIELD(DEVICE_IS04_ST, description,         160,  128),
        FIELD(DEVICE_IS04_ST, receiver_ids_count,  288,    4),
        FIELD(DEVICE_IS04_ST, sender_ids_count,    292,    4),
        FIELD(DEVICE_IS04_ST, controls_count,      296,    4),
        FIELD(DEVICE_IS04_ST, type,                300,   32),
        FIELD(DEVICE_IS04_ST, node_id,             332,   48),
        FIELD(DEVICE_IS04_ST, senders,             380,  288),
        FIELD(DEVICE_IS04_ST, receivers,           668, 1152),
        FIELD(DEVICE_IS04_ST, controls,           1820, 1024),
    });
}

TEST(RecordLayout, Sender)
{
    expect_flat<SENDER_IS04_ST>(1700, 4);
    expect_layout({
        FIELD(SENDER_IS04_ST, id,                          0,  48),
        FIELD(SENDER_IS04_ST, version,                    48,  48),
        FIELD(SENDER_IS04_ST, label,                      96,  64),
        FIELD(SENDER_IS04_ST, description,               160, 128),
        FIELD(SENDER_IS04_ST, interface_bindings_count,  288,   4),
        FIELD(SENDER_IS04_ST, subscription_count,        292,   4),
        FIELD(SENDER_IS04_ST, reserved_before_flow_id,   296,  16),
        FIELD(SENDER_IS04_ST, flow_id,                   312,  48),
        FIELD(SENDER_IS04_ST, transport,                 360,  32),
        FIELD(SENDER_IS04_ST, device_id,                 392,  48),
        FIELD(SENDER_IS04_ST, manifest_href,             440, 128),
        FIELD(SENDER_IS04_ST, interface_bindings,        568, 640),
        FIELD(SENDER_IS04_ST, subscription,             1208, 441),
        FIELD(SENDER_IS04_ST, reserved_at_end,          1649,  51),
    });
}

TEST(RecordLayout, Receiver)
{
    expect_flat<RECEIVER_IS04_ST>(1736, 4);
    expect_layout({
        FIELD(RECEIVER_IS04_ST, id,                          0,  48),
        FIELD(RECEIVER_IS04_ST, version,                    48,  48),
        FIELD(RECEIVER_IS04_ST, label,                      96,  64),
        FIELD(RECEIVER_IS04_ST, description,               160, 128),
        FIELD(RECEIVER_IS04_ST, interface_bindings_count,  288,   4),
        FIELD(RECEIVER_IS04_ST, subscription_count,        292,   4),
        FIELD(RECEIVER_IS04_ST, device_id,                 296,  48),
        FIELD(RECEIVER_IS04_ST, transport,                 344,  32),
        FIELD(RECEIVER_IS04_ST, interface_bindings,        376, 640),
        FIELD(RECEIVER_IS04_ST, subscription,             1016, 490),
        FIELD(RECEIVER_IS04_ST, media_types_count,        1508,   4),
        FIELD(RECEIVER_IS04_ST, format,                   1512,  32),
        FIELD(RECEIVER_IS04_ST, media_types,              1544, 192),
    });
}

TEST(RecordLayout, Node)
{
    expect_flat<NMOS_IS04_ST>(79864, 8);
    expect_layout({
        FIELD(NMOS_IS04_ST, id,                         0,    48),
        FIELD(NMOS_IS04_ST, version,                   48,    48),
        FIELD(NMOS_IS04_ST, label,                     96,    64),
        FIELD(NMOS_IS04_ST, description,              160,   128),
        FIELD(NMOS_IS04_ST, href,                     288,    64),
        FIELD(NMOS_IS04_ST, hostname,                 352,    32),
        FIELD(NMOS_IS04_ST, versions_count,           384,     4),
        FIELD(NMOS_IS04_ST, endpoints_count,          388,     4),
        FIELD(NMOS_IS04_ST, versions,                 392,   256),
        FIELD(NMOS_IS04_ST, endpoints,                648,  1040),
        FIELD(NMOS_IS04_ST, reserved_before_clocks,  1688,     4),
        FIELD(NMOS_IS04_ST, clocks_count,            1692,     4),
        FIELD(NMOS_IS04_ST, clocks,                  1696,   588),
        FIELD(NMOS_IS04_ST, interfaces_count,        2284,     4),
        FIELD(NMOS_IS04_ST, interfaces,              2288,  1728),
        FIELD(NMOS_IS04_ST, sources_count,           4016,     4),
        FIELD(NMOS_IS04_ST, sources,                 4020, 10000),
        FIELD(NMOS_IS04_ST, reserved_before_flows,  14020,     4),
        FIELD(NMOS_IS04_ST, flows_count,            14024,     4),
        FIELD(NMOS_IS04_ST, flows,                  14032,  2560),
        FIELD(NMOS_IS04_ST, devices_count,          16592,     4),
        FIELD(NMOS_IS04_ST, devices,                16596, 11376),
        FIELD(NMOS_IS04_ST, senders_count,          27972,     4),
        FIELD(NMOS_IS04_ST, senders,                27976, 10200),
        FIELD(NMOS_IS04_ST, receivers_count,        38176,     4),
        FIELD(NMOS_IS04_ST, receivers,              38180, 41664),
        FIELD(NMOS_IS04_ST, version_seconds,        79848,     8),
        FIELD(NMOS_IS04_ST, version_nanoseconds,    79856,     4),
    });
}

TEST(RecordLayout, ConnectionLeg)
{
    expect_flat<CONNECTION_LEG_IS05_ST>(232, 8);
    expect_layout({
        FIELD(CONNECTION_LEG_IS05_ST, source_ip,             0,  32),
        FIELD(CONNECTION_LEG_IS05_ST, destination_ip,       32,  32),
        FIELD(CONNECTION_LEG_IS05_ST, interface_ip,         64,  32),
        FIELD(CONNECTION_LEG_IS05_ST, destination_port,     96,   8),
        FIELD(CONNECTION_LEG_IS05_ST, reserved_after_port, 104, 120),
        FIELD(CONNECTION_LEG_IS05_ST, rtp_enabled,         224,   1),
        FIELD(CONNECTION_LEG_IS05_ST, reserved_at_end,     225,   7),
    });
}

TEST(RecordLayout, ConnectionHalf)
{
    expect_flat<CONNECTION_HALF_IS05_ST>(4784, 8);
    expect_layout({
        FIELD(CONNECTION_HALF_IS05_ST, leg_count,                   0,    4),
        FIELD(CONNECTION_HALF_IS05_ST, reserved_after_leg_count,    4,    4),
        FIELD(CONNECTION_HALF_IS05_ST, peer_id,                     8,   48),
        FIELD(CONNECTION_HALF_IS05_ST, master_enable,              56,    1),
        FIELD(CONNECTION_HALF_IS05_ST, mode,                       57,   32),
        FIELD(CONNECTION_HALF_IS05_ST, requested_time,             89,   48),
        FIELD(CONNECTION_HALF_IS05_ST, activation_time,           137,   48),
        FIELD(CONNECTION_HALF_IS05_ST, transport_file_data,       185, 4096),
        FIELD(CONNECTION_HALF_IS05_ST, transport_file_type,      4281,   39),
        FIELD(CONNECTION_HALF_IS05_ST, transport_params,         4320,  464),
    });
}

TEST(RecordLayout, Connection)
{
    expect_flat<CONNECTION_IS05_ST>(13800, 8);
    expect_layout({
        FIELD(CONNECTION_IS05_ST, reserved_before_staged,    0, 4232),
        FIELD(CONNECTION_IS05_ST, staged,                 4232, 4784),
        FIELD(CONNECTION_IS05_ST, active,                 9016, 4784),
    });
}

TEST(RecordLayout, Connections)
{
    expect_flat<NMOS_IS05_ST>(82928 + 24 * 13800, 8);
    expect_layout({
        FIELD(NMOS_IS05_ST, reserved_header,               0,     24),
        FIELD(NMOS_IS05_ST, senders,                      24,  82800),
        FIELD(NMOS_IS05_ST, ptp_grandmaster_id,        82824,     32),
        FIELD(NMOS_IS05_ST, sdp_session_id,            82856,     32),
        FIELD(NMOS_IS05_ST, sdp_session_version,       82888,     32),
        FIELD(NMOS_IS05_ST, reserved_before_receivers, 82920,      8),
        FIELD(NMOS_IS05_ST, receivers,                 82928, 331200),
    });
}

TEST(RecordLayout, SystemParameters)
{
    // By element number in system_parameters_test.cpp.
    expect_flat<st_param_sys>(1874, 2);
}
// clang-format on

#undef FIELD

/// The members of a class with texts, in the order of their addresses.
template <typename... Members>
bool in_order(const Members&... members)
{
    const char* before = nullptr;
    return ([&] {
        const char* here = reinterpret_cast<const char*>(&members);
        const bool later = before == nullptr || here > before;
        before = here;
        return later;
    }() && ...);
}

TEST(RecordLayout, SdpResultKeepsItsOrder)
{
    const sdp_str found = sdp_str();
    EXPECT_TRUE(in_order(found, found.source_ip, found.multicast_ip, found.destination_port,
                         found.rtp_payload_type, found.sampling, found.depth, found.width,
                         found.height, found.exactframerate, found.size_interlaced,
                         found.rate_interlaced, found.colorimetry, found.packing_mode, found.tcs));
    EXPECT_EQ(static_cast<const void*>(&found), static_cast<const void*>(&found.found_flags));
    EXPECT_EQ(sizeof found.source_ip, 2 * sizeof(std::string));
    EXPECT_EQ(sizeof found.multicast_ip, 2 * sizeof(std::string));
    EXPECT_EQ(sizeof found.destination_port, 2 * sizeof(std::string));
    // 4 bytes of flags and 2 of marks, each padded to the text that follows.
    EXPECT_EQ(sizeof found, 15 * sizeof(std::string) + 2 * alignof(std::string));
}

TEST(RecordLayout, NmosKeepsItsOrder)
{
    const Nmos nmos;
    EXPECT_EQ(static_cast<const void*>(&nmos), static_cast<const void*>(&nmos.text));
    const char* first = reinterpret_cast<const char*>(&nmos) + sizeof(std::string);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.port), first);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.protocol), first + 4);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.ver_slf), first + 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.ver_src), first + 12);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.ver_flw), first + 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.ver_dvc), first + 20);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.ver_snd), first + 24);
    EXPECT_EQ(reinterpret_cast<const char*>(&nmos.ver_rcv), first + 28);
    EXPECT_EQ(sizeof nmos, sizeof(std::string) + 32);
}

TEST(RecordLayout, EmptyClassesTakeOneByte)
{
    EXPECT_EQ(sizeof(NodeApi), 1u);
    EXPECT_EQ(sizeof(RegistrationApi), 1u);
    EXPECT_EQ(sizeof(ConnectionApi), 1u);
    EXPECT_EQ(sizeof(NetworkControlApi), 1u);
}

} // namespace

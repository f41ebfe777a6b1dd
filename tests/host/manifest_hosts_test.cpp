// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_hosts.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

constexpr Ipv4Network media{0xc0000200, 24};        // 192.0.2.0/24
constexpr Ipv4Network control{0xc6336400, 24};      // 198.51.100.0/24
constexpr Ipv4Network loopback{0x7f000000, 8};      // 127.0.0.0/8
constexpr Ipv4Network link_local{0xa9fe0000, 16};   // 169.254.0.0/16
constexpr Ipv4Network everything{0x00000000, 0};    // 0.0.0.0/0
constexpr Ipv4Network one_loopback{0x7f000001, 32}; // 127.0.0.1

TEST(ManifestHosts, ItsOwnNetworksAndThoseThatAreNamed)
{
    const ManifestHosts hosts({media}, control, {{0xcb007107, 32}});
    EXPECT_TRUE(hosts.allow(0xc0000209) && hosts.allow(0xc6336409) && hosts.allow(0xcb007107));
    EXPECT_FALSE(hosts.allow(0xc0000309) || hosts.allow(0xcb007108) || hosts.allow(0x7f000001));
    EXPECT_EQ(hosts.text(), "192.0.2.0/24, 198.51.100.0/24, 203.0.113.7");
}

TEST(ManifestHosts, LoopbackAndLinkLocalOnlyWhereItIsServedOrNamed)
{
    EXPECT_TRUE(ManifestHosts({media}, loopback, {}).allow(0x7f000001));
    EXPECT_TRUE(ManifestHosts({media}, link_local, {}).allow(0xa9fe0101));
    EXPECT_TRUE(ManifestHosts({media}, control, {one_loopback}).allow(0x7f000001));
    EXPECT_FALSE(ManifestHosts({media}, control, {one_loopback}).allow(0x7f000002));
    EXPECT_FALSE(ManifestHosts({loopback, link_local}, control, {}).allow(0x7f000001));
    EXPECT_FALSE(ManifestHosts({loopback, link_local}, control, {}).allow(0xa9fe0101));
    EXPECT_FALSE(ManifestHosts({media}, control, {everything}).allow(0x7f000001));
    EXPECT_FALSE(ManifestHosts({media}, control, {everything}).allow(0xa9fe0101));
    EXPECT_TRUE(ManifestHosts({media}, control, {everything}).allow(0xcb007107));
}

TEST(ManifestHosts, AnUnspecifiedAddressIsNoNetwork)
{
    const ManifestHosts hosts({media}, {0x00000000, 24}, {everything});
    EXPECT_FALSE(hosts.allow(0x00000000) || hosts.allow(0x7f000001));
}

TEST(NetworkOfInterface, LoopbackIsAnEighth)
{
    EXPECT_EQ(network_of_interface(0x7f000001), loopback);
}

TEST(NetworkOfInterface, WithoutOneItHas24Bits)
{
    EXPECT_EQ(network_of_interface(0xcb007109), (Ipv4Network{0xcb007100, 24})); // 203.0.113.9
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "text/ipv4_network.h"

#include <string_view>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(Ipv4Network, IsReadWithAPrefixOrAsOneAddress)
{
    EXPECT_EQ(parse_ipv4_network("192.0.2.0/24"), (Ipv4Network{0xc0000200, 24}));
    EXPECT_EQ(parse_ipv4_network("192.0.2.7"), (Ipv4Network{0xc0000207, 32}));
    EXPECT_EQ(parse_ipv4_network("192.0.2.7/32"), (Ipv4Network{0xc0000207, 32}));
    EXPECT_EQ(parse_ipv4_network("192.0.2.6/31"), (Ipv4Network{0xc0000206, 31}));
    EXPECT_EQ(parse_ipv4_network("128.0.0.0/1"), (Ipv4Network{0x80000000, 1}));
    EXPECT_EQ(parse_ipv4_network("0.0.0.0/0"), (Ipv4Network{0, 0}));
}

TEST(Ipv4Network, OtherTextsAreRefused)
{
    for (const std::string_view text :
         {"", "/", "/24", "192.0.2.0/", "192.0.2.0/33", "192.0.2.0/-1", "192.0.2.0/+24",
          "192.0.2.0/024", "192.0.2.0/ 24", "192.0.2.0/24 ", " 192.0.2.0/24", "192.0.2/24",
          "192.0.2.0/24/24", "192.0.2.0/255.255.255.0", "192.0.02.0/24", "10.1", "example.org",
          "2001:db8::/32", "192.0.2.0/4294967320"})
        EXPECT_FALSE(parse_ipv4_network(text)) << text;
    EXPECT_FALSE(parse_ipv4_network(std::string_view("192.0.2.0/24\0", 13)));
}

TEST(Ipv4Network, BitsBehindThePrefixAreRefused)
{
    for (const std::string_view text :
         {"192.0.2.1/24", "192.0.2.128/24", "192.0.2.7/31", "0.0.0.1/0", "128.0.0.0/0"})
        EXPECT_FALSE(parse_ipv4_network(text)) << text;
}

TEST(Ipv4Network, ContainsItsAddresses)
{
    const Ipv4Network network{0xc0000280, 25}; // 192.0.2.128/25
    EXPECT_TRUE(network.contains(0xc0000280) && network.contains(0xc00002ff));
    EXPECT_FALSE(network.contains(0xc000027f) || network.contains(0xc0000300));
    const Ipv4Network one{0xc0000207, 32};
    EXPECT_TRUE(one.contains(0xc0000207));
    EXPECT_FALSE(one.contains(0xc0000206) || one.contains(0xc0000208));
    const Ipv4Network every{0, 0};
    EXPECT_TRUE(every.contains(0) && every.contains(0xffffffff));
}

TEST(Ipv4Network, ContainsSmallerNetworks)
{
    const Ipv4Network loopback{0x7f000000, 8};
    EXPECT_TRUE(loopback.contains(loopback));
    EXPECT_TRUE(loopback.contains(Ipv4Network{0x7f000001, 32}));
    EXPECT_FALSE(loopback.contains(Ipv4Network{0x7e000000, 7}));
    EXPECT_FALSE(loopback.contains(Ipv4Network{0, 0}));
    EXPECT_FALSE(loopback.contains(Ipv4Network{0x80000000, 8}));
}

TEST(Ipv4Network, AroundAnAddress)
{
    EXPECT_EQ(network_around(0xc0000207, 24), (Ipv4Network{0xc0000200, 24}));
    EXPECT_EQ(network_around(0xc0000207, 32), (Ipv4Network{0xc0000207, 32}));
    EXPECT_EQ(network_around(0xc0000207, 0), (Ipv4Network{0, 0}));
}

TEST(Ipv4Network, AsText)
{
    EXPECT_EQ(text_of(Ipv4Network{0xc0000200, 24}), "192.0.2.0/24");
    EXPECT_EQ(text_of(Ipv4Network{0xc0000207, 32}), "192.0.2.7");
    EXPECT_EQ(text_of(Ipv4Network{0, 0}), "0.0.0.0/0");
}

TEST(Ipv4Network, InAList)
{
    const std::vector<Ipv4Network> networks = {{0xc0000200, 24}, {0xc6336407, 32}};
    EXPECT_TRUE(any_contains(networks, 0xc00002ff));
    EXPECT_TRUE(any_contains(networks, 0xc6336407));
    EXPECT_FALSE(any_contains(networks, 0xc6336408));
    EXPECT_FALSE(any_contains({}, 0xc6336407));
}

} // namespace
} // namespace nmos_instrument::host

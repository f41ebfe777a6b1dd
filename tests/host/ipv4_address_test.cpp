// SPDX-License-Identifier: Apache-2.0

#include "text/ipv4_address.h"

#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(Ipv4, Forms)
{
    EXPECT_EQ(ipv4_from_dotted_quad("192.0.2.1"), 0xc0000201U);
    for (const std::string text :
         {"192.0.2.01", "10.1", "1", "0xa.0.0.1", " 10.0.0.1", "10.0.0.1 x", ""})
        EXPECT_FALSE(ipv4_from_dotted_quad(text)) << text;
    EXPECT_FALSE(ipv4_from_dotted_quad(std::string("10.0.0.1\0", 9)));
    EXPECT_EQ(ipv4_from_any_form("10.1"), 0x0a000001U);
    EXPECT_EQ(ipv4_from_any_form("0xa.0.0.010 x"), 0x0a000008U);
    EXPECT_EQ(dotted_quad(0xe9fc000b), "233.252.0.11");
    EXPECT_TRUE(is_multicast(0xe0000000) && is_multicast(0xefffffff));
    EXPECT_FALSE(is_multicast(0xdfffffff) || is_multicast(0xf0000000));
    EXPECT_TRUE(is_unicast(0x01000000) && is_unicast(0xdfffffff));
    EXPECT_FALSE(is_unicast(0x00ffffff) || is_unicast(0xe0000000) || is_unicast(0xffffffff));
}

TEST(Ipv4Address, LoopbackHasSeveralNames)
{
    for (const char* const own : {"127.0.0.1", "127.255.255.255", "::1", "[::1]", "localhost"})
        EXPECT_TRUE(is_loopback(std::string(own))) << own;
    for (const char* const other : {"128.0.0.1", "126.255.255.255", "::2", "0.0.0.0", "local", ""})
        EXPECT_FALSE(is_loopback(std::string(other))) << other;
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "configuration/value_rules.h"

#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::string_literals;

/// The accepted text as the rule leaves it, or "refused".
std::string outcome(const TextRule& rule, std::string text)
{
    return rule.accept(text) ? text : "refused";
}

TEST(TextForField, LeavesRoomForTheNul)
{
    const TextRule rule = text_for_field(8);
    EXPECT_EQ(outcome(rule, ""), "");
    EXPECT_EQ(outcome(rule, "1234567"), "1234567");
    EXPECT_EQ(outcome(rule, "12345678"), "refused");
    EXPECT_EQ(outcome(rule, "\xc3\xa9\xc3\xa9\xc3\xa9."), "\xc3\xa9\xc3\xa9\xc3\xa9.");
    EXPECT_EQ(outcome(rule, "\xc3\xa9\xc3\xa9\xc3\xa9.."), "refused");
    EXPECT_EQ(rule.allowed, "text of at most 7 bytes, no control characters");
}

TEST(TextForField, HasNoControlCharacters)
{
    for (const std::string& text : {"a\0b"s, "\n"s, "\x1f"s, "\x7f"s, "a\tb"s})
        EXPECT_EQ(outcome(text_for_field(64), text), "refused");
    EXPECT_EQ(outcome(text_for_field(64), " ~"), " ~");
}

TEST(NameForField, IsNotEmpty)
{
    EXPECT_EQ(outcome(name_for_field(8), ""), "refused");
    EXPECT_EQ(outcome(name_for_field(8), "x"), "x");
    EXPECT_EQ(outcome(name_for_field(8), "12345678"), "refused");
}

TEST(HostName, KeepsToRfc1123)
{
    const TextRule rule = host_name_for_field(32);
    for (const char* const good : {"a", "0", "host-1", "Host.example.com", "1.2"})
        EXPECT_EQ(outcome(rule, good), good);
    for (const char* const bad : {"", "-a", "a-", "a..b", ".a", "a.", "a_b", "a b", "h\xc3\xb6st",
                                  "abcdefghijklmnopqrstuvwxyz-012345"})
        EXPECT_EQ(outcome(rule, bad), "refused") << bad;
}

TEST(HostName, HasPartsOfAtMost63Bytes)
{
    const TextRule rule = host_name_for_field(256);
    EXPECT_NE(outcome(rule, std::string(63, 'a') + ".b"), "refused");
    EXPECT_EQ(outcome(rule, std::string(64, 'a') + ".b"), "refused");
}

TEST(ClockName, IsClkAndDigits)
{
    const TextRule rule = clock_name_for_field(20);
    for (const char* const good : {"clk0", "clk12", "clk0123456789012345"})
        EXPECT_EQ(outcome(rule, good), good);
    for (const char* const bad :
         {"", "clk", "clk ", "CLK0", "clk0a", "xclk0", "clk01234567890123456"})
        EXPECT_EQ(outcome(rule, bad), "refused") << bad;
}

TEST(Octets, AreRewrittenToOneSpelling)
{
    const TextRule mac = octets(6, "00-00-5e-00-53-01");
    EXPECT_EQ(outcome(mac, "00-00-5e-00-53-01"), "00-00-5e-00-53-01");
    EXPECT_EQ(outcome(mac, "00:00:5E:00:53:AF"), "00-00-5e-00-53-af");
    for (const char* const bad :
         {"", "00-00-5e-00-53", "00-00-5e-00-53-0", "00-00-5e-00-53-011", "00-00-5g-00-53-01",
          "00.00.5e.00.53.01", "0000-5e-00-53-011", "00-00-5e-00-53-01-02-03"})
        EXPECT_EQ(outcome(mac, bad), "refused") << bad;
    EXPECT_EQ(outcome(octets(8, ""), "00-00-5E-FF-FE-00-53-FF"), "00-00-5e-ff-fe-00-53-ff");
}

TEST(UnicastAddress, IsADottedQuadThatCanBelongToAHost)
{
    for (const char* const good : {"192.0.2.10", "1.0.0.0", "127.0.0.1", "223.255.255.255"})
        EXPECT_EQ(outcome(unicast_address(), good), good);
    for (const std::string& bad : {""s, "0.0.0.0"s, "0.1.2.3"s, "224.0.0.0"s, "255.255.255.255"s,
                                   "10.1"s, "010.0.0.1"s, "256.0.0.1"s, "1.2.3.4 "s, " 1.2.3.4"s,
                                   "1.2.3.4\0"s, "::1"s, "localhost"s, "0x7f.0.0.1"s})
        EXPECT_EQ(outcome(unicast_address(), bad), "refused") << bad;
}

TEST(MulticastAddress, IsOneOf224To239)
{
    for (const char* const good : {"224.0.0.0", "233.252.0.1", "239.255.255.255"})
        EXPECT_EQ(outcome(multicast_address(), good), good);
    for (const char* const bad : {"", "223.255.255.255", "240.0.0.0", "ff02::1", "239.1"})
        EXPECT_EQ(outcome(multicast_address(), bad), "refused") << bad;
}

TEST(Exactly, AcceptsOneText)
{
    EXPECT_EQ(outcome(exactly("BT709"), "BT709"), "BT709");
    EXPECT_EQ(outcome(exactly("BT709"), "bt709"), "refused");
    EXPECT_EQ(outcome(exactly("BT709"), ""), "refused");
}

TEST(NumberRange, NamesOneNumberAlone)
{
    EXPECT_EQ(number_range(96, 127), "96 to 127");
    EXPECT_EQ(number_range(127, 127), "127");
}

} // namespace
} // namespace nmos_instrument::host

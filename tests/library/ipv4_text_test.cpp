// SPDX-License-Identifier: Apache-2.0

#include "text/ipv4_text.h"

#include <arpa/inet.h>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace nmos_instrument {
namespace {

bool taken_by_inet_aton(const std::string& text)
{
    in_addr address{};
    return inet_aton(text.c_str(), &address) != 0;
}

TEST(Ipv4Text, WhatInetAtonTakes)
{
    for (const char* const text : {"0.0.0.0", "192.0.2.1", "255.255.255.255", "10.1", "1", "0x7f.1",
                                   "010.1.1.1", "10.0.0.1 junk", "4294967295", "1.2.3.04"})
        EXPECT_TRUE(is_inet_aton_address(text)) << text;
    for (const char* const text : {"", " ", " 10.0.0.1", "256.1.1.1", "1.2.3.4.5", "1.2.3.", ".1",
                                   "a.b.c.d", "10.0.0.1/64", "1.2.3.08", "::1", "1..2.3"})
        EXPECT_FALSE(is_inet_aton_address(text)) << text;
}

TEST(Ipv4Text, OfTheseADottedQuadHasOneFormOnly)
{
    for (const char* const text : {"0.0.0.0", "192.0.2.1", "255.255.255.255"})
        EXPECT_TRUE(is_dotted_quad(text)) << text;
    for (const char* const text :
         {"", "10.1", "1", "0x7f.1.1.1", "010.1.1.1", "1.2.3.04", "10.0.0.1 junk", "256.1.1.1",
          "1.2.3.4.5", "1.2.3.", ".1.2.3", "1..2.3", " 1.2.3.4", "1.2.3.0000"})
        EXPECT_FALSE(is_dotted_quad(text)) << text;
    EXPECT_FALSE(is_dotted_quad(std::string_view("10.0.0.1\0junk", 13)));
}

TEST(Ipv4Text, ReadsUpToTheFirstNul)
{
    EXPECT_TRUE(is_inet_aton_address(std::string_view("10.0.0.1\0junk", 13)));
    EXPECT_FALSE(is_inet_aton_address(std::string_view("\00010.0.0.1", 9)));
}

/// All texts of up to six characters of an address's alphabet that matters.
TEST(Ipv4Text, AgreesWithInetAtonOnAllShortTexts)
{
    constexpr std::string_view alphabet = "029.x ";
    for (std::size_t length = 0; length <= 6; ++length) {
        std::size_t count = 1;
        for (std::size_t i = 0; i < length; ++i)
            count *= alphabet.size();
        for (std::size_t number = 0; number < count; ++number) {
            std::string text;
            for (std::size_t i = 0, rest = number; i < length; ++i, rest /= alphabet.size())
                text += alphabet[rest % alphabet.size()];
            ASSERT_EQ(is_inet_aton_address(text), taken_by_inet_aton(text)) << '"' << text << '"';
        }
    }
}

TEST(Ipv4Text, AgreesWithInetAtonOnRandomQuads)
{
    std::mt19937 random(20260101); // fixed: a differential test that anybody can repeat
    constexpr std::string_view alphabet = "0123456789....x ";
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        for (std::uint32_t left = random() % 16; left > 0; --left)
            text += alphabet[random() % alphabet.size()];
        ASSERT_EQ(is_inet_aton_address(text), taken_by_inet_aton(text)) << '"' << text << '"';
        text.clear();
        for (int octet = 0; octet < 4; ++octet)
            text += (octet == 0 ? "" : ".") + std::to_string(random() % 300);
        ASSERT_EQ(is_inet_aton_address(text), taken_by_inet_aton(text)) << '"' << text << '"';
    }
}

} // namespace
} // namespace nmos_instrument

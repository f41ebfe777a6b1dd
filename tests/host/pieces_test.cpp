// SPDX-License-Identifier: Apache-2.0

#include "text/pieces.h"

#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using Words = std::vector<std::string_view>;

TEST(Pieces, AreCutOffAtTheFirstSeparator)
{
    std::string_view rest = "a=b=c";
    EXPECT_EQ(cut_off(rest, '='), "a");
    EXPECT_EQ(rest, "b=c");
    EXPECT_EQ(cut_off(rest, ';'), "b=c");
    EXPECT_EQ(rest, "");
    EXPECT_EQ(cut_off(rest, ';'), "");
    rest = "=";
    EXPECT_EQ(cut_off(rest, '='), "");
    EXPECT_EQ(rest, "");
}

TEST(Pieces, WordsStandBetweenBlanks)
{
    EXPECT_EQ(words_of(""), Words());
    EXPECT_EQ(words_of("  "), Words());
    EXPECT_EQ(words_of("  one two\t  three "), (Words{"one", "two\t", "three"}));
}

TEST(Pieces, TrimmedTextsHaveNoBlanksAtTheirEnds)
{
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_EQ(trimmed("  a b "), "a b");
}

TEST(Numbers, AreDecimalDigitsWithinTheirLimits)
{
    EXPECT_EQ(number_from_to(0, 255, "0"), 0);
    EXPECT_EQ(number_from_to(0, 255, "255"), 255);
    EXPECT_EQ(number_from_to(0, 255, "007"), 7);
    for (const char* text :
         {"", "256", "-1", "-0", "+1", " 1", "1 ", "1x", "0x1", "99999999999999999999999"})
        EXPECT_EQ(number_from_to(0, 255, text), std::nullopt) << text;
    EXPECT_EQ(number_from_to(1, 255, "0"), std::nullopt);
}

} // namespace
} // namespace nmos_instrument::host

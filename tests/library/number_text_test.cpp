// SPDX-License-Identifier: Apache-2.0

#include "text/number_text.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument {
namespace {

std::string json_number(double value)
{
    char text[number_text_size];
    return {text, write_json_number(text, value)};
}

std::string rounded(double value)
{
    char text[rounded_text_size];
    return {text, write_rounded(text, value)};
}

TEST(JsonNumber, IntegralBelowTwoTo53InFullDigits)
{
    EXPECT_EQ(json_number(0), "0");
    EXPECT_EQ(json_number(-0.0), "-0");
    EXPECT_EQ(json_number(1), "1");
    EXPECT_EQ(json_number(-25), "-25");
    EXPECT_EQ(json_number(8080), "8080");
    EXPECT_EQ(json_number(1e15), "1000000000000000");
    EXPECT_EQ(json_number(9007199254740991.0), "9007199254740991");
    EXPECT_EQ(json_number(-9007199254740991.0), "-9007199254740991");
}

TEST(JsonNumber, AllOthersWith17SignificantDigits)
{
    EXPECT_EQ(json_number(9007199254740992.0), "9007199254740992");
    EXPECT_EQ(json_number(0.5), "0.5");
    EXPECT_EQ(json_number(-0.5), "-0.5");
    EXPECT_EQ(json_number(0.1), "0.10000000000000001");
    EXPECT_EQ(json_number(59.94), "59.939999999999998");
    EXPECT_EQ(json_number(1e17), "1e+17");
    EXPECT_EQ(json_number(1e300), "1.0000000000000001e+300");
    EXPECT_EQ(json_number(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
    EXPECT_EQ(json_number(-std::numeric_limits<double>::denorm_min()), "-4.9406564584124654e-324");
}

TEST(Rounded, LikeThePercentDot0fOfTheCLibrary)
{
    EXPECT_EQ(rounded(5004), "5004");
    EXPECT_EQ(rounded(0), "0");
    EXPECT_EQ(rounded(-0.0), "-0");
    EXPECT_EQ(rounded(0.5), "0"); // to even
    EXPECT_EQ(rounded(1.5), "2");
    EXPECT_EQ(rounded(-5004.75), "-5005");
    EXPECT_EQ(rounded(1e22), "10000000000000000000000");
    EXPECT_EQ(rounded(std::numeric_limits<double>::max()).size(), 309U);
    EXPECT_EQ(rounded(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(rounded(-std::numeric_limits<double>::quiet_NaN()), "-nan");
    EXPECT_EQ(rounded(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(rounded(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(LeadingInteger, ReadLikeStrtol)
{
    EXPECT_EQ(leading_integer(""), 0);
    EXPECT_EQ(leading_integer("   "), 0);
    EXPECT_EQ(leading_integer("96 raw/90000"), 96);
    EXPECT_EQ(leading_integer("\t\n\v\f\r 7"), 7);
    EXPECT_EQ(leading_integer("+5004"), 5004);
    EXPECT_EQ(leading_integer("-5004x"), -5004);
    EXPECT_EQ(leading_integer("+-5"), 0);
    EXPECT_EQ(leading_integer("-+5"), 0);
    EXPECT_EQ(leading_integer("--5"), 0);
    EXPECT_EQ(leading_integer("+ 5"), 0);
    EXPECT_EQ(leading_integer("-0"), 0);
    EXPECT_EQ(leading_integer("0x10"), 0);
    EXPECT_EQ(leading_integer("x1"), 0);
    EXPECT_EQ(leading_integer("+"), 0);
    EXPECT_EQ(leading_integer("-"), 0);
    EXPECT_EQ(leading_integer("007"), 7);
    EXPECT_EQ(leading_integer(std::string_view("1\0002", 3)), 1);
}

TEST(LeadingInteger, SaturatesAt64Bits)
{
    EXPECT_EQ(leading_integer("4294967300"), 4294967300LL);
    EXPECT_EQ(leading_integer("99999999999999999999"), std::numeric_limits<long long>::max());
    EXPECT_EQ(leading_integer("-99999999999999999999"), std::numeric_limits<long long>::min());
}

TEST(LeadingDouble, ReadLikeStrtodInTheCLocale)
{
    EXPECT_EQ(leading_double(""), 0);
    EXPECT_EQ(leading_double("3212"), 3212);
    EXPECT_EQ(leading_double(" +80.5abc"), 80.5);
    EXPECT_EQ(leading_double("0x50"), 80);
    EXPECT_EQ(leading_double("1e400"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(leading_double("1e-400"), 0);
    EXPECT_TRUE(std::isnan(leading_double("nan")));
    EXPECT_EQ(leading_double("-inf"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(leading_double("1,5"), 1);
    EXPECT_EQ(leading_double(std::string("8\0009", 3)), 8);
}

} // namespace
} // namespace nmos_instrument

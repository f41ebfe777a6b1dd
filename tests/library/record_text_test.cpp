// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/record_text.h"

#include <cstring>
#include <limits>
#include <string>

#include <gmock/gmock.h>

#include "nmos_instrument/node_state.h"

namespace {

using nmos_instrument::set_count;
using nmos_instrument::set_text;
using nmos_instrument::set_version;
using nmos_instrument::text_of;

struct TextCase
{
    const char* name;
    std::string text;
    bool fits; ///< into a field of eight bytes
    std::string field;
};

class SetText : public testing::TestWithParam<TextCase>
{};

/// All eight bytes, so that the zeros behind the text are seen.
std::string bytes_of(const char (&field)[8])
{
    return std::string(field, sizeof field);
}

TEST_P(SetText, WritesTheWholeField)
{
    char guarded[10];
    std::memset(guarded, '#', sizeof guarded);
    char(&field)[8] = *reinterpret_cast<char(*)[8]>(guarded + 1);

    EXPECT_EQ(set_text(field, GetParam().text), GetParam().fits);
    std::string expected = GetParam().field;
    expected.resize(8, '\0');
    EXPECT_EQ(bytes_of(field), expected);
    EXPECT_EQ(guarded[0], '#');
    EXPECT_EQ(guarded[9], '#');
}

using namespace std::string_literals;

// clang-format off
const TextCase text_cases[] = {
    {"Empty",             "",                     true,  ""},
    {"Short",             "abc",                  true,  "abc"},
    {"SevenBytes",        "abcdefg",              true,  "abcdefg"},
    {"EightBytes",        "abcdefgh",             false, "abcdefg"},
    {"Long",              std::string(5000, 'x'), false, "xxxxxxx"},
    {"NulInside",         "ab\0cd"s,              false, "ab"},
    {"NulAtTheEnd",       "ab\0"s,                false, "ab"},
    {"NulBehindTheField", "abcdefghij\0k"s,       false, "abcdefg"},
    {"TwoBytesFit",       "abcde\xC3\xA9",        true,  "abcde\xC3\xA9"},
    {"TwoBytesFitBefore", "abcde\xC3\xA9z",       false, "abcde\xC3\xA9"},
    {"TwoBytesCut",       "abcdef\xC3\xA9",       false, "abcdef"},
    {"ThreeBytesFit",     "abcd\xE2\x82\xACz",    false, "abcd\xE2\x82\xAC"},
    {"ThreeBytesCutTwo",  "abcde\xE2\x82\xAC",    false, "abcde"},
    {"ThreeBytesCutOne",  "abcdef\xE2\x82\xAC",   false, "abcdef"},
    {"FourBytesFit",      "abc\xF0\x9F\x8E\xA5z", false, "abc\xF0\x9F\x8E\xA5"},
    {"FourBytesCutThree", "abcd\xF0\x9F\x8E\xA5", false, "abcd"},
    {"FourBytesCutOne",   "abcdef\xF0\x9F\x8E\xA5", false, "abcdef"},
    {"NeverACharacter",   std::string(9, '\x80'), false, std::string(7, '\x80')},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Texts, SetText, testing::ValuesIn(text_cases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(SetTextFrom, ALiteral)
{
    char field[8];
    EXPECT_TRUE(set_text(field, "eth0"));
    EXPECT_STREQ(field, "eth0");
}

TEST(SetTextFrom, APointer)
{
    char text[] = "eth0";
    char* const writable = text;
    const char* const constant = "media1";
    char field[8];
    EXPECT_TRUE(set_text(field, writable));
    EXPECT_STREQ(field, "eth0");
    EXPECT_TRUE(set_text(field, constant));
    EXPECT_STREQ(field, "media1");
}

TEST(SetTextFrom, APartOfAText)
{
    char field[8];
    EXPECT_TRUE(set_text(field, "media1", 5));
    EXPECT_STREQ(field, "media");
    EXPECT_TRUE(set_text(field, nullptr, 0));
    EXPECT_STREQ(field, "");
}

TEST(SetTextFrom, AFieldWithoutNul)
{
    const char full[4] = {'a', 'b', 'c', 'd'};
    char longer[8];
    EXPECT_TRUE(set_text(longer, full));
    EXPECT_STREQ(longer, "abcd");
    char shorter[4];
    EXPECT_FALSE(set_text(shorter, full));
    EXPECT_STREQ(shorter, "abc");
}

TEST(SetTextFrom, TheFieldItself)
{
    char field[8] = "abcdefg";
    EXPECT_TRUE(set_text(field, field));
    EXPECT_STREQ(field, "abcdefg");
    EXPECT_TRUE(set_text(field, static_cast<const char*>(field + 2)));
    EXPECT_STREQ(field, "cdefg");
}

TEST(SetTextInto, AFieldOfOneByte)
{
    char field[1] = {'x'};
    EXPECT_FALSE(set_text(field, "a"));
    EXPECT_EQ(field[0], '\0');
    EXPECT_TRUE(set_text(field, ""));
    // There is no room for half a character.
    EXPECT_FALSE(set_text(field, "\x80\x80"));
    EXPECT_EQ(field[0], '\0');
}

TEST(TextOf, EndsAtTheNulOrTheEnd)
{
    const char field[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(text_of(field), "abcd");
    EXPECT_EQ(text_of("ab\0cd"), "ab");
    EXPECT_EQ(text_of(""), "");
}

TEST(SetVersion, OfAResourceOrAField)
{
    NMOS_IS04_ST node = NMOS_IS04_ST();
    EXPECT_TRUE(set_version(node, 1541234567, 25));
    EXPECT_STREQ(node.version, "1541234567:25");
    EXPECT_TRUE(set_version(node.receivers[23], 0, 0));
    EXPECT_STREQ(node.receivers[23].version, "0:0");
    char field[31];
    EXPECT_TRUE(set_version(field, std::numeric_limits<std::uint64_t>::max(), 999999999));
    EXPECT_STREQ(field, "18446744073709551615:999999999");
}

TEST(SetVersion, LeavesTheFieldWhenItIsNoTime)
{
    char field[48] = "1541234567:25";
    EXPECT_FALSE(set_version(field, 1541234568, 1000000000));
    EXPECT_FALSE(set_version(field, 1541234568, -1));
    EXPECT_STREQ(field, "1541234567:25");
}

TEST(SetCount, IsBoundedByTheArray)
{
    NMOS_IS04_ST node = NMOS_IS04_ST();
    EXPECT_TRUE(set_count(node.clocks_count, node.clocks, 0));
    EXPECT_EQ(node.clocks_count, 0);
    EXPECT_TRUE(set_count(node.clocks_count, node.clocks, 6));
    EXPECT_EQ(node.clocks_count, 6);
    EXPECT_FALSE(set_count(node.clocks_count, node.clocks, 7));
    EXPECT_EQ(node.clocks_count, 6);
    EXPECT_FALSE(set_count(node.clocks_count, node.clocks, -1));
    EXPECT_EQ(node.clocks_count, 0);
    EXPECT_FALSE(set_count(node.clocks_count, node.clocks, 1LL << 32));
    EXPECT_EQ(node.clocks_count, 6);
}

} // namespace

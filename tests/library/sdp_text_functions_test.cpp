// SPDX-License-Identifier: Apache-2.0
//
// convertCRLF, split_string and make_fullpath_from_request.

#include "nmos_instrument/ConnectionApi.h"

#include <climits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/body_parts.h"

namespace {

using namespace std::string_literals;

using ::testing::ElementsAre;
using ::testing::StartsWith;

// --- convertCRLF --------------------------------------------------------------------------------

TEST(ConvertCrlf, TurnsEachLineBreakIntoOneNewline)
{
    struct
    {
        std::string text;
        std::string converted;
    } const rows[] = {
        {"", ""},
        {"a", "a"},
        {"\n", "|"},
        {"\r", "|"},
        {"\r\n", "|"},
        {"\n\r", "|"},
        // Breaks in a row are taken greedily from the left.
        {"\n\n", "||"},
        {"\r\r", "||"},
        {"\n\r\n", "||"},
        {"\r\n\r", "||"},
        {"\r\n\n", "||"},
        {"\n\n\r", "||"},
        {"\r\r\n", "||"},
        {"\n\r\r", "||"},
        {"\n\n\n", "|||"},
        {"\r\r\r", "|||"},
        {"\r\n\r\n", "||"},
        {"\n\r\n\r", "||"},
        {"\r\n\n\r", "||"},
        {"\n\r\r\n", "||"},
        {"\r\r\n\n", "|||"},
        {"\n\n\r\r", "|||"},
        {"\n\r\n\r\n", "|||"},
        {"\r\n\r\n\r", "|||"},
        {"a\nb\rc\r\nd\n\re", "a|b|c|d|e"},
        {"a\r\n", "a|"},
        {"\r\na", "|a"},
        {"a\r\n\r\nb", "a||b"},
        {"a\nb", "a|b"},
        {"a\r b\n c", "a| b| c"},
        {"no break at all", "no break at all"},
        // The given newline is an ordinary text of the input.
        {"a|b\n", "a|b|"},
        {"a\\r\\nb", "a\\r\\nb"},
        {"tab\tvertical\vform\f", "tab\tvertical\vform\f"},
        {"\xC3\xA9\xFF\x80\r\x85\n", "\xC3\xA9\xFF\x80|\x85|"},
        {"a\0b\r\n\0\n"s, "a\0b|\0|"s},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ConnectionApi::convertCRLF(row.text, "|"), row.converted)
            << testing::PrintToString(row.text);
}

TEST(ConvertCrlf, InsertsAnyNewlineText)
{
    EXPECT_EQ(ConnectionApi::convertCRLF("a\r\nb\rc\n", "\n"), "a\nb\nc\n");
    EXPECT_EQ(ConnectionApi::convertCRLF("a\r\nb\rc\n", "\r\n"), "a\r\nb\r\nc\r\n");
    EXPECT_EQ(ConnectionApi::convertCRLF("a\r\nb\rc\n", "\n\r"), "a\n\rb\n\rc\n\r");
    EXPECT_EQ(ConnectionApi::convertCRLF("a\r\nb\rc\n", "\n\n"), "a\n\nb\n\nc\n\n");
    EXPECT_EQ(ConnectionApi::convertCRLF("a\r\nb\rc\n", "<br>"), "a<br>b<br>c<br>");
    EXPECT_EQ(ConnectionApi::convertCRLF("a\r\nb\rc\n", ""), "abc");
    EXPECT_EQ(ConnectionApi::convertCRLF("a\n", "\0"s), "a\0"s);
    EXPECT_EQ(ConnectionApi::convertCRLF("", "\n"), "");
    EXPECT_EQ(ConnectionApi::convertCRLF("", ""), "");
}

TEST(ConvertCrlf, LeavesItsArgumentsAlone)
{
    const std::string text = "a\r\nb";
    const std::string newline = "\n";
    EXPECT_EQ(ConnectionApi::convertCRLF(text, newline), "a\nb");
    EXPECT_EQ(text, "a\r\nb");
    EXPECT_EQ(newline, "\n");
}

TEST(ConvertCrlf, TakesLongTexts)
{
    std::string text;
    std::string converted;
    for (int i = 0; i < 20000; ++i) {
        text += "line\r\n";
        converted += "line\n";
    }
    EXPECT_EQ(ConnectionApi::convertCRLF(text, "\n"), converted);
}

// --- split_string -------------------------------------------------------------------------------

constexpr const char* guard = "guard";

/// A table between two guards. Every entry starts as a guard, so that what is not written shows.
struct Split
{
    int returned;
    int count;
    std::vector<std::string> entries; ///< the table and one entry behind it
    std::string before;               ///< the entry before the table
};

Split split(const std::string& text, const std::string& delimiter, int max_parts,
            std::size_t table_size)
{
    std::vector<std::string> table(table_size + 2, guard);
    Split result{-1, -99, {}, {}};
    result.returned =
        ConnectionApi::split_string(text, delimiter, table.data() + 1, max_parts, &result.count);
    result.before = table.front();
    result.entries.assign(table.begin() + 1, table.end());
    return result;
}

TEST(SplitString, CutsAtEachDelimiterAndTurnsTheRestIntoANumber)
{
    struct
    {
        std::string text;
        std::string delimiter;
        int count;
        std::vector<std::string> entries;
    } const rows[] = {
        {"", "\n", 0, {"0", guard, guard, guard, guard}},
        {"a", "\n", 0, {"0", guard, guard, guard, guard}},
        {"7", "\n", 0, {"7", guard, guard, guard, guard}},
        {"\n", "\n", 1, {"", "0", guard, guard, guard}},
        {"a\n", "\n", 1, {"a", "0", guard, guard, guard}},
        {"a\nb", "\n", 1, {"a", "0", guard, guard, guard}},
        {"a\n42", "\n", 1, {"a", "42", guard, guard, guard}},
        {"a\nb\n", "\n", 2, {"a", "b", "0", guard, guard}},
        {"1\n2\n3", "\n", 2, {"1", "2", "3", guard, guard}},
        {"\n\n", "\n", 2, {"", "", "0", guard, guard}},
        {"a\n\nb\n", "\n", 3, {"a", "", "b", "0", guard}},
        {" a \n\tb\r\n", "\n", 2, {" a ", "\tb\r", "0", guard, guard}},
        // Delimiters of several bytes, also such as overlap themselves.
        {"a::b::12", "::", 2, {"a", "b", "12", guard, guard}},
        {"a:b:12", "::", 0, {"0", guard, guard, guard, guard}},
        {"a:::b", "::", 1, {"a", "0", guard, guard, guard}},
        {"::::", "::", 2, {"", "", "0", guard, guard}},
        {":::", "::", 1, {"", "0", guard, guard, guard}},
        {"aaaaa", "aa", 2, {"", "", "0", guard, guard}},
        {"xabaabab7", "aba", 2, {"x", "", "0", guard, guard}},
        {"7 then more", " then more", 1, {"7", "0", guard, guard, guard}},
        {"longer than the text", "longer than the text!", 0, {"0", guard, guard, guard, guard}},
        // A NUL is a byte like others, in text and delimiter.
        {"a\0b\nc\0\n"s, "\n", 2, {"a\0b"s, "c\0"s, "0", guard, guard}},
        {"a\0b\0"s + "9", "\0"s, 2, {"a", "b", "9", guard, guard}},
        // No delimiter ends no piece: the whole text is the rest.
        {"12ab", "", 0, {"12", guard, guard, guard, guard}},
        {"ab", "", 0, {"0", guard, guard, guard, guard}},
        {"", "", 0, {"0", guard, guard, guard, guard}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("\"" + row.text + "\" at \"" + row.delimiter + "\"");
        const Split result = split(row.text, row.delimiter, 4, 4);
        EXPECT_EQ(result.returned, 0);
        EXPECT_EQ(result.count, row.count);
        EXPECT_EQ(result.entries, row.entries);
        EXPECT_EQ(result.before, guard);
    }
}

TEST(SplitString, WritesNothingBehindTheTable)
{
    struct
    {
        const char* text;
        int max_parts;
        int count;
        std::vector<std::string> entries;
    } const rows[] = {
        // As many pieces as entries: no entry is left for the number.
        {"a\nb\nc\n", 3, 3, {"a", "b", "c", guard}},
        {"a\nb\nc\n42", 3, 3, {"a", "b", "c", guard}},
        {"a\nb\nc\nd\n", 3, 3, {"a", "b", "c", guard}},
        {"a\nb\nc\nd\ne\n42", 3, 3, {"a", "b", "c", guard}},
        {"a\nb\n42", 3, 2, {"a", "b", "42", guard}},
        {"a\n42", 3, 1, {"a", "42", guard, guard}},
        {"42", 3, 0, {"42", guard, guard, guard}},
        // The caller may keep entries back.
        {"a\nb\nc\n", 2, 2, {"a", "b", guard, guard}},
        {"a\nb\n42", 1, 1, {"a", guard, guard, guard}},
        {"a\n", 1, 1, {"a", guard, guard, guard}},
        {"\n", 1, 1, {"", guard, guard, guard}},
        {"42", 1, 0, {"42", guard, guard, guard}},
        {"", 1, 0, {"0", guard, guard, guard}},
        {"a\nb\nc\n", 0, 0, {guard, guard, guard, guard}},
        {"42", 0, 0, {guard, guard, guard, guard}},
        {"", 0, 0, {guard, guard, guard, guard}},
        {"a\nb\nc\n", -1, 0, {guard, guard, guard, guard}},
        {"42", -1, 0, {guard, guard, guard, guard}},
        {"a\n42", INT_MIN, 0, {guard, guard, guard, guard}},
        {"a\nb\n42", INT_MAX, 2, {"a", "b", "42", guard}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("\"" + std::string(row.text) + "\" into " + std::to_string(row.max_parts));
        const Split result = split(row.text, "\n", row.max_parts, 3);
        EXPECT_EQ(result.returned, 0);
        EXPECT_EQ(result.count, row.count);
        EXPECT_EQ(result.entries, row.entries);
        EXPECT_EQ(result.before, guard);
    }
}

TEST(SplitString, NeedsNoTableForNoParts)
{
    for (const int max_parts : {0, -1, INT_MIN}) {
        SCOPED_TRACE(max_parts);
        int count = 99;
        EXPECT_EQ(ConnectionApi::split_string("a\nb", "\n", nullptr, max_parts, &count), 0);
        EXPECT_EQ(count, 0);
    }
}

TEST(SplitString, WithoutDelimiterAndPartsWritesNothing)
{
    const Split result = split("12", "", 0, 1);
    EXPECT_EQ(result.count, 0);
    EXPECT_THAT(result.entries, ElementsAre(guard, guard));
}

TEST(SplitString, ReadsTheLeadingIntegerOfTheRest)
{
    struct
    {
        std::string rest;
        const char* number;
    } const rows[] = {
        {"", "0"},
        {"0", "0"},
        {"42", "42"},
        {"42abc", "42"},
        {"42 43", "42"},
        {"abc42", "0"},
        {"a=mid:primary", "0"},
        {"007", "7"},
        {"0x10", "0"},
        {"010", "10"},
        {"1e3", "1"},
        {"12.9", "12"},
        {"1,000", "1"},
        // White space and a sign may stand before it.
        {" 42", "42"},
        {"\t\v\f\r 42", "42"},
        {"+42", "42"},
        {"-42", "-42"},
        {" -42 ", "-42"},
        {"- 42", "0"},
        {"+-42", "0"},
        {"--42", "0"},
        {"+", "0"},
        {"-", "0"},
        {"-0", "0"},
        {"+0", "0"},
        {"\xA0"
         "42",
         "0"},
        // 32 bits, saturating.
        {"2147483646", "2147483646"},
        {"2147483647", "2147483647"},
        {"2147483648", "2147483647"},
        {"-2147483647", "-2147483647"},
        {"-2147483648", "-2147483648"},
        {"-2147483649", "-2147483648"},
        {"4294967295", "2147483647"},
        {"4294967296", "2147483647"},
        {"4294967300", "2147483647"},
        {"-4294967300", "-2147483648"},
        {"9223372036854775807", "2147483647"},
        {"9223372036854775808", "2147483647"},
        {"-9223372036854775809", "-2147483648"},
        {"18446744073709551617", "2147483647"},
        {"99999999999999999999999999999999", "2147483647"},
        {"-99999999999999999999999999999999", "-2147483648"},
        {"00000000000000000000000000000000000000000042", "42"},
        // A NUL ends the number like any other byte that is not a digit.
        {"4\0002"s, "4"},
        {"\00042"s, "0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rest);
        const Split alone = split(row.rest, "|", 3, 3);
        EXPECT_EQ(alone.count, 0);
        EXPECT_THAT(alone.entries, ElementsAre(row.number, guard, guard, guard));
        const Split behind = split("first|" + row.rest, "|", 3, 3);
        EXPECT_EQ(behind.count, 1);
        EXPECT_THAT(behind.entries, ElementsAre("first", row.number, guard, guard));
    }
}

TEST(SplitString, KeepsNumbersInPiecesAsText)
{
    const Split result = split("007\n+1\n 2 \n", "\n", 4, 4);
    EXPECT_EQ(result.count, 3);
    EXPECT_THAT(result.entries, ElementsAre("007", "+1", " 2 ", "0", guard));
}

TEST(SplitString, LeavesItsArgumentsAlone)
{
    const std::string text = "a\nb\n";
    const std::string delimiter = "\n";
    std::string table[3];
    int count = 0;
    ConnectionApi::split_string(text, delimiter, table, 3, &count);
    EXPECT_EQ(text, "a\nb\n");
    EXPECT_EQ(delimiter, "\n");
}

TEST(SplitString, CutsManyLines)
{
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "line " + std::to_string(i) + "\n";
    std::vector<std::string> table(1001);
    int count = 0;
    EXPECT_EQ(ConnectionApi::split_string(text, "\n", table.data(), 1001, &count), 0);
    EXPECT_EQ(count, 1000);
    EXPECT_EQ(table[0], "line 0");
    EXPECT_EQ(table[999], "line 999");
    EXPECT_EQ(table[1000], "0");
}

// --- make_fullpath_from_request -----------------------------------------------------------------

TEST(MakeFullpathFromRequest, IsTheTextFromTheFirstSlashLessNineCharacters)
{
    struct
    {
        std::string line;
        std::string path;
    } const rows[] = {
        {"GET / HTTP/1.1", "/"},
        {"GET /x-nmos/connection/v1.0/ HTTP/1.1", "/x-nmos/connection/v1.0/"},
        {"PATCH /x-nmos/node HTTP/1.0", "/x-nmos/node"},
        {"GET /a?b=c/d HTTP/1.1", "/a?b=c/d"},
        {"GET /a b HTTP/1.1", "/a b"},
        {"GET http://host:80/a HTTP/1.1", "//host:80/a"},
        {"/ HTTP/1.1", "/"},
        {"/path HTTP/1.1", "/path"},
        // Whatever the nine characters are.
        {"GET /abcdefghi", "/"},
        {"/1234567890", "/1"},
        {"GET /a HTTP/1.1\r\n", "/a H"},
        {"GET /a\0b HTTP/1.1"s, "/a\0b"s},
        // Nine characters or fewer from the slash on leave nothing.
        {"GET /12345678", ""},
        {"GET /1234567", ""},
        {"GET /", ""},
        {"/", ""},
        {"GET HTTP/1.1", ""},
        {"/ HTTP/1.", ""},
    };
    for (const auto& row : rows) {
        std::string line = row.line;
        EXPECT_EQ(ConnectionApi::make_fullpath_from_request(line), row.path) << row.line;
        EXPECT_EQ(line, row.line);
    }
}

TEST(MakeFullpathFromRequest, ThrowsWhenThereIsNoSlash)
{
    for (const char* text : {"", "GET", "GET x HTTP 1.1", "GET \\x HTTP\\1.1"}) {
        std::string line = text;
        EXPECT_THAT(out_of_range_text([&] {
                        static_cast<void>(ConnectionApi::make_fullpath_from_request(line));
                    }),
                    StartsWith("basic_string::substr"))
            << text;
        EXPECT_EQ(line, text);
    }
}

} // namespace

// SPDX-License-Identifier: Apache-2.0

#include "json/json_writer.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "json/json_lists.h"

namespace nmos_instrument {
namespace {

/// The JSON string that the writer makes of a field of N bytes.
template <std::size_t N>
std::string written(const char (&field)[N], Slashes slashes)
{
    JsonText text(slashes);
    {
        JsonWriter json(text);
        json.string(field);
    }
    return text.take();
}

TEST(JsonString, EmptyField)
{
    const char field[48] = {};
    EXPECT_EQ(written(field, Slashes::plain), "\"\"");
}

TEST(JsonString, FieldWithoutNulIsItsWholeWidth)
{
    char field[20];
    std::memset(field, 'x', sizeof field);
    EXPECT_EQ(written(field, Slashes::plain), "\"xxxxxxxxxxxxxxxxxxxx\"");
}

TEST(JsonString, BytesBehindTheNulDoNotShow)
{
    char field[48] = "abc";
    std::memset(field + 4, '"', sizeof field - 4);
    EXPECT_EQ(written(field, Slashes::plain), "\"abc\"");
}

TEST(JsonString, EveryEscapeAtEveryPosition)
{
    struct Case
    {
        char byte;
        const char* text;
    };
    const Case cases[] = {
        {'\x01', "\\u0001"}, {'\b', "\\b"},       {'\t', "\\t"},       {'\n', "\\n"},
        {'\f', "\\f"},       {'\r', "\\r"},       {'\x1F', "\\u001f"}, {'"', "\\\""},
        {'\\', "\\\\"},      {'\x7F', "\\u007f"}, {'/', "\\/"},        {' ', " "},
        {'!', "!"},          {'#', "#"},          {'[', "["},          {']', "]"},
        {'~', "~"},          {'\x80', "\x80"},    {'\xFF', "\xFF"},
    };
    for (const Case& expected : cases) {
        for (std::size_t position = 0; position < 40; ++position) {
            char field[48] = {};
            std::memset(field, 'a', 40);
            field[position] = expected.byte;
            const std::string want = '"' + std::string(position, 'a') + expected.text +
                                     std::string(39 - position, 'a') + '"';
            EXPECT_EQ(written(field, Slashes::escaped), want) << position;
        }
    }
}

TEST(JsonString, PlainSlashes)
{
    const char field[48] = "http://192.0.2.1/x-nmos/node/v1.2/self/";
    EXPECT_EQ(written(field, Slashes::plain), "\"http://192.0.2.1/x-nmos/node/v1.2/self/\"");
}

TEST(JsonString, LongFieldOfEscapesOutgrowsTheBuffer)
{
    char field[4096];
    std::memset(field, '\x01', sizeof field);
    std::string want = "\"";
    for (std::size_t i = 0; i < sizeof field; ++i)
        want += "\\u0001";
    want += '"';
    EXPECT_EQ(written(field, Slashes::plain), want);
}

/// A text that crosses the end of the buffer at every offset.
TEST(JsonString, AnArrayThatCrossesTheBuffersEnd)
{
    for (std::size_t first = 0; first < 130; ++first) {
        char lead[144] = {};
        std::memset(lead, 'a', first);
        char entry[48] = "0123456789abcdefghij/";
        JsonText text(Slashes::escaped);
        std::string want = "[\"" + std::string(first, 'a') + '"';
        {
            JsonWriter json(text);
            json.begin_array();
            json.string(lead);
            for (int i = 0; i < 200; ++i) {
                json.string(entry);
                want += ",\"0123456789abcdefghij\\/\"";
            }
            json.begin_array();
            json.end_array();
            json.end_array();
        }
        want += ",[]]";
        ASSERT_EQ(text.take(), want) << first;
    }
}

TEST(JsonWriter, ObjectsArraysAndLiterals)
{
    JsonText text(Slashes::plain);
    {
        JsonWriter json(text);
        json.begin_object();
        json.key("a").empty_object();
        json.key("b").empty_array();
        json.key("c").begin_array();
        json.null();
        json.boolean(true);
        json.boolean(false);
        json.number(25);
        json.number(-25);
        json.literal("auto");
        json.begin_object();
        json.end_object();
        json.end_array();
        json.flag("d", 0);
        json.flag("e", 2);
        json.end_object();
    }
    EXPECT_EQ(text.take(),
              R"({"a":{},"b":[],"c":[null,true,false,25,-25,"auto",{}],"d":false,"e":true})");
}

TEST(JsonWriter, OnlyTheExactWordNullIsNull)
{
    struct Case
    {
        const char* text;
        const char* json;
    };
    const Case cases[] = {
        {"null", "null"},     {"nul", "\"nul\""},     {"null ", "\"null \""},
        {"NULL", "\"NULL\""}, {"nullx", "\"nullx\""}, {"", "\"\""},
    };
    for (const Case& expected : cases) {
        char field[32] = {};
        std::strncpy(field, expected.text, sizeof field - 1);
        JsonText text(Slashes::plain);
        {
            JsonWriter json(text);
            json.string_or_null(field);
        }
        EXPECT_EQ(text.take(), expected.json) << expected.text;
    }
}

TEST(JsonWriter, NumbersThatJsonCannotHoldThrowAnEmptyText)
{
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        JsonText text(Slashes::plain);
        JsonWriter json(text);
        try {
            json.number(value);
            FAIL() << value;
        } catch (const std::overflow_error& error) {
            EXPECT_STREQ(error.what(), "");
        }
    }
}

#ifndef NDEBUG
TEST(JsonWriterDeathTest, ADebugBuildAssertsAscendingKeys)
{
    EXPECT_DEATH(
        {
            JsonText text(Slashes::plain);
            JsonWriter json(text);
            json.begin_object();
            json.key("b").null();
            json.key("a").null();
        },
        "last_key_");
}
#endif

TEST(JsonLists, AListLeavesOutWhatItsCallableDoesNotWrite)
{
    const std::string odd = make_list(Slashes::plain, 5, [](JsonText& text, std::size_t i) {
        if (i % 2 == 1)
            JsonWriter(text).number(static_cast<int>(i));
    });
    EXPECT_EQ(odd, "[1,3]");
    EXPECT_EQ(make_list(Slashes::plain, 0, [](JsonText&, std::size_t) {}), "[]");
}

TEST(JsonLists, ARegistrationWrapsItsBody)
{
    const std::string envelope = make_text(Slashes::plain, [](JsonText& text) {
        write_registration(text, "node", [](JsonText& data) { JsonWriter(data).empty_object(); });
    });
    EXPECT_EQ(envelope, R"({"data":{},"type":"node"})");
}

} // namespace
} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0

#include "text/json_input.h"

#include <string>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace nmos_instrument::host {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// What is said against a text; empty when nothing is.
std::string trouble_with(std::string_view text, JsonComments comments = JsonComments::refused)
{
    try {
        parse_json(text, comments);
        return "";
    } catch (const MalformedJson& error) {
        return error.what();
    }
}

std::string nested(int depth)
{
    return std::string(static_cast<std::size_t>(depth), '[') +
           std::string(static_cast<std::size_t>(depth), ']');
}

TEST(ParseJson, ReadsEveryKindOfValue)
{
    const JsonDocument document = parse_json(
        R"({"a": [1, -2.5, "x", true, null, {}], "b": {"c": "\u00e9"}})", JsonComments::refused);
    const nlohmann::json& value = document.value();
    EXPECT_EQ(value["a"][1], -2.5);
    EXPECT_EQ(value["b"]["c"], "\xc3\xa9");
}

TEST(ParseJson, TakesCommentsOnlyWhereTheyAreAllowed)
{
    const char* const text = "// one\n{ /* two */ \"a\": 1 }";
    EXPECT_EQ(trouble_with(text, JsonComments::allowed), "");
    EXPECT_THAT(trouble_with(text), HasSubstr("line 1, column 1"));
}

TEST(ParseJson, SaysWhereTheTextBreaks)
{
    EXPECT_THAT(trouble_with("{\n  \"a\": 1,\n}"), StartsWith("parse error at line 3, column 1:"));
    EXPECT_THAT(trouble_with(""), HasSubstr("line 1, column 1"));
    EXPECT_THAT(trouble_with("{} {}"), HasSubstr("line 1, column 4"));
}

TEST(ParseJson, RefusesWhatIsNoUtf8)
{
    EXPECT_THAT(trouble_with("\"\xff\""), HasSubstr("UTF-8"));
}

TEST(ParseJson, RefusesNumbersThatNoDoubleHolds)
{
    EXPECT_THAT(trouble_with("1e999"), HasSubstr("number"));
}

TEST(ParseJson, RefusesAKeyThatIsGivenTwiceAndSaysWhere)
{
    EXPECT_EQ(trouble_with(R"({"a": [0, {"b": 1, "c": {}, "b": 2}]})"),
              "/a/1/b: this key is given twice");
    EXPECT_EQ(trouble_with(R"({"a": 1, "a": 1})"), "/a: this key is given twice");
    EXPECT_EQ(trouble_with(R"([{"a": 1}, {"a": 1}])"), "");
    EXPECT_EQ(trouble_with(R"({"a": {"a": {"a": 1}}})"), "");
    EXPECT_EQ(trouble_with(R"({"x/y": {"": 1, "": 2}})"), "/x~1y/: this key is given twice");
}

TEST(ParseJson, RefusesWhatIsTooDeep)
{
    EXPECT_EQ(trouble_with(nested(64)), "");
    EXPECT_THAT(trouble_with(nested(65)), HasSubstr("deeper than 64 levels"));
    EXPECT_THAT(trouble_with(nested(1'000'000)), HasSubstr("deeper than 64 levels"));
}

std::string array_of(const std::string& value, int count)
{
    std::string text = "[" + value;
    for (int i = 1; i < count; ++i)
        text += "," + value;
    return text + "]";
}

TEST(ParseJson, RefusesTooManyValues)
{
    EXPECT_EQ(trouble_with(array_of("1", 9'999)), "");
    EXPECT_EQ(trouble_with(array_of("1", 10'000)),
              "/9999: found more than 10000 values, allowed: 10000");
    EXPECT_EQ(trouble_with("{\"a\":" + array_of("[]", 20'000)),
              "/a/9998: found more than 10000 values, allowed: 10000");
    EXPECT_EQ(trouble_with(array_of("{\"b\":\"\"}", 5'000)),
              "/4999/b: found more than 10000 values, allowed: 10000");
}

TEST(ParseJson, QuotesLittleOfTheText)
{
    constexpr std::size_t mebibyte = std::size_t{1024} * 1024;
    const std::string megabyte(mebibyte, 'a');
    const std::string key = "\"" + megabyte + '"';
    EXPECT_EQ(trouble_with('"' + megabyte + "\xff"),
              "parse error at line 1, column 1048578: syntax error while parsing value - invalid "
              "string: ill-formed UTF-8 byte; last read: \"\\\"" +
                  std::string(70, 'a') + "\"... (1048578 bytes)");
    EXPECT_EQ(trouble_with("{\"" + megabyte + "\": 1, \"" + megabyte + "\": 2}"),
              "/\"" + std::string(72, 'a') + "\"... (1048576 bytes): this key is given twice");
    const std::string ones(mebibyte, '1');
    const std::string texts[] = {'"' + megabyte,
                                 "{\"" + megabyte,
                                 megabyte,
                                 ones,
                                 ones + 'x',
                                 "[1" + std::string(mebibyte, ' ') + '1',
                                 '{' + key + ":[{" + key + ":01"};
    for (const std::string& text : texts)
        EXPECT_LT(trouble_with(text).size(), 500U);
}

TEST(ParseJson, LimitsControlCharacters)
{
    const std::string most(65'536, '\n');
    EXPECT_EQ(trouble_with(most + "1"), "");
    EXPECT_EQ(trouble_with(most + "\t1"),
              "found more than 65536 line breaks and other control characters, allowed: 65536");
}

TEST(ParseJson, ShowsTheEndOfALongPath)
{
    std::string text;
    for (int i = 0; i < 64; ++i)
        text += "{\"" + std::string(60, 'k') + "\":";
    const std::string trouble = trouble_with(text + "[");
    EXPECT_THAT(trouble, StartsWith("..."));
    EXPECT_THAT(trouble, HasSubstr("/" + std::string(60, 'k') + ": nested deeper than 64 levels"));
    EXPECT_LT(trouble.size(), 400U);
}

} // namespace
} // namespace nmos_instrument::host

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
    const nlohmann::json value = parse_json(
        R"({"a": [1, -2.5, "x", true, null, {}], "b": {"c": "\u00e9"}})", JsonComments::refused);
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

} // namespace
} // namespace nmos_instrument::host

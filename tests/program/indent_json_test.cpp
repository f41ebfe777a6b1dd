// SPDX-License-Identifier: Apache-2.0

#include "commands/indent_json.h"

#include <gtest/gtest.h>

namespace nmos_instrument::program {
namespace {

TEST(IndentJson, SpreadsMembersAndElementsOverLines)
{
    EXPECT_EQ(indent_json(R"({"a":[1,{"b":null}],"c":true})"), R"({
    "a": [
        1,
        {
            "b": null
        }
    ],
    "c": true
}
)");
}

TEST(IndentJson, LeavesEmptyContainersOnTheirLine)
{
    EXPECT_EQ(indent_json(R"({"a":{},"b":[]})"), "{\n    \"a\": {},\n    \"b\": []\n}\n");
    EXPECT_EQ(indent_json("[]"), "[]\n");
    EXPECT_EQ(indent_json("{}"), "{}\n");
}

TEST(IndentJson, ReplacesOtherWhiteSpace)
{
    EXPECT_EQ(indent_json("[ \n  {\t\"a\" :\r\n1 } ,[ ] ]\n"),
              "[\n    {\n        \"a\": 1\n    },\n    []\n]\n");
}

TEST(IndentJson, KeepsNumbersAndStringsAsTheyAreSpelled)
{
    EXPECT_EQ(indent_json(R"([-0,1.10,0.10000000000000001,1e5,12345678901234567890123])"),
              "[\n    -0,\n    1.10,\n    0.10000000000000001,\n    1e5,\n"
              "    12345678901234567890123\n]\n");
    EXPECT_EQ(indent_json(R"(["\/","\u007f","a\"b,{}[]: c","\\"])"),
              "[\n    \"\\/\",\n    \"\\u007f\",\n    \"a\\\"b,{}[]: c\",\n    \"\\\\\"\n]\n");
}

TEST(IndentJson, KeepsTheOrderOfMembersAndRepeatedKeys)
{
    EXPECT_EQ(indent_json(R"({"b":1,"a":2,"b":3})"),
              "{\n    \"b\": 1,\n    \"a\": 2,\n    \"b\": 3\n}\n");
}

TEST(IndentJson, LeavesAScalarAlone)
{
    EXPECT_EQ(indent_json("null"), "null\n");
    EXPECT_EQ(indent_json("\"a\""), "\"a\"\n");
}

TEST(IndentJson, ReturnsWhatIsNoJsonAsItIs)
{
    for (const char* const text :
         {"", "[\n  \"a\",\n]\n", "v=0\r\n", "{\"a\":}", "[1] ]", "\"\xff\""})
        EXPECT_EQ(indent_json(text), text);
}

} // namespace
} // namespace nmos_instrument::program

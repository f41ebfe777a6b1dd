// SPDX-License-Identifier: Apache-2.0

#include "text/json_output.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

std::string example(JsonForm form)
{
    JsonOutput json(form);
    json.begin_object();
    json.key("a").text("b");
    json.key("list").begin_array();
    json.element().number(-1);
    json.element().flag(true);
    json.element().null();
    json.element().begin_object();
    json.end_object();
    json.end_array();
    json.key("none").begin_array();
    json.end_array();
    json.end_object();
    return json.take();
}

TEST(JsonOutput, Compact)
{
    EXPECT_EQ(example(JsonForm::compact), R"({"a":"b","list":[-1,true,null,{}],"none":[]})");
}

TEST(JsonOutput, Indented)
{
    EXPECT_EQ(example(JsonForm::indented), "{\n"
                                           " \"a\": \"b\",\n"
                                           " \"list\": [\n"
                                           "  -1,\n"
                                           "  true,\n"
                                           "  null,\n"
                                           "  {}\n"
                                           " ],\n"
                                           " \"none\": []\n"
                                           "}");
}

TEST(JsonOutput, EscapesWhatJsonDoesNotAllow)
{
    JsonOutput json(JsonForm::compact);
    json.text("\"\\/\b\f\n\r\t\x01\x1f\x7f \xc3\xa4");
    EXPECT_EQ(json.take(), "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f \xc3\xa4\"");
}

TEST(JsonOutput, WholeNumbersOfEverySize)
{
    JsonOutput json(JsonForm::compact);
    json.begin_array();
    json.element().number(UINT64_MAX);
    json.element().number(INT64_MIN);
    json.end_array();
    EXPECT_EQ(json.take(), "[18446744073709551615,-9223372036854775808]");
}

} // namespace
} // namespace nmos_instrument::host

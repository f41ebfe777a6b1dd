// SPDX-License-Identifier: Apache-2.0

#include "http/error_response.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(ErrorResponse, HasCodeErrorAndDebug)
{
    EXPECT_EQ(error_body(404, "Not found"), R"({"code":404,"error":"Not found","debug":null})");
    EXPECT_EQ(error_body(400, "Bad request", "byte 7"),
              R"({"code":400,"error":"Bad request","debug":"byte 7"})");
    EXPECT_EQ(error_body(400, "Bad request", ""),
              R"({"code":400,"error":"Bad request","debug":""})");
}

TEST(ErrorResponse, MayQuoteWhatAClientSent)
{
    using namespace std::string_literals;
    EXPECT_EQ(error_body(400, "\"\\/", "a\0\n\x7f"s),
              R"({"code":400,"error":"\"\\/","debug":"a\u0000\n)"
              "\x7f"
              R"("})");
    EXPECT_EQ(error_body(400, "e", "\xc3\xa9\xff\xc3"),
              "{\"code\":400,\"error\":\"e\",\"debug\":\"\xc3\xa9\xef\xbf\xbd\xef\xbf\xbd\"}");
}

TEST(ErrorResponse, IsAJsonAnswerWithThatStatus)
{
    const HttpResponse response = error_response(423, "Locked", "an activation is pending");
    EXPECT_EQ(response.status, 423);
    EXPECT_EQ(response.content_type, "application/json");
    EXPECT_EQ(response.body, R"({"code":423,"error":"Locked","debug":"an activation is pending"})");
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "routes/static_file.h"

#include <gmock/gmock.h>

namespace nmos_instrument::host {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Pair;

constexpr StaticFile file{"text/css; charset=utf-8", R"("a1b2")", {"a\0b", 3}};

TEST(StaticFile, TheFile)
{
    const HttpResponse response = file_response(file, std::nullopt);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.content_type, "text/css; charset=utf-8");
    EXPECT_EQ(response.body, std::string("a\0b", 3));
    EXPECT_THAT(response.headers, Contains(Pair("ETag", R"("a1b2")")));
    EXPECT_THAT(response.headers, Contains(Pair("Cache-Control", "no-cache")));
    EXPECT_THAT(response.headers, Contains(Pair("Referrer-Policy", "no-referrer")));
    EXPECT_THAT(response.headers,
                Contains(Pair("Content-Security-Policy",
                              "default-src 'none'; script-src 'self'; style-src 'self'; "
                              "connect-src 'self'; img-src 'self'; base-uri 'none'; "
                              "form-action 'none'; frame-ancestors 'none'")));
}

TEST(StaticFile, AClientThatHasIt)
{
    const HttpResponse response = file_response(file, R"("a1b2")");
    EXPECT_EQ(response.status, 304);
    EXPECT_THAT(response.content_type, IsEmpty());
    EXPECT_THAT(response.body, IsEmpty());
    EXPECT_THAT(response.headers, Contains(Pair("ETag", R"("a1b2")")));
    EXPECT_THAT(response.headers, Contains(Pair("Cache-Control", "no-cache")));
}

TEST(StaticFile, AClientThatHasAnother)
{
    EXPECT_EQ(file_response(file, R"("a1b3")").status, 200);
    EXPECT_EQ(file_response(file, "").status, 200);
}

TEST(StaticFile, EntityTagsThatNameIt)
{
    for (const char* const value :
         {"*", " * ", R"("a1b2")", R"(W/"a1b2")", R"("x", "a1b2")", R"("x","a1b2","y")",
          R"( ,, W/"x" , W/"a1b2" )", R"("x,y", "a1b2")", R"("","a1b2")", "\t\"a1b2\"\t",
          R"("a1b2", what is this)"})
        EXPECT_TRUE(none_match_names(value, R"("a1b2")")) << value;
}

TEST(StaticFile, EntityTagsThatDoNot)
{
    for (const char* const value :
         {"", " ", ",", "a1b2", R"("A1B2")", R"("a1b2)", R"("a1b2x")", R"(w/"a1b2")", R"(W/a1b2)",
          R"("x*", "*")", R"("x, "a1b2")", R"(W/)", R"(W/W/"a1b2")", R"(what is this, "a1b2")"})
        EXPECT_FALSE(none_match_names(value, R"("a1b2")")) << value;
}

} // namespace
} // namespace nmos_instrument::host

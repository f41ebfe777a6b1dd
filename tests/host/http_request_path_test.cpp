// SPDX-License-Identifier: Apache-2.0

#include "http/request_path.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(RequestPath, IsLeftAsItIs)
{
    EXPECT_EQ(request_path("/"), "/");
    EXPECT_EQ(request_path("/x-nmos/node/v1.2/self/"), "/x-nmos/node/v1.2/self/");
    EXPECT_EQ(request_path("//x-nmos///node"), "//x-nmos///node");
    EXPECT_EQ(request_path("/a/../b/./c"), "/a/../b/./c");
    EXPECT_EQ(request_path("*"), "*");
    EXPECT_EQ(request_path(""), "");
}

TEST(RequestPath, DecodesWhatNeedsNoEncoding)
{
    EXPECT_EQ(request_path("/x%2Dnmos/%6eod%65"), "/x-nmos/node");
    EXPECT_EQ(request_path("/%41%5A%61%7a%30%39%2d%2E%5f%7E"), "/AZaz09-._~");
}

TEST(RequestPath, LeavesEncodedWhatWouldChangeThePath)
{
    EXPECT_EQ(request_path("/a%2Fb%2fc"), "/a%2Fb%2fc");
    EXPECT_EQ(request_path("/a%00b"), "/a%00b");
    EXPECT_EQ(request_path("/a%25%34%31"), "/a%2541"); // decoded once, not twice
    EXPECT_EQ(request_path("/%3Fquery%23"), "/%3Fquery%23");
    EXPECT_EQ(request_path("/%C3%A9%20"), "/%C3%A9%20");
}

TEST(RequestPath, LeavesBrokenEncoding)
{
    EXPECT_EQ(request_path("/%"), "/%");
    EXPECT_EQ(request_path("/%4"), "/%4");
    EXPECT_EQ(request_path("/%4g"), "/%4g");
    EXPECT_EQ(request_path("/%%41"), "/%A");
    EXPECT_EQ(request_path("/%zz%41"), "/%zzA");
}

TEST(RequestPath, OfAnAbsoluteTargetIsWhatFollowsTheHost)
{
    EXPECT_EQ(request_path("http://10.0.0.1:3000/x-nmos/"), "/x-nmos/");
    EXPECT_EQ(request_path("http://10.0.0.1"), "/");
    EXPECT_EQ(request_path("/http://10.0.0.1/a"), "/http://10.0.0.1/a");
    EXPECT_EQ(request_path("x-nmos/"), "x-nmos/");
}

} // namespace
} // namespace nmos_instrument::host

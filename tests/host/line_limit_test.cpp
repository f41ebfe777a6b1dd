// SPDX-License-Identifier: Apache-2.0

#include "routes/line_limit.h"

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using LeftOut = std::vector<LineLimit::LeftOut>;

constexpr LineLimit::Time start{1000s};

/// How many of `lines` lines at `now` are allowed.
int allowed_of(LineLimit& limit, const std::string& client, int lines, LineLimit::Time now)
{
    int allowed = 0;
    for (int i = 0; i < lines; ++i)
        allowed += limit.allows(client, now) ? 1 : 0;
    return allowed;
}

TEST(LineLimit, FiftyAtOnceThenTenPerSecond)
{
    LineLimit limit;
    EXPECT_EQ(allowed_of(limit, "192.0.2.1", 87, start), 50);
    EXPECT_EQ(allowed_of(limit, "192.0.2.1", 5, start + 99ms), 0);
    EXPECT_EQ(allowed_of(limit, "192.0.2.1", 5, start + 100ms), 1);
    EXPECT_EQ(allowed_of(limit, "192.0.2.1", 50, start + 1100ms), 10);
    EXPECT_EQ(allowed_of(limit, "192.0.2.1", 87, start + 1h), 50);
}

TEST(LineLimit, EachClientHasItsOwnCount)
{
    LineLimit limit;
    EXPECT_EQ(allowed_of(limit, "192.0.2.1", 1000, start), 50);
    EXPECT_EQ(allowed_of(limit, "192.0.2.2", 50, start), 50);
}

TEST(LineLimit, WhatWasLeftOutIsToldOnceWhenLinesAreAllowedAgain)
{
    LineLimit limit;
    allowed_of(limit, "192.0.2.1", 87, start);
    allowed_of(limit, "192.0.2.2", 50, start);
    EXPECT_EQ(limit.take_left_out(start), LeftOut());
    EXPECT_EQ(limit.take_left_out(start + 100ms), (LeftOut{{"192.0.2.1", 37}}));
    EXPECT_EQ(limit.take_left_out(start + 100ms), LeftOut());
}

TEST(LineLimit, AtTheEndAllThatWasLeftOutIsTold)
{
    LineLimit limit;
    allowed_of(limit, "192.0.2.1", 51, start);
    allowed_of(limit, "192.0.2.2", 52, start);
    EXPECT_EQ(limit.take_all_left_out(), (LeftOut{{"192.0.2.1", 1}, {"192.0.2.2", 2}}));
    EXPECT_EQ(limit.take_all_left_out(), LeftOut());
}

TEST(LineLimit, ClientsBeyondTheMostShareOneCount)
{
    LineLimit limit;
    for (std::size_t i = 0; i < LineLimit::most_clients; ++i)
        EXPECT_TRUE(limit.allows("client " + std::to_string(i), start));
    int allowed = 0;
    for (int i = 0; i < 300; ++i)
        allowed += limit.allows("stranger " + std::to_string(i), start) ? 1 : 0;
    EXPECT_EQ(allowed, 50);
    // Those that were there first still have their own.
    EXPECT_EQ(allowed_of(limit, "client 7", 60, start), 49);
    EXPECT_EQ(limit.take_left_out(start + 200ms),
              (LeftOut{{"client 7", 11}, {"other clients", 250}}));
}

TEST(LineLimit, SilentClientsAreForgotten)
{
    LineLimit limit;
    for (std::size_t i = 0; i < LineLimit::most_clients; ++i)
        limit.allows("client " + std::to_string(i), start);
    limit.take_left_out(start + 100ms);
    EXPECT_EQ(allowed_of(limit, "stranger 1", 60, start + 100ms), 50);
    EXPECT_EQ(allowed_of(limit, "stranger 2", 60, start + 100ms), 50);
}

} // namespace
} // namespace nmos_instrument::host

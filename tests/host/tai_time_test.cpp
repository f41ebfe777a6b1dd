// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "time/tai_clock.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

TEST(TaiTimeText, Parsed)
{
    EXPECT_EQ(parse_tai_time("0:0"), (TaiTime{0, 0}));
    EXPECT_EQ(parse_tai_time("1541234567:25"), (TaiTime{1541234567, 25}));
    EXPECT_EQ(parse_tai_time("007:000000001"), (TaiTime{7, 1}));
    EXPECT_EQ(parse_tai_time("281474976710655:999999999"), (TaiTime{281474976710655, 999'999'999}));
}

TEST(TaiTimeText, Refused)
{
    for (const char* const text :
         {"", ":", "1", "1:", ":1", "-1:0", "1:-1", "+1:0", " 1:0", "1:0 ", "1: 0", "1:1000000000",
          "281474976710656:0", "18446744073709551616:0", "1:18446744073709551616", "1:2:3", "a:0",
          "0x1:0", "1.0:0"})
        EXPECT_FALSE(parse_tai_time(text)) << text;
}

TEST(TaiTimeSum, CarriesAndIsBounded)
{
    EXPECT_EQ(sum_of({1, 2}, {3, 4}), (TaiTime{4, 6}));
    EXPECT_EQ(sum_of({1, 999'999'999}, {0, 1}), (TaiTime{2, 0}));
    EXPECT_EQ(sum_of({1, 999'999'999}, {1, 999'999'999}), (TaiTime{3, 999'999'998}));
    EXPECT_EQ(sum_of({1, 0}, {last_tai_second - 1, 999'999'999}),
              (TaiTime{last_tai_second, 999'999'999}));
    EXPECT_FALSE(sum_of({1, 0}, {last_tai_second, 0}));
    EXPECT_FALSE(sum_of({1, 1}, {last_tai_second - 1, 999'999'999}));
}

TEST(LaterThan, MovesStrictlyForward)
{
    EXPECT_EQ(later_than({5, 0}, {6, 1}), (TaiTime{6, 1}));
    EXPECT_EQ(later_than({5, 7}, {5, 7}), (TaiTime{5, 8}));
    EXPECT_EQ(later_than({5, 999'999'999}, {4, 0}), (TaiTime{6, 0}));
}

TEST(LaterThan, EndsBeforeAClockDoes)
{
    const TaiTime last{281'474'976'710'654, 999'999'999};
    EXPECT_EQ(latest_version, last);
    EXPECT_EQ(later_than({281'474'976'710'654, 999'999'998}, {5, 0}), last);
    EXPECT_EQ(later_than(last, {5, 0}), last);
    EXPECT_EQ(later_than({281'474'976'710'655, 999'999'999}, {5, 0}), last);
    EXPECT_EQ(later_than({5, 0}, {281'474'976'710'655, 0}), last);
}

TEST(SpanBetween, IsSignedAndBounded)
{
    EXPECT_EQ(span_between({5, 0}, {6, 1}), 1s + 1ns);
    EXPECT_EQ(span_between({6, 1}, {5, 999'999'999}), -2ns);
    EXPECT_GT(span_between({0, 0}, {last_tai_second, 0}), 24h * 365 * 99);
    EXPECT_LT(span_between({last_tai_second, 0}, {0, 0}), -24h * 365 * 99);
}

TEST(TaiClock, IsAheadOfUtcByTheOffset)
{
    const auto before = std::chrono::system_clock::now() + tai_offset();
    const TaiTime now = tai_now();
    const auto after = std::chrono::system_clock::now() + tai_offset();
    const std::chrono::system_clock::time_point point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::seconds(now.seconds) + std::chrono::nanoseconds(now.nanoseconds)));
    EXPECT_LE(before, point);
    EXPECT_LE(point, after);
    EXPECT_GE(tai_offset(), 37s);
}

TEST(TaiTimeOf, AClockBefore1970IsZeroAndDoesNotWrap)
{
    EXPECT_EQ(tai_time_of({1'700'000'000, 5}, 37s), (TaiTime{1'700'000'037, 5}));
    EXPECT_EQ(tai_time_of({0, 0}, 37s), (TaiTime{37, 0}));
    EXPECT_EQ(tai_time_of({-37, 5}, 37s), (TaiTime{0, 5}));
    EXPECT_EQ(tai_time_of({-38, 999'999'999}, 37s), (TaiTime{0, 0}));
    EXPECT_EQ(tai_time_of({-3600, 5}, 37s), (TaiTime{0, 0}));
    EXPECT_EQ(tai_time_of({std::numeric_limits<std::int64_t>::min(), 0}, 37s), (TaiTime{0, 0}));
}

TEST(ClockWarning, OnlyBefore1970)
{
    EXPECT_EQ(clock_warning({0, 0}), "");
    EXPECT_EQ(clock_warning({1'700'000'000, 0}), "");
    EXPECT_EQ(clock_warning({-3600, 0}),
              "the system clock shows a time before 1970, 3600 s before: times and versions "
              "start at 0 until it is set");
}

TEST(SystemTimeOf, IsExactWhenNearAndBoundedWhenFar)
{
    const TaiTime now = tai_now();
    const auto soon = system_time_of({now.seconds + 60, 5});
    EXPECT_EQ(soon.time_since_epoch() % 1s, 5ns);
    EXPECT_EQ(std::chrono::duration_cast<std::chrono::seconds>(soon.time_since_epoch()).count() +
                  tai_offset().count(),
              static_cast<std::int64_t>(now.seconds + 60));
    EXPECT_LE(system_time_of({last_tai_second, 0}), std::chrono::system_clock::now() + 1h);
    EXPECT_LE(system_time_of({0, 0}), std::chrono::system_clock::now());
}

} // namespace
} // namespace nmos_instrument::host

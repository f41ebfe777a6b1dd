// SPDX-License-Identifier: Apache-2.0

#include "connection/activation_request.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

constexpr TaiTime now{1000, 500'000'000};

ActivationRequest request(ActivationMode mode, const TaiTime& time)
{
    return {mode, time, to_text(time)};
}

TEST(DueTime, OfEachMode)
{
    EXPECT_EQ(due_time(request(ActivationMode::immediate, {}), now), now);
    EXPECT_EQ(due_time(request(ActivationMode::scheduled_absolute, {900, 1}), now),
              (TaiTime{900, 1}));
    EXPECT_EQ(due_time(request(ActivationMode::scheduled_relative, {2, 600'000'000}), now),
              (TaiTime{1003, 100'000'000}));
}

TEST(DueTime, BeyondWhatATaiClockShows)
{
    const ActivationRequest far = request(ActivationMode::scheduled_relative, {last_tai_second, 0});
    EXPECT_EQ(due_time(far, now), std::nullopt);
    EXPECT_EQ(due_time(far, {0, 0}), (TaiTime{last_tai_second, 0}));
}

TEST(LatenessOfRequest, AControllerThatSendsUtcIsAskedAboutIt)
{
    EXPECT_EQ(
        lateness_of_request(request(ActivationMode::scheduled_absolute, {963, 500'000'000}), now),
        ", 37.000 s after the requested time (UTC instead of TAI?)");
    EXPECT_EQ(
        lateness_of_request(request(ActivationMode::scheduled_absolute, {1000, 498'000'000}), now),
        ", 0.002 s after the requested time");
}

TEST(LatenessOfRequest, NothingIsSaidOfOthers)
{
    EXPECT_EQ(lateness_of_request(request(ActivationMode::scheduled_absolute, now), now), "");
    EXPECT_EQ(lateness_of_request(request(ActivationMode::scheduled_relative, {0, 0}), now), "");
    EXPECT_EQ(lateness_of_request(request(ActivationMode::immediate, {}), now), "");
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/activations.h"

#include <chrono>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

constexpr ConnectionKey sender{Side::sender, 0};
constexpr ConnectionKey receiver{Side::receiver, 3};

ScheduledActivation at(const ConnectionKey& key, const TaiTime& due)
{
    return {key, ActivationMode::scheduled_absolute, due};
}

ScheduledActivation after(const ConnectionKey& key, std::chrono::seconds steady)
{
    return {key, ActivationMode::scheduled_relative, {7, 0}, SteadyTime(steady)};
}

TEST(Activations, TheNextIsTheEarliest)
{
    Activations activations;
    EXPECT_EQ(activations.next_due(), NextDue());
    activations.schedule(at(sender, {20, 0}));
    activations.schedule(at(receiver, {10, 5}));
    EXPECT_EQ(activations.next_due(), (NextDue{TaiTime{10, 5}, std::nullopt}));
    EXPECT_EQ(activations.scheduled().size(), 2U);
}

TEST(Activations, TheNextOfEachClock)
{
    Activations activations;
    activations.schedule(after(sender, 90s));
    EXPECT_EQ(activations.next_due(), (NextDue{std::nullopt, SteadyTime(90s)}));
    activations.schedule(after({Side::sender, 1}, 80s));
    activations.schedule(at(receiver, {10, 5}));
    EXPECT_EQ(activations.next_due(), (NextDue{TaiTime{10, 5}, SteadyTime(80s)}));
}

TEST(Activations, RelativeOnesAreDueByTheSteadyClockAlone)
{
    Activations activations;
    activations.schedule(after(receiver, 90s));
    EXPECT_FALSE(activations.find_due({{last_tai_second, 0}, SteadyTime(90s - 1ns)}));
    EXPECT_TRUE(activations.find_due({{0, 0}, SteadyTime(90s)}));
    activations.schedule(at(receiver, {10, 5}));
    EXPECT_FALSE(activations.find_due({{10, 4}, SteadyTime::max()}));
    EXPECT_TRUE(activations.find_due({{10, 5}, SteadyTime()}));
}

TEST(Activations, LatenessIsThatOfTheClockThatCounts)
{
    const Instant now{{3607, 0}, SteadyTime(91s)};
    EXPECT_EQ(lateness(after(receiver, 90s), now), 1s);
    EXPECT_EQ(lateness(at(receiver, {7, 0}), now), 3600s);
}

TEST(Activations, OneIsFoundWhenItIsDue)
{
    Activations activations;
    activations.schedule(at(receiver, {10, 5}));
    EXPECT_FALSE(activations.find_due({{10, 4}, {}}));
    const auto found = activations.find_due({{10, 5}, {}});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->key, receiver);
    EXPECT_EQ(found->due, (TaiTime{10, 5}));
}

TEST(Activations, CancellingTellsWhetherThereWasOne)
{
    Activations activations;
    EXPECT_FALSE(activations.cancel(sender));
    activations.schedule(at(sender, {20, 0}));
    EXPECT_FALSE(activations.cancel(receiver));
    ASSERT_NE(activations.find(sender), nullptr);
    EXPECT_TRUE(activations.cancel(sender));
    EXPECT_EQ(activations.find(sender), nullptr);
}

TEST(Activations, TheLastTwentyReportsAreKeptNewestFirst)
{
    Activations activations;
    for (int i = 0; i < 25; ++i)
        activations.report_done({std::to_string(i), "", {}, {}, "", {}});
    activations.report_failed({"failed", "", {}, {}, "why", {}});
    EXPECT_EQ(activations.counts(), (ActivationCounts{25, 1}));
    ASSERT_EQ(activations.done().size(), 20U);
    EXPECT_EQ(activations.done().front().resource, "24");
    EXPECT_EQ(activations.done().back().resource, "5");
    ASSERT_EQ(activations.failed().size(), 1U);
    EXPECT_EQ(activations.failed().front().why, "why");
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/activations.h"

#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

constexpr ConnectionKey sender{Side::sender, 0};
constexpr ConnectionKey receiver{Side::receiver, 3};

ScheduledActivation at(const ConnectionKey& key, const TaiTime& due)
{
    return {key, ActivationMode::scheduled_absolute, due};
}

TEST(Activations, TheNextIsTheEarliest)
{
    Activations activations;
    EXPECT_EQ(activations.next_due(), std::nullopt);
    activations.schedule(at(sender, {20, 0}));
    activations.schedule(at(receiver, {10, 5}));
    EXPECT_EQ(activations.next_due(), (TaiTime{10, 5}));
    EXPECT_EQ(activations.scheduled().size(), 2U);
}

TEST(Activations, OneIsFoundWhenItIsDue)
{
    Activations activations;
    activations.schedule(at(receiver, {10, 5}));
    EXPECT_FALSE(activations.find_due({10, 4}));
    const auto found = activations.find_due({10, 5});
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
        activations.report_done({std::to_string(i), "", {}, {}, ""});
    activations.report_failed({"failed", "", {}, {}, "why"});
    ASSERT_EQ(activations.done().size(), 20U);
    EXPECT_EQ(activations.done().front().resource, "24");
    EXPECT_EQ(activations.done().back().resource, "5");
    ASSERT_EQ(activations.failed().size(), 1U);
    EXPECT_EQ(activations.failed().front().why, "why");
}

} // namespace
} // namespace nmos_instrument::host

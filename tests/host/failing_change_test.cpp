// SPDX-License-Identifier: Apache-2.0
//
// A change of the instrument during which each allocation in turn throws std::bad_alloc: it must
// leave everything as it was. Alone in its process, whose allocator it replaces.

#include <cstddef>
#include <functional>
#include <future>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "instrument/instrument.h"
#include "instrument/saved_state.h"
#include "support/failing_allocator.h"

namespace nmos_instrument::host {
namespace {

using failing_allocator::allocations_left;
using failing_allocator::counting;

class FailingChangeTest : public testing::Test
{
protected:
    FailingChangeTest()
    {
        instrument_.listen({[this] { ++changes_; }, {}});
    }

    /// All that clients see and all that is saved, but for the reports on activations that failed.
    std::string everything()
    {
        std::string text = write_saved_state(instrument_.saved_state());
        instrument_.read([&](Records& records) {
            text += NodeApi().make_self(&records.node);
            text += ConnectionApi().make_single_senderid_staged(&records.connections, 0);
            text += ConnectionApi().make_single_receiverid_staged(&records.connections, 0);
        });
        text += base_url(instrument_.address());
        const InstrumentStatus status = instrument_.status();
        for (const InstrumentStatus::Pending& pending : status.pending)
            text += pending.resource + ' ' + to_text(pending.due) + '\n';
        text += std::to_string(status.activations.size()) + " activations, ";
        return text + std::to_string(changes_) + " changes";
    }

    /// Calls `action`, which tells whether it succeeded, until no allocation of it fails.
    void fail_each_allocation(const std::function<bool()>& action)
    {
        const std::string before = everything();
        long failures = 0;
        for (bool done = false; !done; ++failures) {
            ASSERT_LT(failures, 10000) << "it never succeeds";
            allocations_left = failures;
            counting = true;
            try {
                done = action();
            } catch (const std::bad_alloc&) {}
            counting = false;
            if (!done) {
                ASSERT_EQ(everything(), before) << "after allocation " << failures << " failed";
            }
        }
        EXPECT_GT(failures, 5) << "something was allocated";
        EXPECT_NE(everything(), before);
    }

    void fail_each_allocation_of(const ConnectionKey& key, const ConnectionPatch& patch)
    {
        fail_each_allocation([&] { return !instrument_.change(key, patch).is_refusal(); });
    }

    static ConnectionPatch patch(ActivationMode mode, const TaiTime& time = {})
    {
        ConnectionPatch patch;
        patch.master_enable = true;
        patch.legs[0].destination_port = 6000;
        patch.legs[1].source_port = 7000; // gives a line in the log
        patch.peer_id = "5709255c-c0ae-4e1e-99a0-e872e83e48e0";
        patch.activation = ActivationRequest{mode, time, to_text(time)};
        return patch;
    }

    TaiTime now_{1'234'567'890, 123'456'789};
    int changes_ = 0;
    Instrument instrument_{Configuration(), NodeAddress(), [this] { return now_; }, Log()};
    const ConnectionKey sender_{Side::sender, 0};
    const ConnectionKey receiver_{Side::receiver, 0};
};

TEST_F(FailingChangeTest, Moved)
{
    fail_each_allocation([&] {
        instrument_.move_to({"203.203.203.203", 65535});
        return true;
    });
}

TEST_F(FailingChangeTest, Staged)
{
    ConnectionPatch staged = patch(ActivationMode::none);
    staged.activation.reset();
    fail_each_allocation_of(sender_, staged);
    fail_each_allocation_of(receiver_, staged);
}

TEST_F(FailingChangeTest, ActivatedAtOnce)
{
    fail_each_allocation_of(sender_, patch(ActivationMode::immediate));
    fail_each_allocation_of(receiver_, patch(ActivationMode::immediate));
}

TEST_F(FailingChangeTest, ScheduledAndCancelled)
{
    fail_each_allocation_of(sender_, patch(ActivationMode::scheduled_relative, {5, 0}));
    fail_each_allocation_of(sender_, patch(ActivationMode::none));
}

TEST_F(FailingChangeTest, WhatIsDueStaysScheduledOrIsReportedAsFailed)
{
    const ConnectionPatch later = patch(ActivationMode::scheduled_absolute, {now_.seconds + 5, 0});
    const auto schedule = [&] { instrument_.change(sender_, later); };
    schedule();
    now_.seconds += 10;
    const auto active = [&] {
        return instrument_.read([](Records& records) {
            return ConnectionApi().make_single_senderid_active(&records.connections, 0) +
                   NodeApi().make_senders(&records.node, 1);
        });
    };
    const std::string before = active();
    bool passed_on = false;
    long failures = 0;
    for (; instrument_.status().activations.empty(); ++failures) {
        ASSERT_LT(failures, 10000) << "it never succeeds";
        allocations_left = failures;
        counting = true;
        try {
            instrument_.activate_due();
        } catch (const std::bad_alloc&) {
            passed_on = true;
            EXPECT_TRUE(instrument_.status().activations.empty()) << "thrown although it was done";
        }
        counting = false;
        if (!instrument_.status().activations.empty())
            break;
        ASSERT_EQ(active(), before) << "after allocation " << failures << " failed";
        if (instrument_.status().pending.empty()) {
            ASSERT_FALSE(instrument_.status().failures.empty());
            now_.seconds -= 10;
            schedule();
            now_.seconds += 10;
        }
    }
    EXPECT_TRUE(passed_on);
    EXPECT_GT(failures, 5) << "something was allocated";
    EXPECT_NE(active(), before);
}

/// Allocations count from when the hardware has answered: then its own thread reads the clock.
TEST_F(FailingChangeTest, TheHardwareGoesBackFromWhatCannotBecomeActive)
{
    using Call = std::pair<int, double>; // master_enable, port of leg 1
    bool done = false;
    long failures = 0;
    for (; !done; ++failures) {
        ASSERT_LT(failures, 10000) << "it never succeeds";
        const std::thread::id here = std::this_thread::get_id();
        const auto clock = [&] {
            if (std::this_thread::get_id() != here && !counting) {
                allocations_left = failures;
                counting = true;
            }
            return now_;
        };
        std::vector<Call> calls;
        std::promise<void> called;
        const auto apply = [&](const ConnectionKey&, const CONNECTION_HALF_IS05_ST& active) {
            calls.emplace_back(active.master_enable, active.transport_params[0].destination_port);
            if (calls.size() == 1)
                called.set_value();
            return ApplyOutcome();
        };
        Instrument instrument(Configuration(), NodeAddress(), clock, Log(), {apply});
        const std::string before = write_saved_state(instrument.saved_state());
        std::optional<ChangeOutcome> outcome;
        instrument.change(receiver_, patch(ActivationMode::immediate),
                          [&](ChangeOutcome ended) { outcome = std::move(ended); });
        called.get_future().wait();
        instrument.end_hardware();

        EXPECT_FALSE(instrument.refusal_while_locked(receiver_));
        EXPECT_EQ(calls.front(), Call(1, 6000));
        if (!instrument.status().activations.empty()) {
            EXPECT_EQ(calls.size(), 1U);
            done = outcome.has_value();
            continue;
        }
        ASSERT_EQ(write_saved_state(instrument.saved_state()), before)
            << "after allocation " << failures << " failed";
        ASSERT_EQ(calls.size(), 2U);
        EXPECT_EQ(calls.back(), Call(0, 5004));
        ASSERT_TRUE(outcome);
        EXPECT_EQ(outcome->result, ChangeResult::failed);
        EXPECT_EQ(outcome->debug, "out of memory");
        EXPECT_EQ(instrument.status().failures.at(0).why, "out of memory");
    }
    EXPECT_GT(failures, 5) << "something was allocated";
}

TEST_F(FailingChangeTest, LookingAtTheStateChangesNothing)
{
    const std::string before = everything();
    for (long failures = 0;; ++failures) {
        ASSERT_LT(failures, 100'000) << "it never succeeds";
        allocations_left = failures;
        bool done = false;
        counting = true;
        try {
            instrument_.saved_state();
            done = true;
        } catch (const std::bad_alloc&) {}
        counting = false;
        if (done)
            break;
        // Comparing everything is slow; most allocations are those of like resources.
        if (failures % 7 == 0) {
            ASSERT_EQ(everything(), before) << "after allocation " << failures << " failed";
        }
    }
    EXPECT_EQ(everything(), before);
}

TEST_F(FailingChangeTest, WritingTheStateThrowsAndDoesNotEndTheProgram)
{
    const SavedState state = instrument_.saved_state();
    const std::string expected = write_saved_state(state);
    std::string written;
    long failures = 0;
    for (; written.empty(); ++failures) {
        ASSERT_LT(failures, 10000) << "it never succeeds";
        allocations_left = failures;
        counting = true;
        try {
            written = write_saved_state(state);
        } catch (const std::bad_alloc&) {}
        counting = false;
    }
    EXPECT_GT(failures, 5) << "something was allocated";
    EXPECT_EQ(written, expected);
}

TEST_F(FailingChangeTest, RecordsChangedBySomebodyElse)
{
    fail_each_allocation([&] {
        instrument_.change_records([](Records& records) {
            records.node.label[0] = 'X';
            records.node.receivers[3].label[0] = 'X';
            records.connections.senders[2].active.transport_params[0].destination_port = 6000;
            records.connections.receivers[5].active.master_enable = 1;
        });
        return true;
    });
    EXPECT_EQ(changes_, 1);
}

} // namespace
} // namespace nmos_instrument::host

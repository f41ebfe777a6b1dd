// SPDX-License-Identifier: Apache-2.0
//
// The instrument with hardware that takes as long as the test wants.

#include "instrument/hardware.h"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "held_hardware.h"
#include "instrument/instrument.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using Call = HeldHardware::Call;

constexpr ConnectionKey sender{Side::sender, 0};
constexpr ConnectionKey receiver{Side::receiver, 0};
constexpr ConnectionKey other{Side::receiver, 1};
constexpr ConnectionKey third{Side::receiver, 2};

constexpr const char* not_within_50_ms = "the hardware has not answered within 0.05 s";
constexpr const char* busy = "the hardware is busy: a call of it takes longer than 0.05 s";

ConnectionPatch activation(ActivationMode mode = ActivationMode::immediate, TaiTime time = {})
{
    ConnectionPatch patch;
    patch.master_enable = true;
    patch.legs[0].destination_port = 6000;
    patch.activation = ActivationRequest{mode, time, to_text(time)};
    return patch;
}

ConnectionPatch cancellation()
{
    ConnectionPatch patch;
    patch.activation = ActivationRequest();
    return patch;
}

class HardwareTest : public testing::Test
{
protected:
    void start(std::chrono::milliseconds deadline = 60s)
    {
        instrument_ = std::make_unique<Instrument>(
            Configuration(), NodeAddress(), [this] { return now_; }, Log(),
            hardware_.options(deadline), [this] { return steady_; });
        instrument_->listen({[this] { ++changes_; }, {}});
        at_start_ = state();
    }

    /// The outcome once it is known.
    std::future<ChangeOutcome> change(const ConnectionKey& key, const ConnectionPatch& patch)
    {
        const auto promise = std::make_shared<std::promise<ChangeOutcome>>();
        instrument_->change(key, patch, [promise](ChangeOutcome outcome) {
            promise->set_value(std::move(outcome));
        });
        return promise->get_future();
    }

    static bool is_known(const std::future<ChangeOutcome>& outcome)
    {
        return outcome.wait_for(0s) == std::future_status::ready;
    }

    static ChangeOutcome outcome_of(std::future<ChangeOutcome> outcome)
    {
        if (outcome.wait_for(20s) != std::future_status::ready)
            return {ChangeResult::done, "", "no outcome", ""};
        return outcome.get();
    }

    /// A failure with this reason.
    static void expect_failed(const ChangeOutcome& outcome, const std::string& why)
    {
        EXPECT_EQ(outcome.result, ChangeResult::failed);
        EXPECT_EQ(outcome.error, "The activation failed, nothing has changed");
        EXPECT_EQ(outcome.debug, why);
    }

    /// Nothing changes by asking for this.
    bool is_locked(const ConnectionKey& key)
    {
        return instrument_->refusal_while_locked(key).has_value();
    }

    bool is_free_soon(const ConnectionKey& key)
    {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (is_locked(key) && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(1ms);
        return !is_locked(key);
    }

    json body_of(std::size_t index, bool active)
    {
        return json::parse(instrument_->read([&](Records& records) {
            ConnectionApi api;
            const int i = static_cast<int>(index);
            return active ? api.make_single_receiverid_active(&records.connections, i)
                          : api.make_single_receiverid_staged(&records.connections, i);
        }));
    }
    json active(std::size_t index) { return body_of(index, true); }
    json staged(std::size_t index) { return body_of(index, false); }

    std::string version(std::size_t index)
    {
        return instrument_->read([&](Records& records) {
            return std::string(text_of(records.node.receivers[index].version));
        });
    }

    /// All that survives a restart.
    std::string state() { return write_saved_state(instrument_->saved_state()); }

    HeldHardware hardware_;
    TaiTime now_{1000, 0};
    SteadyTime steady_{50s};
    std::atomic<int> changes_{0};
    std::string at_start_;
    std::unique_ptr<Instrument> instrument_; ///< last: its thread uses the members above
};

TEST_F(HardwareTest, WhileItTakesItsTimeNothingHasChangedAndNobodyElseWaits)
{
    start();
    std::future<ChangeOutcome> outcome = change(receiver, activation());
    ASSERT_TRUE(hardware_.has_calls(1));
    EXPECT_FALSE(is_known(outcome));
    EXPECT_EQ(state(), at_start_);
    EXPECT_EQ(active(0)["master_enable"], false);
    EXPECT_EQ(staged(0)["master_enable"], false);
    EXPECT_EQ(changes_, 0);
    EXPECT_TRUE(instrument_->status().pending.empty());
    ConnectionPatch staging;
    staging.legs[0].destination_port = 7000;
    std::future<ChangeOutcome> of_other = change(other, staging);
    ASSERT_TRUE(is_known(of_other));
    EXPECT_EQ(of_other.get().result, ChangeResult::done);
    EXPECT_EQ(staged(1)["transport_params"][0]["destination_port"], 7000);
    EXPECT_EQ(changes_, 1);
    EXPECT_FALSE(is_known(outcome));

    now_ = {1003, 5};
    hardware_.apply();
    const ChangeOutcome done = outcome_of(std::move(outcome));
    EXPECT_EQ(done.result, ChangeResult::done);
    const json body = json::parse(done.body);
    EXPECT_EQ(body["master_enable"], true);
    EXPECT_EQ(body["activation"], (json{{"mode", "activate_immediate"},
                                        {"requested_time", nullptr},
                                        {"activation_time", "1003:5"}}));
    EXPECT_EQ(done.log,
              (std::vector<std::string>{"activated " + instrument_->resource_name(receiver) +
                                        ": activate_immediate at 1003:5"}));
    EXPECT_EQ(active(0)["master_enable"], true);
    EXPECT_EQ(active(0)["transport_params"][0]["destination_port"], 6000);
    EXPECT_EQ(active(0)["activation"]["activation_time"], "1003:5");
    EXPECT_EQ(staged(0)["activation"]["mode"], nullptr);
    EXPECT_EQ(version(0), "1003:5");
    EXPECT_EQ(changes_, 2);
    ASSERT_EQ(instrument_->status().activations.size(), 1U);
    EXPECT_EQ(instrument_->status().activations[0].late, 3s + 5ns);
    EXPECT_EQ(hardware_.calls(), (std::vector<Call>{{receiver, true, 6000}}));
}

TEST_F(HardwareTest, IsCalledOnceAtATimeInTheOrderOfTheRequests)
{
    start();
    std::vector<std::future<ChangeOutcome>> outcomes;
    for (const ConnectionKey& key : {third, sender, receiver})
        outcomes.push_back(change(key, activation()));
    ASSERT_TRUE(hardware_.has_calls(1));
    EXPECT_EQ(hardware_.calls().size(), 1U);
    for (int i = 0; i < 3; ++i)
        hardware_.apply();
    for (std::future<ChangeOutcome>& outcome : outcomes)
        EXPECT_EQ(outcome_of(std::move(outcome)).result, ChangeResult::done);
    EXPECT_EQ(
        hardware_.calls(),
        (std::vector<Call>{{third, true, 6000}, {sender, true, 6000}, {receiver, true, 6000}}));
}

TEST_F(HardwareTest, WhatItRefusesChangesNothing)
{
    start();
    const auto expect_refusal = [this](const HeldHardware::Answer& answer, const char* why) {
        hardware_.answer(answer);
        expect_failed(outcome_of(change(receiver, activation())), why);
        EXPECT_EQ(state(), at_start_) << why;
        EXPECT_EQ(instrument_->status().failures[0].why, why);
        EXPECT_FALSE(is_locked(receiver)) << why;
    };
    expect_refusal(
        [] {
            return ApplyOutcome{false, "no lock on the reference"};
        },
        "no lock on the reference");
    expect_refusal([] { return ApplyOutcome{false, "two\nlines \xff"}; }, "two\\x0alines \\xff");
    expect_refusal([] { return ApplyOutcome{false, ""}; }, "no reason given");
    expect_refusal([]() -> ApplyOutcome { throw std::runtime_error("the bus hangs"); },
                   "the bus hangs");
    expect_refusal([]() -> ApplyOutcome { throw std::bad_alloc(); }, "out of memory");
    expect_refusal([]() -> ApplyOutcome { throw 42; }, "unknown reason");
    EXPECT_EQ(changes_, 0);
    EXPECT_TRUE(instrument_->status().activations.empty());
    EXPECT_EQ(hardware_.calls().size(), 6U);
}

// The hardware has applied addresses that the instrument has no longer.
TEST_F(HardwareTest, GoesBackWhenItsInterfacesHaveGotOtherAddressesMeanwhile)
{
    start();
    ConnectionPatch automatic;
    automatic.legs[0].interface_ip = "auto";
    ASSERT_EQ(outcome_of(change(receiver, automatic)).result, ChangeResult::done);
    std::future<ChangeOutcome> outcome = change(receiver, activation());
    ASSERT_TRUE(hardware_.has_calls(1));
    instrument_->change_records([](Records& records) {
        for (CONNECTION_IS05_ST& one : records.connections.senders) {
            set_text(one.staged.transport_params[0].source_ip, "192.0.2.99");
            set_text(one.active.transport_params[0].source_ip, "192.0.2.99");
        }
        for (std::size_t i = 0; i < receiver_count; ++i) {
            CONNECTION_IS05_ST& one = records.connections.receivers[i];
            if (i != receiver.index)
                set_text(one.staged.transport_params[0].interface_ip, "192.0.2.99");
            set_text(one.active.transport_params[0].interface_ip, "192.0.2.99");
        }
    });
    hardware_.apply();
    expect_failed(outcome_of(std::move(outcome)),
                  "its interfaces have got other addresses meanwhile");
    hardware_.apply();
    EXPECT_TRUE(is_free_soon(receiver));
    EXPECT_EQ(hardware_.calls(),
              (std::vector<Call>{{receiver, true, 6000}, {receiver, false, 5004}}));
    EXPECT_EQ(active(0)["transport_params"][0]["interface_ip"], "192.0.2.99");
    instrument_->change_records([](Records& records) { set_text(records.node.label, "Rack 7"); });
}

TEST_F(HardwareTest, AConnectionThatIsBeingActivatedIsLocked)
{
    start();
    std::future<ChangeOutcome> first = change(receiver, activation());
    for (const ConnectionPatch& patch : {activation(), ConnectionPatch(), cancellation()}) {
        const ChangeOutcome outcome = outcome_of(change(receiver, patch));
        EXPECT_EQ(outcome.result, ChangeResult::locked);
        EXPECT_EQ(outcome.error, "The resource is locked: an activation is under way");
        EXPECT_EQ(outcome.debug, instrument_->resource_name(receiver) +
                                     " is being activated; try again when that has ended");
    }
    hardware_.apply();
    EXPECT_EQ(outcome_of(std::move(first)).result, ChangeResult::done);
    // Whoever has its answer finds it free.
    EXPECT_FALSE(is_locked(receiver));
    EXPECT_EQ(hardware_.calls().size(), 1U);
}

TEST_F(HardwareTest, WhatAppliesTooLateHasToGoBack)
{
    start(50ms);
    std::future<ChangeOutcome> first = change(receiver, activation());
    expect_failed(outcome_of(std::move(first)), not_within_50_ms);
    EXPECT_EQ(state(), at_start_);
    EXPECT_TRUE(is_locked(receiver));
    // Nobody waits for hardware that hangs.
    expect_failed(outcome_of(change(other, activation())), busy);
    EXPECT_FALSE(is_locked(other));
    EXPECT_EQ(outcome_of(change(other, {})).result, ChangeResult::done);

    hardware_.apply();
    ASSERT_TRUE(hardware_.has_calls(2));
    EXPECT_TRUE(is_locked(receiver));
    hardware_.apply();
    EXPECT_TRUE(is_free_soon(receiver));
    EXPECT_EQ(hardware_.calls(),
              (std::vector<Call>{{receiver, true, 6000}, {receiver, false, 5004}}));
    EXPECT_EQ(active(0)["transport_params"][0]["destination_port"], 5004);
    EXPECT_EQ(active(0)["master_enable"], false);
    EXPECT_EQ(instrument_->status().counts, (ActivationCounts{0, 2}));

    hardware_.apply();
    EXPECT_EQ(outcome_of(change(receiver, activation())).result, ChangeResult::done);
}

TEST_F(HardwareTest, WhatIsRefusedTooLateDoesNotGoBack)
{
    start(50ms);
    expect_failed(outcome_of(change(receiver, activation())), not_within_50_ms);
    EXPECT_TRUE(is_locked(receiver));
    hardware_.refuse("no lock on the reference");
    EXPECT_TRUE(is_free_soon(receiver));
    hardware_.apply();
    EXPECT_EQ(outcome_of(change(other, activation())).result, ChangeResult::done);
    EXPECT_EQ(hardware_.calls(), (std::vector<Call>{{receiver, true, 6000}, {other, true, 6000}}));
    ASSERT_EQ(instrument_->status().failures.size(), 1U);
    EXPECT_EQ(instrument_->status().failures[0].why, not_within_50_ms);
}

TEST_F(HardwareTest, WhatRefusesToGoBackIsFreeAgain)
{
    start(50ms);
    expect_failed(outcome_of(change(receiver, activation())), not_within_50_ms);
    hardware_.apply();
    ASSERT_TRUE(hardware_.has_calls(2));
    hardware_.refuse("I like it as it is");
    EXPECT_TRUE(is_free_soon(receiver));
}

TEST_F(HardwareTest, AScheduledActivationIsBegunOnTimeAndReportedAtItsEnd)
{
    start();
    std::future<ChangeOutcome> scheduled =
        change(receiver, activation(ActivationMode::scheduled_relative, {5, 0}));
    ASSERT_TRUE(is_known(scheduled));
    EXPECT_EQ(scheduled.get().result, ChangeResult::accepted);
    EXPECT_FALSE(instrument_->activate_due());
    steady_ += 5s;
    now_ = {1005, 0};
    EXPECT_TRUE(instrument_->activate_due());
    ASSERT_TRUE(hardware_.has_calls(1));
    EXPECT_FALSE(instrument_->activate_due());
    EXPECT_EQ(instrument_->next_due(), NextDue());
    EXPECT_TRUE(instrument_->status().pending.empty());
    EXPECT_EQ(staged(0)["activation"]["mode"], "activate_scheduled_relative");
    EXPECT_EQ(active(0)["master_enable"], false);
    EXPECT_EQ(outcome_of(change(receiver, cancellation())).error,
              "The resource is locked: an activation is under way");
    EXPECT_EQ(changes_, 1);

    steady_ += 2s;
    now_ = {1007, 0};
    hardware_.apply();
    ASSERT_TRUE(is_free_soon(receiver));
    EXPECT_EQ(staged(0)["activation"]["mode"], nullptr);
    EXPECT_EQ(active(0)["master_enable"], true);
    // The controller was told this time.
    EXPECT_EQ(active(0)["activation"]["activation_time"], "1005:0");
    EXPECT_EQ(version(0), "1007:0");
    ASSERT_EQ(instrument_->status().activations.size(), 1U);
    EXPECT_EQ(instrument_->status().activations[0].late, 2s);
    instrument_->end_hardware();
    EXPECT_EQ(changes_, 2);
}

TEST_F(HardwareTest, AScheduledActivationThatIsRefused)
{
    start();
    outcome_of(change(receiver, activation(ActivationMode::scheduled_absolute, {1005, 0})));
    now_ = {1005, 0};
    hardware_.refuse("no lock on the reference");
    EXPECT_TRUE(instrument_->activate_due());
    ASSERT_TRUE(is_free_soon(receiver));
    EXPECT_EQ(active(0)["master_enable"], false);
    EXPECT_EQ(version(0), "1000:0");
    // The staged parameters are still there for another attempt.
    EXPECT_EQ(staged(0)["activation"]["mode"], nullptr);
    EXPECT_EQ(staged(0)["transport_params"][0]["destination_port"], 6000);
    ASSERT_EQ(instrument_->status().failures.size(), 1U);
    EXPECT_EQ(instrument_->status().failures[0].mode, "activate_scheduled_absolute");
    EXPECT_EQ(instrument_->status().failures[0].why, "no lock on the reference");
}

TEST_F(HardwareTest, AtTheEndACallThatHangsIsLeftBehind)
{
    start(2s);
    std::future<ChangeOutcome> hanging = change(receiver, activation());
    ASSERT_TRUE(hardware_.has_calls(1));
    std::future<ChangeOutcome> waiting = change(other, activation());
    instrument_->end_hardware();
    ASSERT_TRUE(is_known(hanging));
    ASSERT_TRUE(is_known(waiting));
    expect_failed(hanging.get(), "the hardware has not answered within 2 s");
    expect_failed(waiting.get(), "the instrument ends");
    std::future<ChangeOutcome> later = change(third, activation());
    ASSERT_TRUE(is_known(later));
    expect_failed(later.get(), "the instrument ends");
    EXPECT_EQ(state(), at_start_);
    instrument_.reset();
    hardware_.apply();
    EXPECT_TRUE(hardware_.has_returned(1));
    EXPECT_EQ(hardware_.calls().size(), 1U);
}

TEST_F(HardwareTest, AtTheEndACallThatAnswersInTimeCounts)
{
    start();
    std::future<ChangeOutcome> outcome = change(receiver, activation());
    ASSERT_TRUE(hardware_.has_calls(1));
    hardware_.apply();
    instrument_->end_hardware();
    ASSERT_TRUE(is_known(outcome));
    EXPECT_EQ(outcome.get().result, ChangeResult::done);
    EXPECT_EQ(active(0)["master_enable"], true);
}

TEST_F(HardwareTest, WhatIsDueAfterTheEndFails)
{
    start();
    outcome_of(change(receiver, activation(ActivationMode::scheduled_absolute, {1005, 0})));
    instrument_->end_hardware();
    now_ = {1005, 0};
    EXPECT_TRUE(instrument_->activate_due());
    EXPECT_FALSE(instrument_->activate_due());
    ASSERT_EQ(instrument_->status().failures.size(), 1U);
    EXPECT_EQ(instrument_->status().failures[0].why, "the instrument ends");
    EXPECT_TRUE(hardware_.calls().empty());
}

TEST_F(HardwareTest, IsSetUpForWhatIsEnabledAtTheStart)
{
    start();
    SavedState saved = instrument_->saved_state();
    for (auto& [id, connection] : saved.senders)
        connection.active.master_enable = 0;
    const auto enable = [&](const ConnectionKey& key, int port) {
        const std::string name = instrument_->resource_name(key);
        SavedConnection& connection = key.side == Side::sender
                                          ? saved.senders.at(name.substr(8))
                                          : saved.receivers.at(name.substr(10));
        connection.active.master_enable = 1;
        connection.active.transport_params[0].destination_port = port;
    };
    enable(third, 7002);
    enable(other, 7001);
    enable(sender, 7000);
    instrument_->restore(saved);
    const std::string restored = state();
    instrument_->set_up_hardware();
    EXPECT_TRUE(is_locked(sender));
    EXPECT_TRUE(is_locked(third));
    EXPECT_FALSE(is_locked(receiver));
    hardware_.apply();
    hardware_.refuse("there is no cable");
    hardware_.apply();
    ASSERT_TRUE(is_free_soon(third));
    EXPECT_EQ(hardware_.calls(),
              (std::vector<Call>{{sender, true, 7000}, {other, true, 7001}, {third, true, 7002}}));
    EXPECT_FALSE(is_locked(other));
    EXPECT_EQ(state(), restored);
    EXPECT_EQ(instrument_->status().counts, (ActivationCounts{0, 0}));
    EXPECT_EQ(changes_, 0);
}

TEST_F(HardwareTest, NobodyCanWaitForAnOutcomeThatMayTakeItsTime)
{
    start();
    EXPECT_THROW(instrument_->change(receiver, {}), std::logic_error);
}

TEST(NoHardware, NeedsNoEndAndNoStart)
{
    Instrument instrument(
        Configuration(), NodeAddress(),
        [] {
            return TaiTime{1000, 0};
        },
        Log());
    instrument.set_up_hardware();
    EXPECT_FALSE(instrument.refusal_while_locked(sender));
    instrument.end_hardware();
    EXPECT_EQ(instrument.change(receiver, activation()).result, ChangeResult::done);
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// The instrument with a clock of the test's own and without hardware.

#include "instrument/instrument.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

class InstrumentTest : public testing::Test
{
protected:
    ConnectionPatch activation(ActivationMode mode, TaiTime time = {}) const
    {
        ConnectionPatch patch;
        patch.master_enable = true;
        patch.legs[0].destination_port = 6000;
        patch.activation = ActivationRequest{mode, time, to_text(time)};
        return patch;
    }

    nlohmann::json active(std::size_t receiver)
    {
        return nlohmann::json::parse(instrument_.read([&](Records& records) {
            return ConnectionApi().make_single_receiverid_active(&records.connections,
                                                                 static_cast<int>(receiver));
        }));
    }

    std::string version(std::size_t receiver)
    {
        return instrument_.read([&](Records& records) {
            return std::string(text_of(records.node.receivers[receiver].version));
        });
    }

    /// The next scheduled activation if all are absolute.
    std::optional<TaiTime> next_absolute()
    {
        EXPECT_EQ(instrument_.next_due().steady, std::nullopt);
        return instrument_.next_due().tai;
    }

    TaiTime now_{1000, 0};
    SteadyTime steady_{50s};
    Instrument instrument_{
        Configuration(),           NodeAddress(), [this] { return now_; }, Log(), {},
        [this] { return steady_; }};
    const ConnectionKey receiver_{Side::receiver, 0};
};

TEST_F(InstrumentTest, ScheduledActivationsHappenWhenTheyAreDueAndNotBefore)
{
    const ConnectionKey other{Side::receiver, 1};
    instrument_.change(receiver_, activation(ActivationMode::scheduled_absolute, {1010, 5}));
    instrument_.change(other, activation(ActivationMode::scheduled_absolute, {1005, 0}));
    EXPECT_EQ(next_absolute(), (TaiTime{1005, 0}));
    now_ = {1004, 999'999'999};
    EXPECT_FALSE(instrument_.activate_due());
    EXPECT_EQ(instrument_.status().activations.size(), 0U);
    now_ = {1005, 0};
    EXPECT_TRUE(instrument_.activate_due());
    EXPECT_EQ(instrument_.status().activations.size(), 1U);
    EXPECT_EQ(active(1)["activation"]["activation_time"], "1005:0");
    EXPECT_EQ(next_absolute(), (TaiTime{1010, 5}));
    now_ = {2000, 0};
    EXPECT_TRUE(instrument_.activate_due());
    EXPECT_EQ(active(0)["activation"]["activation_time"], "1010:5");
    EXPECT_EQ(version(0), "2000:0");
}

TEST_F(InstrumentTest, ARelativeActivationDoesNotFollowTheSystemClock)
{
    instrument_.change(receiver_, activation(ActivationMode::scheduled_relative, {5, 0}));
    now_.seconds += 3600; // an hour forward
    EXPECT_FALSE(instrument_.activate_due());
    steady_ += 4s;
    EXPECT_FALSE(instrument_.activate_due());
    now_ = {1000 - 900, 0}; // and back
    steady_ += 1s;
    EXPECT_TRUE(instrument_.activate_due());
    // The controller was told this time, so it is shown; the versions follow the clock.
    EXPECT_EQ(active(0)["activation"]["activation_time"], "1005:0");
    EXPECT_EQ(instrument_.status().activations[0].late, 0s);
    EXPECT_EQ(version(0), "1000:1");
}

TEST_F(InstrumentTest, AnAbsoluteActivationFollowsTheSystemClock)
{
    instrument_.change(receiver_, activation(ActivationMode::scheduled_absolute, {4600, 0}));
    steady_ += 24h;
    EXPECT_FALSE(instrument_.activate_due());
    now_ = {100, 0}; // back
    EXPECT_FALSE(instrument_.activate_due());
    now_ = {4600, 0}; // forward
    EXPECT_TRUE(instrument_.activate_due());
}

TEST_F(InstrumentTest, ARelativeActivationInTheFarFutureDoesNotOverflowTheSteadyClock)
{
    const TaiTime longest{last_tai_second - 1000, 0};
    EXPECT_EQ(instrument_.change(receiver_, activation(ActivationMode::scheduled_relative, longest))
                  .result,
              ChangeResult::accepted);
    ASSERT_TRUE(instrument_.next_due().steady);
    EXPECT_GT(*instrument_.next_due().steady, steady_ + 24h * 365 * 99);
}

TEST_F(InstrumentTest, WhatWasDoneIsTold)
{
    const std::string name = instrument_.resource_name(receiver_);
    using Lines = std::vector<std::string>;
    EXPECT_EQ(instrument_.change(receiver_, {}).log, (Lines{"staged parameters of " + name}));
    EXPECT_EQ(instrument_.change(receiver_, activation(ActivationMode::immediate)).log,
              (Lines{"activated " + name + ": activate_immediate at 1000:0"}));
    const ConnectionPatch later = activation(ActivationMode::scheduled_relative, {5, 0});
    EXPECT_EQ(instrument_.change(receiver_, later).log,
              (Lines{"scheduled " + name + ": activate_scheduled_relative at 1005:0"}));
    EXPECT_EQ(instrument_.change(receiver_, later).log, Lines());
}

TEST_F(InstrumentTest, VersionsRiseWhenTheClockDoesNot)
{
    instrument_.change(receiver_, activation(ActivationMode::immediate));
    EXPECT_EQ(version(0), "1000:1");
    now_ = {900, 0};
    instrument_.change(receiver_, activation(ActivationMode::immediate));
    EXPECT_EQ(version(0), "1000:2");
    now_ = {1001, 0};
    instrument_.change(receiver_, activation(ActivationMode::immediate));
    EXPECT_EQ(version(0), "1001:0");
}

TEST_F(InstrumentTest, ListenersHearWhatTheyNeed)
{
    int changes = 0;
    int schedules = 0;
    instrument_.listen({[&] { ++changes; }, [&] { ++schedules; }});
    instrument_.change(receiver_, {});
    EXPECT_EQ((std::pair{changes, schedules}), (std::pair{1, 0}));
    ConnectionPatch refused;
    refused.legs[0].interface_ip = "203.0.113.1";
    EXPECT_EQ(instrument_.change(receiver_, refused).result, ChangeResult::invalid);
    EXPECT_EQ(changes, 1);
    instrument_.change(receiver_, activation(ActivationMode::scheduled_relative, {5, 0}));
    EXPECT_EQ((std::pair{changes, schedules}), (std::pair{2, 1}));
    EXPECT_EQ(instrument_.change(receiver_, {}).result, ChangeResult::locked);
    EXPECT_EQ(changes, 2);
    steady_ += 6s;
    instrument_.activate_due();
    EXPECT_EQ(changes, 3);
}

TEST_F(InstrumentTest, SavedAndRestored)
{
    instrument_.change(receiver_, activation(ActivationMode::immediate));
    const SavedState saved = instrument_.saved_state();
    const SavedState read = parse_saved_state(write_saved_state(saved));
    EXPECT_EQ(read.counters, saved.counters);
    EXPECT_EQ(read.resources, saved.resources);

    Instrument restarted(
        Configuration(), NodeAddress(),
        [] {
            return TaiTime{5000, 0};
        },
        Log());
    EXPECT_EQ(restarted.restore(read), std::vector<std::string>());
    EXPECT_EQ(write_saved_state(restarted.saved_state()), write_saved_state(saved));
}

TEST_F(InstrumentTest, ASavedStateThatTheRecordCheckRefusesIsDamaged)
{
    SavedState saved = instrument_.saved_state();
    const std::string before = write_saved_state(saved);
    set_text(saved.receivers.begin()->second.active.transport_params[0].source_ip, "nonsense");
    EXPECT_THROW(instrument_.restore(saved), DamagedState);
    EXPECT_EQ(write_saved_state(instrument_.saved_state()), before);
}

TEST_F(InstrumentTest, VersionsEndBeforeTheyBeginAgain)
{
    SavedState saved = instrument_.saved_state();
    const std::string receiver = instrument_.resource_name(receiver_).substr(10);
    saved.resources.at(receiver).version = latest_version;
    for (auto& [id, sender] : saved.senders)
        sender.sdp_version = last_sdp_version;
    instrument_.restore(saved);
    instrument_.change(receiver_, activation(ActivationMode::immediate));
    instrument_.change({Side::sender, 0}, activation(ActivationMode::immediate));
    EXPECT_EQ(version(0), "281474976710654:999999999");
    EXPECT_NE(instrument_.sdp_file(0).find(" 9223372036854775807 IN "), std::string::npos);
    EXPECT_NO_THROW(parse_saved_state(write_saved_state(instrument_.saved_state())));
}

TEST(SavedStateText, IsWhatTheReaderWouldWrite)
{
    Instrument instrument(
        Configuration(), NodeAddress(),
        [] {
            return TaiTime{1, 0};
        },
        Log());
    SavedState state = instrument.saved_state();
    std::string odd;
    for (int byte = 1; byte < 128; ++byte)
        odd += static_cast<char>(byte);
    set_text(state.receivers.begin()->second.staged.transport_file_data, odd + "\xc3\xa4");
    state.senders.clear();
    const std::string text = write_saved_state(state);
    EXPECT_EQ(text, nlohmann::json::parse(text).dump(1) + '\n');
    const SavedState read = parse_saved_state(text);
    EXPECT_EQ(text_of(read.receivers.begin()->second.staged.transport_file_data), odd + "\xc3\xa4");
}

TEST(SavedStateText, AnyChangedByteIsFound)
{
    Instrument instrument(
        Configuration(), NodeAddress(),
        [] {
            return TaiTime{1, 0};
        },
        Log());
    const std::string good = write_saved_state(instrument.saved_state());
    EXPECT_NO_THROW(parse_saved_state(good));
    for (std::size_t at = 0; at < good.size(); at += 97) {
        std::string bad = good;
        bad[at] = bad[at] == '7' ? '8' : '7';
        EXPECT_THROW(parse_saved_state(bad), DamagedState) << at;
    }
    for (std::size_t length = 0; length + 1 < good.size(); length += 997)
        EXPECT_THROW(parse_saved_state(good.substr(0, length)), DamagedState) << length;
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/activation_thread.h"

#include <atomic>
#include <chrono>
#include <new>
#include <thread>

#include <gtest/gtest.h>

#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

ConnectionPatch in_a_moment()
{
    ConnectionPatch patch;
    patch.master_enable = true;
    patch.activation =
        ActivationRequest{ActivationMode::scheduled_relative, {0, 20'000'000}, "0:20000000"};
    return patch;
}

template <class Condition>
bool becomes_true(const Condition& condition)
{
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (!condition() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);
    return condition();
}

TEST(ActivationThread, GoesOnAfterAnyException)
{
    std::atomic<int> readings{0};
    Instrument instrument(Configuration(), NodeAddress(), tai_now, Log(), {}, [&]() -> SteadyTime {
        if (++readings == 2)
            throw 42; // not even a std::exception
        return std::chrono::steady_clock::now();
    });
    ActivationThread thread(instrument, Log());
    instrument.listen({.changed = {}, .scheduled = [&] { thread.look_again(); }});
    EXPECT_EQ(instrument.change({Side::receiver, 0}, in_a_moment()).result, ChangeResult::accepted);
    EXPECT_TRUE(becomes_true([&] { return !instrument.status().activations.empty(); }));
    EXPECT_GT(readings, 2);
}

TEST(ActivationThread, DoesNotTryAgainAndAgain)
{
    std::atomic<int> readings{0};
    Instrument instrument(Configuration(), NodeAddress(), tai_now, Log(), {}, [&]() -> SteadyTime {
        if (readings++ > 0)
            throw std::bad_alloc();
        return std::chrono::steady_clock::now();
    });
    ActivationThread thread(instrument, Log());
    instrument.change({Side::receiver, 0}, in_a_moment()); // the first reading
    thread.look_again();
    EXPECT_TRUE(becomes_true([&] { return readings >= 3; }));
    const int before = readings;
    std::this_thread::sleep_for(300ms);
    EXPECT_LE(readings, before + 5);
}

} // namespace
} // namespace nmos_instrument::host

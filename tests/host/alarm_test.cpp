// SPDX-License-Identifier: Apache-2.0

#include "time/alarm.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using std::chrono::system_clock;

TEST(Alarm, RingsAtTheTimeOfEitherClockAndNotBefore)
{
    Alarm alarm;
    const auto system = system_clock::now() + 50ms;
    alarm.wait(system, steady_clock::now() + 1h);
    EXPECT_GE(system_clock::now(), system);
    EXPECT_LT(system_clock::now(), system + 10s);

    const auto steady = steady_clock::now() + 50ms;
    alarm.wait(system_clock::now() + 1h, steady);
    EXPECT_GE(steady_clock::now(), steady);
    EXPECT_LT(steady_clock::now(), steady + 10s);
}

TEST(Alarm, ATimeThatHasPassedRingsAtOnce)
{
    Alarm alarm;
    alarm.wait(system_clock::now() - 1h, {});
    alarm.wait(system_clock::time_point(), {});
    alarm.wait(system_clock::time_point(-1h), {});
    alarm.wait({}, steady_clock::now() - 1ms);
    alarm.wait({}, steady_clock::time_point());
}

TEST(Alarm, ACallEndsTheWaitAndIsNotForgotten)
{
    Alarm alarm;
    alarm.wake_up(); // before the wait
    alarm.wake_up();
    alarm.wait({}, {});

    std::thread caller([&] {
        std::this_thread::sleep_for(50ms);
        alarm.wake_up();
    });
    const auto before = steady_clock::now();
    alarm.wait({}, steady_clock::now() + 1h);
    EXPECT_LT(steady_clock::now(), before + 10s);
    caller.join();
}

TEST(Alarm, WhatRangIsOver)
{
    Alarm alarm;
    alarm.wait({}, steady_clock::now() - 1ms);
    const auto steady = steady_clock::now() + 50ms;
    alarm.wait({}, steady);
    EXPECT_GE(steady_clock::now(), steady);
}

} // namespace
} // namespace nmos_instrument::host

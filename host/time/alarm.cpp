// SPDX-License-Identifier: Apache-2.0

#include "time/alarm.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

/// A time that has passed rings at once; all zero would switch the timer off.
itimerspec at(std::chrono::nanoseconds since_epoch)
{
    const auto time = std::max(since_epoch, std::chrono::nanoseconds(1));
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    itimerspec setting{};
    setting.it_value.tv_sec = seconds.count();
    setting.it_value.tv_nsec = (time - seconds).count();
    return setting;
}

template <class Time>
void set(int timer, int flags, const std::optional<Time>& time)
{
    const itimerspec setting = time ? at(time->time_since_epoch()) : itimerspec{};
    timerfd_settime(timer, TFD_TIMER_ABSTIME | flags, &setting, nullptr);
}

void read_away(int descriptor)
{
    std::uint64_t count = 0;
    // Nothing to read is no error here, and that the clock was set (ECANCELED) needs no more.
    static_cast<void>(!read(descriptor, &count, sizeof count));
}

} // namespace

Alarm::Alarm()
    : system_timer_(timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)),
      steady_timer_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)),
      call_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (system_timer_ < 0 || steady_timer_ < 0 || call_ < 0) {
        const int error = errno;
        for (const int descriptor : {system_timer_, steady_timer_, call_})
            close(descriptor);
        throw std::system_error(error, std::generic_category(), "no timer for activations");
    }
}

Alarm::~Alarm()
{
    for (const int descriptor : {system_timer_, steady_timer_, call_})
        close(descriptor);
}

void Alarm::wait(const std::optional<SystemTime>& system, const std::optional<SteadyTime>& steady)
{
    set(system_timer_, TFD_TIMER_CANCEL_ON_SET, system);
    set(steady_timer_, 0, steady);
    pollfd events[] = {{system_timer_, POLLIN, 0}, {steady_timer_, POLLIN, 0}, {call_, POLLIN, 0}};
    poll(events, std::size(events), -1);
    for (const int descriptor : {system_timer_, steady_timer_, call_})
        read_away(descriptor);
}

void Alarm::wake_up() noexcept
{
    const std::uint64_t one = 1;
    // It fails only if it has been called 2^64 - 2 times since the last wait.
    static_cast<void>(!write(call_, &one, sizeof one));
}

} // namespace nmos_instrument::host

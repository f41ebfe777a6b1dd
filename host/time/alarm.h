// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TIME_ALARM_H
#define NMOS_INSTRUMENT_HOST_TIME_ALARM_H

#include <chrono>
#include <optional>

namespace nmos_instrument::host {

/// Wakes a thread at a time of the system clock, at a time of the steady clock, when the system
/// clock is set, or when another thread calls. A condition variable could wait for one clock only.
class Alarm
{
public:
    using SystemTime = std::chrono::system_clock::time_point;
    using SteadyTime = std::chrono::steady_clock::time_point;

    /// Throws std::system_error if the system has no more descriptors.
    Alarm();
    ~Alarm();

    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

    /// Waits for whatever comes first. It may also return early, without a reason. One thread only.
    void wait(const std::optional<SystemTime>& system, const std::optional<SteadyTime>& steady);

    /// Ends a wait, or the next one if there is none. Any thread.
    void wake_up() noexcept;

private:
    int system_timer_ = -1;
    int steady_timer_ = -1;
    int call_ = -1;
};

} // namespace nmos_instrument::host

#endif

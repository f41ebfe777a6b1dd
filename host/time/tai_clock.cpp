// SPDX-License-Identifier: Apache-2.0

#include "time/tai_clock.h"

#include <algorithm>

#include <fmt/format.h>
#include <sys/timex.h>

namespace nmos_instrument::host {

std::chrono::seconds tai_offset()
{
    constexpr std::chrono::seconds since_2017{37};
    timex state{}; // modes 0: only reads
    if (adjtimex(&state) < 0 || state.tai == 0)
        return since_2017;
    return std::chrono::seconds(state.tai);
}

TaiTime tai_time_of(const timespec& utc, std::chrono::seconds offset)
{
    const std::int64_t seconds = std::int64_t{utc.tv_sec} + offset.count();
    if (seconds < 0)
        return {};
    return {static_cast<std::uint64_t>(seconds), static_cast<std::int32_t>(utc.tv_nsec)};
}

std::string clock_warning(const timespec& utc)
{
    if (utc.tv_sec >= 0)
        return "";
    return fmt::format("the system clock shows a time before 1970, {} s before: times and versions "
                       "start at 0 until it is set",
                       -utc.tv_sec);
}

timespec utc_now()
{
    timespec utc{};
    clock_gettime(CLOCK_REALTIME, &utc);
    return utc;
}

TaiTime tai_now()
{
    return tai_time_of(utc_now(), tai_offset());
}

TaiTime tai_time_of(std::chrono::steady_clock::time_point time)
{
    using std::chrono::nanoseconds;
    using std::chrono::seconds;
    const timespec now = utc_now();
    const auto until = time - std::chrono::steady_clock::now();
    const auto utc = std::chrono::round<std::chrono::milliseconds>(
        seconds(now.tv_sec) + nanoseconds(now.tv_nsec) + until);
    const auto whole = std::chrono::floor<seconds>(utc);
    timespec rounded{};
    rounded.tv_sec = static_cast<time_t>(whole.count());
    rounded.tv_nsec = static_cast<long>(nanoseconds(utc - whole).count());
    return tai_time_of(rounded, tai_offset());
}

std::chrono::system_clock::time_point system_time_of(const TaiTime& time)
{
    using std::chrono::system_clock;
    const auto remaining = std::clamp(span_between(tai_now(), time), std::chrono::nanoseconds(0),
                                      std::chrono::nanoseconds(std::chrono::hours(1)));
    // Not now() + remaining: that would add the time between the two readings of the clock.
    if (remaining < std::chrono::minutes(59)) {
        const auto since_epoch = std::chrono::seconds(time.seconds) - tai_offset() +
                                 std::chrono::nanoseconds(time.nanoseconds);
        return system_clock::time_point(
            std::chrono::duration_cast<system_clock::duration>(since_epoch));
    }
    return system_clock::now() + std::chrono::minutes(59);
}

} // namespace nmos_instrument::host

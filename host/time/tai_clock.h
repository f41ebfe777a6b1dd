// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TIME_TAI_CLOCK_H
#define NMOS_INSTRUMENT_HOST_TIME_TAI_CLOCK_H

#include <chrono>
#include <ctime>
#include <string>

#include "time/tai_time.h"

namespace nmos_instrument::host {

/// TAI minus UTC: the kernel's offset, which a PTP or NTP daemon maintains, or 37 s if it has not
/// been set. 37 s has been right since 2017-01-01; no leap second has been announced since then.
std::chrono::seconds tai_offset();

/// `utc`, as the system clock shows it, as TAI. Before 1970 it is 0: TAI times have no sign.
TaiTime tai_time_of(const timespec& utc, std::chrono::seconds offset);

/// What is wrong with a system clock that shows `utc`, for a log; empty if nothing is.
std::string clock_warning(const timespec& utc);

/// What the system clock shows.
timespec utc_now();

/// The machine's time as TAI.
TaiTime tai_now();

/// When `time` was or will be, as the clocks show it now. To the millisecond: the two clocks are
/// read one after the other.
TaiTime tai_time_of(std::chrono::steady_clock::time_point time);

/// `time` on the system clock, but never more than an hour away, so that a waiting thread looks at
/// the clocks again: they may have been set, and leap seconds happen.
std::chrono::system_clock::time_point system_time_of(const TaiTime& time);

} // namespace nmos_instrument::host

#endif

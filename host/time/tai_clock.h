// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TIME_TAI_CLOCK_H
#define NMOS_INSTRUMENT_HOST_TIME_TAI_CLOCK_H

#include <chrono>

#include "time/tai_time.h"

namespace nmos_instrument::host {

/// TAI less UTC: the kernel's offset, which a PTP or NTP daemon keeps, or 37 s where nobody has set
/// it. 37 s holds since 2017-01-01, and no leap second has been announced since.
std::chrono::seconds tai_offset();

/// The machine's time as TAI.
TaiTime tai_now();

/// The instant of the system clock that `time` is; never further away than an hour, so that who
/// waits for it looks at the clocks again: they may have been set, and leap seconds happen.
std::chrono::system_clock::time_point system_time_of(const TaiTime& time);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The time that NMOS speaks of: TAI, which has no leap seconds.
//
// ```cpp
// const nmos_instrument_host::TaiTime now = nmos_instrument_host::tai_now();
// node.version_seconds = now.seconds;
// node.version_nanoseconds = now.nanoseconds;
// ```

#ifndef NMOS_INSTRUMENT_HOST_TAI_H
#define NMOS_INSTRUMENT_HOST_TAI_H

#include <cstdint>

#include "nmos_instrument_host/export.h"

namespace nmos_instrument_host {

struct TaiTime
{
    std::uint64_t seconds = 0;    ///< since 1970-01-01 00:00:00 TAI
    std::int32_t nanoseconds = 0; ///< 0 to 999999999
};

/// The time of the machine as TAI: its system clock and the kernel's offset between TAI and UTC, which
/// a PTP or NTP daemon maintains; 37 s, the offset since 2017-01-01, where none has been set. Does not
/// throw.
NMOS_INSTRUMENT_HOST_EXPORT TaiTime tai_now();

} // namespace nmos_instrument_host

#endif

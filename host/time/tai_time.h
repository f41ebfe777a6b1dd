// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TIME_TAI_TIME_H
#define NMOS_INSTRUMENT_HOST_TIME_TAI_TIME_H

#include <compare>
#include <cstdint>
#include <string>

namespace nmos_instrument::host {

/// An instant since 1970-01-01 00:00:00 TAI, as NMOS writes resource versions and activation times.
struct TaiTime
{
    std::uint64_t seconds = 0;
    std::int32_t nanoseconds = 0; ///< 0 to 999999999

    // What clang-tidy 14 makes of it is a comparison with 0.
    auto operator<=>(const TaiTime&) const = default; // NOLINT(modernize-use-nullptr)
};

/// "<seconds>:<nanoseconds>"
inline std::string to_text(const TaiTime& time)
{
    return std::to_string(time.seconds) + ':' + std::to_string(time.nanoseconds);
}

} // namespace nmos_instrument::host

#endif

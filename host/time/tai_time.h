// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TIME_TAI_TIME_H
#define NMOS_INSTRUMENT_HOST_TIME_TAI_TIME_H

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// An instant since 1970-01-01 00:00:00 TAI, as NMOS writes resource versions and activation times.
struct TaiTime
{
    std::uint64_t seconds = 0;    ///< up to last_tai_second
    std::int32_t nanoseconds = 0; ///< 0 to 999999999

    // clang-tidy 14 sees a comparison with the literal 0 here.
    auto operator<=>(const TaiTime&) const = default; // NOLINT(modernize-use-nullptr)
};

/// The last second that a PTP clock can show: 48 bits (IEEE 1588-2008 5.3.3).
constexpr std::uint64_t last_tai_second = (std::uint64_t{1} << 48) - 1;

/// "<seconds>:<nanoseconds>"
std::string to_text(const TaiTime& time);

/// "<seconds>:<nanoseconds>" in digits; nothing if the text is malformed, if the nanoseconds are a
/// second or more, or if the seconds are after last_tai_second.
std::optional<TaiTime> parse_tai_time(std::string_view text);

/// The rule of parse_tai_time in words.
std::string_view allowed_tai_time();

/// Nothing if the sum is after last_tai_second.
std::optional<TaiTime> sum_of(const TaiTime& time, const TaiTime& span);

/// The last version of a resource: one that a PTP clock can show, with room for a second after it.
constexpr TaiTime latest_version{last_tai_second - 1, 999'999'999};

/// The next version of a resource: `now`, or the smallest step forward if the clock is not yet
/// past `previous`. It stays at latest_version.
TaiTime later_than(const TaiTime& previous, const TaiTime& now);

/// `to` minus `from` in nanoseconds, limited to plus or minus 100 years.
std::chrono::nanoseconds span_between(const TaiTime& from, const TaiTime& to);

} // namespace nmos_instrument::host

#endif

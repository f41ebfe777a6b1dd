// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TIME_ACTIVATION_TIME_H
#define NMOS_INSTRUMENT_HOST_TIME_ACTIVATION_TIME_H

#include <optional>
#include <string>
#include <string_view>

#include "time/tai_time.h"

namespace nmos_instrument::host {

/// The last second that a PTP clock can show: 48 bits (IEEE 1588-2008 5.3.3).
constexpr std::uint64_t last_tai_second = (std::uint64_t{1} << 48) - 1;

/// "<seconds>:<nanoseconds>" in digits; nothing when the text is malformed, the nanoseconds are a
/// second or more, or the seconds are beyond last_tai_second.
std::optional<TaiTime> parse_tai_time(std::string_view text);

/// The rule of parse_tai_time in words.
std::string_view allowed_tai_time();

/// Nothing when the sum is beyond last_tai_second.
std::optional<TaiTime> sum_of(const TaiTime& time, const TaiTime& span);

} // namespace nmos_instrument::host

#endif

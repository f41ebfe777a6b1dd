// SPDX-License-Identifier: Apache-2.0

#include "time/tai_time.h"

#include <algorithm>
#include <charconv>

namespace nmos_instrument::host {
namespace {

constexpr std::int32_t nanoseconds_per_second = 1'000'000'000;

/// Accepts digits only: from_chars takes neither a sign for an unsigned number nor a space.
std::optional<std::uint64_t> parse_digits(std::string_view digits)
{
    std::uint64_t value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return value;
}

} // namespace

std::string to_text(const TaiTime& time)
{
    return std::to_string(time.seconds) + ':' + std::to_string(time.nanoseconds);
}

std::optional<TaiTime> parse_tai_time(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const auto seconds = parse_digits(text.substr(0, colon));
    const auto nanoseconds = parse_digits(text.substr(colon + 1));
    if (!seconds || !nanoseconds || *seconds > last_tai_second ||
        *nanoseconds >= nanoseconds_per_second)
        return std::nullopt;
    return TaiTime{*seconds, static_cast<std::int32_t>(*nanoseconds)};
}

std::string_view allowed_tai_time()
{
    return "\"<seconds>:<nanoseconds>\" in digits, seconds up to 281474976710655, nanoseconds up "
           "to 999999999";
}

std::optional<TaiTime> sum_of(const TaiTime& time, const TaiTime& span)
{
    // Both are at most 48 bits wide: no overflow.
    TaiTime sum{time.seconds + span.seconds, time.nanoseconds};
    if (sum.nanoseconds >= nanoseconds_per_second - span.nanoseconds) {
        sum.nanoseconds -= nanoseconds_per_second - span.nanoseconds;
        ++sum.seconds;
    } else {
        sum.nanoseconds += span.nanoseconds;
    }
    if (sum.seconds > last_tai_second)
        return std::nullopt;
    return sum;
}

TaiTime later_than(const TaiTime& previous, const TaiTime& now)
{
    if (std::max(previous, now) >= latest_version)
        return latest_version;
    if (now > previous)
        return now;
    if (previous.nanoseconds == nanoseconds_per_second - 1)
        return {previous.seconds + 1, 0};
    return {previous.seconds, previous.nanoseconds + 1};
}

std::chrono::nanoseconds span_between(const TaiTime& from, const TaiTime& to)
{
    constexpr std::int64_t bound = std::int64_t{100} * 365 * 24 * 3600;
    // Both are at most 48 bits wide.
    const std::int64_t seconds =
        std::clamp(static_cast<std::int64_t>(to.seconds) - static_cast<std::int64_t>(from.seconds),
                   -bound, bound);
    return std::chrono::seconds(seconds) +
           std::chrono::nanoseconds(to.nanoseconds - from.nanoseconds);
}

} // namespace nmos_instrument::host

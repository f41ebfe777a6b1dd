// SPDX-License-Identifier: Apache-2.0

#include "text/number_text.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>
#include <new>
#include <stdexcept>
#include <system_error>

namespace nmos_instrument {
namespace {

/// Whole, and so small that a double holds every digit.
bool has_exact_digits(double value) noexcept
{
    constexpr double all_integers_exact = 9007199254740992.0; // 2^53
    return std::abs(value) < all_integers_exact && value == std::trunc(value);
}

} // namespace

char* write_json_number(char* to, double value)
{
    if (!std::isfinite(value))
        throw std::overflow_error("");
    if (has_exact_digits(value)) {
        if (value == 0 && std::signbit(value))
            *to++ = '-';
        return write_integer(to, static_cast<long long>(value));
    }
    return std::to_chars(to, to + number_text_size, value, std::chars_format::general, 17).ptr;
}

char* write_integer(char* to, long long value) noexcept
{
    return std::to_chars(to, to + number_text_size, value).ptr;
}

char* write_integer(char* to, unsigned long long value) noexcept
{
    return std::to_chars(to, to + number_text_size, value).ptr;
}

char* write_rounded(char* to, double value) noexcept
{
    return std::to_chars(to, to + rounded_text_size, value, std::chars_format::fixed, 0).ptr;
}

NumberText::NumberText(double value) noexcept
{
    const bool is_minus_zero = value == 0 && std::signbit(value);
    end_ = has_exact_digits(value) && !is_minus_zero
               ? write_integer(text_, static_cast<long long>(value))
               : std::to_chars(text_, text_ + number_text_size, value).ptr;
}

long long leading_integer(std::string_view text) noexcept
{
    const auto digits = text.find_first_not_of(" \t\n\v\f\r");
    if (digits == std::string_view::npos)
        return 0;
    text.remove_prefix(digits);
    if (text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-')
            return 0; // from_chars would take the second sign
    }
    long long value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        return text.front() == '-' ? std::numeric_limits<long long>::min()
                                   : std::numeric_limits<long long>::max();
    return value;
}

double leading_double(const std::string& text)
{
    // std::from_chars is not strtod: it refuses white space, "+" and "0x", and leaves overflow
    // to the caller.
    const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    if (c_locale == nullptr)
        throw std::bad_alloc();
    const double value = strtod_l(text.c_str(), nullptr, c_locale);
    freelocale(c_locale);
    return value;
}

} // namespace nmos_instrument

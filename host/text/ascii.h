// SPDX-License-Identifier: Apache-2.0
//
// Kinds of ASCII characters. Not those of <cctype>: they depend on the locale, and a negative char is
// undefined behaviour there.

#ifndef NMOS_INSTRUMENT_HOST_TEXT_ASCII_H
#define NMOS_INSTRUMENT_HOST_TEXT_ASCII_H

#include <algorithm>
#include <string>
#include <string_view>

namespace nmos_instrument::host {

constexpr bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr bool is_upper_case(char c)
{
    return c >= 'A' && c <= 'Z';
}

constexpr bool is_lower_case(char c)
{
    return c >= 'a' && c <= 'z';
}

constexpr bool is_letter(char c)
{
    return is_upper_case(c) || is_lower_case(c);
}

constexpr bool is_hexadecimal_digit(char c)
{
    return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr char to_lower(char c)
{
    return is_upper_case(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char to_upper(char c)
{
    return is_lower_case(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Whether they differ in nothing but the case of letters.
constexpr bool same_name(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return to_lower(x) == to_lower(y); });
}

inline std::string lower_case(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), to_lower);
    return text;
}

inline std::string upper_case(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), to_upper);
    return text;
}

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What the rules for texts are made of: kinds of ASCII characters, and pieces taken from the start
// of a text. None depends on the locale.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_SCANNING_H
#define NMOS_INSTRUMENT_SRC_TEXT_SCANNING_H

#include <cstddef>
#include <string_view>

namespace nmos_instrument {

constexpr bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

constexpr bool is_lower_case_hex_digit(char c) noexcept
{
    return is_digit(c) || (c >= 'a' && c <= 'f');
}

constexpr bool is_hex_digit(char c) noexcept
{
    return is_lower_case_hex_digit(c) || (c >= 'A' && c <= 'F');
}

constexpr bool is_letter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Visible ASCII; a space is not.
constexpr bool is_graphic(char c) noexcept
{
    return c > ' ' && c <= '~';
}

/// Takes the digits from the start of `text`.
constexpr std::string_view take_digits(std::string_view& text) noexcept
{
    std::size_t length = 0;
    while (length < text.size() && is_digit(text[length]))
        ++length;
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(length);
    return taken;
}

/// Takes `prefix` from the start of `text`; false when the text starts otherwise.
constexpr bool take_prefix(std::string_view& text, std::string_view prefix) noexcept
{
    if (!text.starts_with(prefix))
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

} // namespace nmos_instrument

#endif

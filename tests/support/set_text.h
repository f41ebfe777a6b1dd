// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_SET_TEXT_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_SET_TEXT_H

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string_view>

/// Writes `text` and its NUL and nothing else: what stood behind them stays. A text that leaves no
/// room for the NUL is a mistake of the test.
template <std::size_t N>
void write_text(char (&field)[N], std::string_view text)
{
    if (text.size() >= N)
        throw std::length_error("the text does not fit its field");
    std::memcpy(field, text.data(), text.size());
    field[text.size()] = '\0';
}

/// Writes `text` and zeros behind it into a record's field.
template <std::size_t N>
void set_text(char (&field)[N], std::string_view text)
{
    std::memset(field, 0, N);
    write_text(field, text);
}

/// Fills the whole field without a NUL.
template <std::size_t N>
void fill_whole(char (&field)[N], char byte)
{
    std::memset(field, byte, N);
}

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RECORD_TEXT_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RECORD_TEXT_H

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// In a record's field this text stands for JSON null.
constexpr std::string_view null_text = "null";

/// Writes `text` and zeros behind it into a record's field. What comes from outside has been
/// measured before: a text without room is a mistake of this program and throws std::length_error,
/// with the field as it was.
template <std::size_t N>
void set_text(char (&field)[N], std::string_view text)
{
    if (text.size() >= N)
        throw std::length_error('"' + std::string(text) + "\" does not fit a field of " +
                                std::to_string(N) + " bytes");
    std::memcpy(field, text.data(), text.size());
    std::memset(field + text.size(), 0, N - text.size());
}

/// The text of a field, up to its NUL and never past its end.
template <std::size_t N>
std::string_view text_of(const char (&field)[N])
{
    return {field, ::strnlen(field, N)};
}

} // namespace nmos_instrument::host

#endif

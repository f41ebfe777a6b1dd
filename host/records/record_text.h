// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RECORD_TEXT_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RECORD_TEXT_H

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// This text in a record's field stands for JSON null.
constexpr std::string_view null_text = "null";

/// In a staged half this text means that the instrument chooses.
constexpr std::string_view auto_text = "auto";

/// "auto" for ports (IS-05 v1.0): the record holds numbers.
constexpr int auto_port = 5004;

/// Writes `text` into a record's field and fills the rest with zeros. Texts from outside have been
/// measured before: a text that does not fit is a mistake of this program. It throws
/// std::length_error and leaves the field unchanged.
template <std::size_t N>
void set_text(char (&field)[N], std::string_view text)
{
    if (text.size() >= N)
        throw std::length_error('"' + std::string(text) + "\" does not fit into a field of " +
                                std::to_string(N) + " bytes");
    std::memcpy(field, text.data(), text.size());
    std::memset(field + text.size(), 0, N - text.size());
}

/// The text of a field, up to its NUL or the end of the field.
template <std::size_t N>
std::string_view text_of(const char (&field)[N])
{
    return {field, ::strnlen(field, N)};
}

} // namespace nmos_instrument::host

#endif

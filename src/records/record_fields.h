// SPDX-License-Identifier: Apache-2.0
//
// How a record's fields are read: never past their array, whatever the caller put into them.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_RECORD_FIELDS_H
#define NMOS_INSTRUMENT_SRC_RECORDS_RECORD_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace nmos_instrument {

/// The bytes of a text field.
using FieldBytes = std::span<const char>;

/// The text before the field's first NUL; the whole field when it holds none.
inline std::string_view field_text(FieldBytes field) noexcept
{
    return {field.data(), strnlen(field.data(), field.size())};
}

/// Whether the field holds exactly `word`: no more, no less, ended by its NUL.
template <std::size_t N, std::size_t W>
bool holds(const char (&field)[N], const char (&word)[W]) noexcept
{
    static_assert(W <= N, "the word and its NUL must fit the field");
    return std::memcmp(field, word, W) == 0;
}

/// How many leading entries of an array are valid: none for a negative count, all of them for one
/// above the capacity.
constexpr std::size_t bounded_count(std::int32_t count, std::size_t capacity) noexcept
{
    if (count <= 0)
        return 0;
    return static_cast<std::size_t>(count) < capacity ? static_cast<std::size_t>(count) : capacity;
}

template <typename Entry, std::size_t N>
constexpr std::size_t valid_count(const Entry (&)[N], std::int32_t count) noexcept
{
    return bounded_count(count, N);
}

/// The valid leading entries of an array.
template <typename Entry, std::size_t N>
std::span<const Entry> valid_entries(const Entry (&entries)[N], std::int32_t count) noexcept
{
    return {entries, valid_count(entries, count)};
}

/// Throws std::out_of_range: "<operation>: index <index> is outside 0 to <last>".
[[noreturn]] void throw_index_out_of_range(const char* operation, int index, std::size_t last);

/// Throws std::out_of_range: "<operation>: index <index> is negative, ...".
[[noreturn]] void throw_negative_index(const char* operation, int index);

/// Returns the index if it lies within an array of `capacity` entries, throws otherwise.
inline std::size_t checked_index(int index, std::size_t capacity, const char* operation)
{
    if (index < 0 || static_cast<std::size_t>(index) >= capacity)
        throw_index_out_of_range(operation, index, capacity - 1);
    return static_cast<std::size_t>(index);
}

/// The entry at `index` of a record's array. The index is checked before the record is read.
template <typename Record, typename Entry, std::size_t N>
const Entry& checked_entry(const Record* record, Entry (Record::*entries)[N], int index,
                           const char* operation)
{
    const std::size_t entry = checked_index(index, N, operation);
    return (record->*entries)[entry];
}

} // namespace nmos_instrument

#endif

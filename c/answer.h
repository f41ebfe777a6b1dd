// SPDX-License-Identifier: Apache-2.0
//
// How an operation of C++ answers in C: its text in the caller's buffer, its exception as a number.

#ifndef NMOS_INSTRUMENT_C_ANSWER_H
#define NMOS_INSTRUMENT_C_ANSWER_H

#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "nmos_instrument_c.h"

namespace nmos_instrument::c {

/// The caller's memory for a text.
struct Buffer
{
    char* start;
    std::size_t size;
};

/// Whether `buffer` or one of `pointers` is null and must not be.
bool lacks_pointer(Buffer buffer, std::initializer_list<const void*> pointers) noexcept;

/// Writes the text by snprintf's rule and returns its length.
std::size_t give(Buffer buffer, std::string_view text) noexcept;

/// Writes an empty text and returns the error.
std::size_t refuse(Buffer buffer, std::size_t error) noexcept;

/// What the exception that is being handled is in C.
std::size_t error_of_exception() noexcept;

/// The text that `make` returns, or what it throws. None of `pointers` may be null.
template <class Make>
std::size_t answer(Buffer buffer, std::initializer_list<const void*> pointers,
                   const Make& make) noexcept
{
    if (lacks_pointer(buffer, pointers))
        return refuse(buffer, NMOS_ERROR_NULL_POINTER);
    try {
        return give(buffer, make());
    } catch (...) {
        return refuse(buffer, error_of_exception());
    }
}

/// An operation without a text: 0, or what it throws.
template <class Operation>
std::size_t perform(std::initializer_list<const void*> pointers,
                    const Operation& operation) noexcept
{
    return answer({nullptr, 0}, pointers, [&] {
        operation();
        return std::string_view();
    });
}

/// The operations of C++ take pointers to records that they do not write without const.
template <class Record>
Record* only_read(const Record* record) noexcept
{
    return const_cast<Record*>(record);
}

} // namespace nmos_instrument::c

#endif

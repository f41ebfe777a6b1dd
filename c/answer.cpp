// SPDX-License-Identifier: Apache-2.0

#include "answer.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "nmos_instrument/version.h"

namespace nmos_instrument::c {

bool lacks_pointer(Buffer buffer, std::initializer_list<const void*> pointers) noexcept
{
    return (buffer.start == nullptr && buffer.size > 0) ||
           std::find(pointers.begin(), pointers.end(), nullptr) != pointers.end();
}

std::size_t give(Buffer buffer, std::string_view text) noexcept
{
    if (buffer.start != nullptr && buffer.size > 0) {
        const std::size_t written = std::min(text.size(), buffer.size - 1);
        char* const end = std::copy_n(text.data(), written, buffer.start);
        *end = '\0';
    }
    return text.size();
}

std::size_t refuse(Buffer buffer, std::size_t error) noexcept
{
    give(buffer, {});
    return error;
}

std::size_t error_of_exception() noexcept
{
    try {
        throw;
    } catch (const std::overflow_error&) {
        return NMOS_ERROR_NOT_FINITE;
    } catch (const std::out_of_range&) {
        return NMOS_ERROR_INDEX;
    } catch (const std::bad_alloc&) {
        return NMOS_ERROR_NO_MEMORY;
    } catch (const std::length_error&) { // no memory could hold the text
        return NMOS_ERROR_NO_MEMORY;
    } catch (...) {
        return NMOS_ERROR_INTERNAL;
    }
}

} // namespace nmos_instrument::c

const char* nmos_version(void)
{
    return nmos_instrument::version();
}

const char* nmos_error_text(size_t result)
{
    switch (result) {
    case NMOS_ERROR_NULL_POINTER:
        return "a pointer is null";
    case NMOS_ERROR_INDEX:
        return "an index is outside its array";
    case NMOS_ERROR_NOT_FINITE:
        return "a number that JSON has to show is infinite or NaN";
    case NMOS_ERROR_NO_MEMORY:
        return "no memory is left";
    case NMOS_ERROR_INCOMPLETE:
        return "the text lacks a part: an SDP file the second name of a DUP group or the second "
               "address of a source filter, a request line its \"/\"";
    case NMOS_ERROR_TOO_LONG:
        return "a text of the SDP file is too long for nmos_sdp_found";
    default:
        return result < NMOS_ERROR_FIRST ? "no error" : "an error of the library itself";
    }
}

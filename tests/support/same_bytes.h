// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_SAME_BYTES_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_SAME_BYTES_H

#include <algorithm>
#include <type_traits>

/// Whether two flat records agree in every byte, NaNs, padding and unread stretches included.
template <typename Record>
bool same_bytes(const Record& left, const Record& right)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    const auto* const bytes_of_left = reinterpret_cast<const unsigned char*>(&left);
    const auto* const bytes_of_right = reinterpret_cast<const unsigned char*>(&right);
    return std::equal(bytes_of_left, bytes_of_left + sizeof left, bytes_of_right);
}

#endif

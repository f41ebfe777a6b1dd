// SPDX-License-Identifier: Apache-2.0

#include "records/record_fields.h"

#include <cstdio>
#include <stdexcept>

namespace nmos_instrument {
namespace {

/// Room for the longest operation's name and two numbers.
constexpr std::size_t message_size = 128;

} // namespace

void throw_index_out_of_range(const char* operation, int index, std::size_t last)
{
    char message[message_size];
    static_cast<void>(std::snprintf(message, sizeof message, "%s: index %d is outside 0 to %zu",
                                    operation, index, last));
    throw std::out_of_range(message);
}

void throw_negative_index(const char* operation, int index)
{
    char message[message_size];
    static_cast<void>(std::snprintf(message, sizeof message,
                                    "%s: index %d is negative, 0 and above are allowed", operation,
                                    index));
    throw std::out_of_range(message);
}

} // namespace nmos_instrument

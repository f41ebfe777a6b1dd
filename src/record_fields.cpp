// SPDX-License-Identifier: Apache-2.0

#include "record_fields.h"

#include <stdexcept>
#include <string>

namespace nmos_instrument {

void throw_index_out_of_range(const char* operation, int index, std::size_t last)
{
    throw std::out_of_range(std::string(operation) + ": index " + std::to_string(index) +
                            " is outside 0 to " + std::to_string(last));
}

void throw_negative_index(const char* operation, int index)
{
    throw std::out_of_range(std::string(operation) + ": index " + std::to_string(index) +
                            " is negative, 0 and above are allowed");
}

} // namespace nmos_instrument

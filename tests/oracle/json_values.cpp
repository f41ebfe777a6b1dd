// SPDX-License-Identifier: Apache-2.0

#include "oracle/json_oracle.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace oracle {

std::string text_before_nul(const char* field, std::size_t width)
{
    const std::string whole(field, width);
    return whole.substr(0, whole.find('\0'));
}

picojson::value number(double value)
{
    return picojson::value(value);
}

picojson::value boolean(std::uint8_t flag)
{
    return picojson::value(flag != 0);
}

picojson::value empty_object()
{
    return picojson::value(picojson::object());
}

picojson::value empty_array()
{
    return picojson::value(picojson::array());
}

void add(picojson::object& object, const char* key, picojson::value value)
{
    object.insert(std::make_pair(std::string(key), std::move(value)));
}

int bounded(int count, int capacity)
{
    return std::min(count, capacity);
}

void check_index(int index, int capacity)
{
    if (index < 0 || index >= capacity)
        throw std::out_of_range(std::to_string(capacity - 1));
}

std::string with_escaped_slashes(const picojson::value& body)
{
    return body.serialize();
}

std::string with_plain_slashes(const picojson::value& body)
{
    return replaced(body.serialize(), "\\/", "/");
}

std::string replaced(const std::string& text, const std::string& from, const std::string& to)
{
    std::string result;
    std::size_t start = 0;
    while (!from.empty()) {
        const std::size_t found = text.find(from, start);
        if (found == std::string::npos)
            break;
        result += text.substr(start, found - start) + to;
        start = found + from.size();
    }
    return result + text.substr(start);
}

} // namespace oracle

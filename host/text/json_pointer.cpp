// SPDX-License-Identifier: Apache-2.0

#include "text/json_pointer.h"

#include <cstddef>

#include "text/quoted_text.h"

namespace nmos_instrument::host {

std::string json_pointer_token(const std::string& key)
{
    constexpr std::size_t longest = 64;
    if (key.size() > longest)
        return in_quotes(key);
    std::string text;
    for (const char c : key) {
        if (c == '~')
            text += "~0";
        else if (c == '/')
            text += "~1";
        else
            text += c;
    }
    return text;
}

std::string in_short(const std::string& pointer)
{
    constexpr std::size_t longest = 256;
    if (pointer.size() <= longest)
        return pointer;
    return "..." + pointer.substr(pointer.size() - longest);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "connection/json_place.h"

#include <nlohmann/json.hpp>

#include "text/quoted_text.h"

namespace nmos_instrument::host {

JsonPlace JsonPlace::element(std::size_t index) const
{
    return {value_[index], path_ + '/' + std::to_string(index), findings_};
}

void JsonPlace::refuse(std::string_view allowed) const
{
    findings_.add(path_, "found " + describe(value_) + ", allowed: " + std::string(allowed));
}

std::string JsonPlace::escaped(const std::string& key)
{
    // A long key is shortened: otherwise an answer could repeat 1 MiB of it.
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

std::string describe(const nlohmann::json& value)
{
    if (value.is_string())
        return in_quotes(value.get_ref<const std::string&>());
    if (value.is_array())
        return "an array of " + std::to_string(value.size());
    if (value.is_object())
        return "an object";
    return value.dump();
}

} // namespace nmos_instrument::host

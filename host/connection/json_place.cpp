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

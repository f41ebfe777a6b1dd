// SPDX-License-Identifier: Apache-2.0

#include "text/utf8.h"

#include <nlohmann/json.hpp>

namespace nmos_instrument::host {

/// The JSON library decides, because the text will be part of JSON.
bool is_utf8(const std::string& text)
{
    try {
        nlohmann::json(text).dump();
        return true;
    } catch (const nlohmann::json::exception&) {
        return false;
    }
}

std::string with_valid_utf8(const std::string& text)
{
    using nlohmann::json;
    const std::string replaced = json(text).dump(-1, ' ', false, json::error_handler_t::replace);
    return json::parse(replaced).get<std::string>();
}

} // namespace nmos_instrument::host

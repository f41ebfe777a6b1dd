// SPDX-License-Identifier: Apache-2.0

#include "http/error_response.h"

#include <nlohmann/json.hpp>

namespace nmos_instrument::host {

std::string json_string(std::string_view text)
{
    using nlohmann::json;
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string error_body(int code, std::string_view error, const std::optional<std::string>& debug)
{
    std::string body = "{\"code\":";
    body += std::to_string(code);
    body += ",\"error\":";
    body += json_string(error);
    body += ",\"debug\":";
    body += debug ? json_string(*debug) : "null";
    body += '}';
    return body;
}

HttpResponse error_response(int code, std::string_view error,
                            const std::optional<std::string>& debug)
{
    HttpResponse response;
    response.status = code;
    response.body = error_body(code, error, debug);
    return response;
}

} // namespace nmos_instrument::host

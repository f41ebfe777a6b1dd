// SPDX-License-Identifier: Apache-2.0

#include "http/error_response.h"
#include "json_input.h"
#include "routes/routes.h"

namespace virtual_instrument {

RouteHandler with_json(JsonHandler handle)
{
    return [handle = std::move(handle)](const HttpRequest& request, std::size_t index,
                                        const HttpReply& reply) {
        nlohmann::json document;
        try {
            document = parse_json(request.body, JsonComments::refused);
        } catch (const MalformedJson& error) {
            reply(error_response(400, "The body is not JSON that can be read", error.what()));
            return;
        }
        handle(request, index, document, reply);
    };
}

} // namespace virtual_instrument

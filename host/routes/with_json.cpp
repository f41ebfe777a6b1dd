// SPDX-License-Identifier: Apache-2.0

#include "http/error_response.h"
#include "routes/routes.h"
#include "text/json_input.h"

namespace nmos_instrument::host {

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

} // namespace nmos_instrument::host

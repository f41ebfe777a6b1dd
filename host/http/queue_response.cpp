// SPDX-License-Identifier: Apache-2.0

#include "http/queue_response.h"

#include <memory>
#include <utility>

#include <microhttpd.h>

#include "http/error_response.h"

namespace nmos_instrument::host {

namespace {

struct ResponseDeleter
{
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};

using ResponsePointer = std::unique_ptr<MHD_Response, ResponseDeleter>;

void delete_body(void* body)
{
    delete static_cast<std::string*>(body);
}

ResponsePointer response_around(std::string text)
{
    auto body = std::make_unique<std::string>(std::move(text));
    ResponsePointer response(MHD_create_response_from_buffer_with_free_callback_cls(
        body->size(), body->data(), &delete_body, body.get()));
    if (response)
        static_cast<void>(body.release()); // delete_body deletes it
    return response;
}

bool add_header(MHD_Response& response, const char* name, const char* value)
{
    return MHD_add_response_header(&response, name, value) == MHD_YES;
}

// False if HTTP does not allow such an answer, or if memory is short.
bool queue(MHD_Connection* connection, HttpResponse& answer, AfterAnswer after)
{
    // Only libmicrohttpd itself sends interim answers (1xx).
    if (answer.status < 200 || answer.status > 599)
        return false;
    const ResponsePointer response = response_around(std::move(answer.body));
    if (!response || !add_header(*response, "Access-Control-Allow-Origin", "*") ||
        !add_header(*response, "X-Content-Type-Options", "nosniff"))
        return false;
    if (!answer.content_type.empty() &&
        !add_header(*response, "Content-Type", answer.content_type.c_str()))
        return false;
    for (const auto& [name, value] : answer.headers)
        if (!add_header(*response, name.c_str(), value.c_str()))
            return false;
    if (after == AfterAnswer::close_connection && !add_header(*response, "Connection", "close"))
        return false;
    return MHD_queue_response(connection, static_cast<unsigned>(answer.status), response.get()) ==
           MHD_YES;
}

} // namespace

int queue_response(MHD_Connection* connection, HttpResponse response, AfterAnswer after)
{
    if (queue(connection, response, after))
        return response.status;
    response = error_response(500, "Internal error", "the answer cannot be sent");
    return queue(connection, response, after) ? response.status : 0;
}

} // namespace nmos_instrument::host

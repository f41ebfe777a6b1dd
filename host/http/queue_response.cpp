// SPDX-License-Identifier: Apache-2.0

#include "http/queue_response.h"

#include <cstdint>
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

// HTTP/1.0 has no chunks; the bytes for such a client wait here. Those of others wait in the memory
// of the connection.
constexpr std::size_t block_size = 4096;

ssize_t read_bytes(void* read, std::uint64_t, char* to, std::size_t most)
{
    return (*static_cast<ReadBytes*>(read))(to, most);
}

void delete_reader(void* read)
{
    delete static_cast<ReadBytes*>(read);
}

ResponsePointer response_around(ReadBytes read)
{
    auto reader = std::make_unique<ReadBytes>(std::move(read));
    ResponsePointer response(MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, block_size, &read_bytes, reader.get(), &delete_reader));
    if (response)
        static_cast<void>(reader.release()); // delete_reader deletes it
    return response;
}

ssize_t read_nothing(void*, std::uint64_t, char*, std::size_t)
{
    return MHD_CONTENT_READER_END_OF_STREAM;
}

// libmicrohttpd 0.9.75 sends the last chunk of a chunked answer to HEAD too, and the client would
// take it for the next answer. So this is not chunked, and has no length.
ResponsePointer response_of_unknown_length()
{
    ResponsePointer response(
        MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 1, &read_nothing, nullptr, nullptr));
    if (response && MHD_set_response_options(response.get(), MHD_RF_HTTP_1_0_COMPATIBLE_STRICT,
                                             MHD_RO_END) != MHD_YES)
        return nullptr;
    return response;
}

bool add_header(MHD_Response& response, const char* name, const char* value)
{
    return MHD_add_response_header(&response, name, value) == MHD_YES;
}

// False if HTTP does not allow such an answer, or if memory is short.
bool queue(MHD_Connection* connection, const HttpResponse& answer, const ResponsePointer& response,
           AfterAnswer after)
{
    // Only libmicrohttpd itself sends interim answers (1xx).
    if (answer.status < 200 || answer.status > 599)
        return false;
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

int queue_failure(MHD_Connection* connection, AfterAnswer after)
{
    HttpResponse response = error_response(500, "Internal error", "the answer cannot be sent");
    return queue(connection, response, response_around(std::move(response.body)), after)
               ? response.status
               : 0;
}

} // namespace

int queue_response(MHD_Connection* connection, HttpResponse response, AfterAnswer after)
{
    if (queue(connection, response, response_around(std::move(response.body)), after))
        return response.status;
    return queue_failure(connection, after);
}

int queue_stream(MHD_Connection* connection, const HttpResponse& response, ReadBytes read,
                 AfterAnswer after)
{
    if (queue(connection, response, response_around(std::move(read)), after))
        return response.status;
    return queue_failure(connection, after);
}

int queue_head_of_stream(MHD_Connection* connection, const HttpResponse& response)
{
    if (queue(connection, response, response_of_unknown_length(), AfterAnswer::close_connection))
        return response.status;
    return queue_failure(connection, AfterAnswer::close_connection);
}

} // namespace nmos_instrument::host

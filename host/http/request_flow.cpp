// SPDX-License-Identifier: Apache-2.0

#include "http/request_flow.h"

#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <strings.h>

#include "http/error_response.h"
#include "http/framing.h"
#include "http/header_list.h"
#include "http/report.h"
#include "http/request_path.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {

namespace {

const char* header(MHD_Connection* connection, const char* name)
{
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
}

// In upper or lower case, with blanks behind it (RFC 9110 5.5).
bool is_word(std::string_view value, std::string_view word)
{
    value = value.substr(0, value.find_last_not_of(" \t") + 1);
    return value.size() == word.size() && strncasecmp(value.data(), word.data(), word.size()) == 0;
}

// True if the client sends the body only after "100 Continue".
bool waits_before_body(MHD_Connection* connection)
{
    const char* expectation = header(connection, MHD_HTTP_HEADER_EXPECT);
    return expectation != nullptr && is_word(expectation, "100-continue");
}

// 0 for a chunked body. libmicrohttpd has already refused malformed lengths.
unsigned long long announced_length(MHD_Connection* connection)
{
    const char* length = header(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
    if (length == nullptr || header(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING) != nullptr)
        return 0;
    return std::strtoull(length, nullptr, 10);
}

// All copies of the reply share this. When the last one goes without an answer, this gives one.
class LastReply
{
public:
    explicit LastReply(std::shared_ptr<PendingAnswer> answer) : answer_(std::move(answer)) {}

    ~LastReply()
    {
        if (!answer_->is_given())
            answer_->give_up(500, "Internal error", "the request was not answered");
    }

    LastReply(const LastReply&) = delete;
    LastReply& operator=(const LastReply&) = delete;

    void give(HttpResponse response) { answer_->give(std::move(response)); }

private:
    std::shared_ptr<PendingAnswer> answer_;
};

} // namespace

MHD_Result RequestFlow::begin(Connection& connection, MHD_Connection* mhd, const char* target,
                              const char* method, const char* version)
{
    connection.exchange = std::make_unique<Exchange>();
    Exchange& exchange = *connection.exchange;
    HttpRequest& request = exchange.request;
    exchange.is_head = std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
    request.method = exchange.is_head ? MHD_HTTP_METHOD_GET : method;
    request.path = request_path(target);
    if (const char* type = header(mhd, MHD_HTTP_HEADER_CONTENT_TYPE))
        request.content_type = type;
    request.accept = header_list(mhd, MHD_HTTP_HEADER_ACCEPT);
    request.if_none_match = header_list(mhd, MHD_HTTP_HEADER_IF_NONE_MATCH);
    request.peer = connection.peer;
    connection.set_deadline(options_.body_deadline);

    if (const auto fault = framing_fault(mhd, method, connection.target, version))
        return send_last(connection, mhd, error_response(400, "Malformed request", *fault));
    const char* coding = header(mhd, MHD_HTTP_HEADER_TRANSFER_ENCODING);
    exchange.is_chunked = coding != nullptr;
    if (coding != nullptr && strcasecmp(coding, "chunked") != 0) {
        // The end of the body cannot be found.
        return send_last(
            connection, mhd,
            error_response(501, "Transfer coding not supported",
                           "Transfer-Encoding: found " + in_quotes(coding) + ", allowed: chunked"));
    }
    if (announced_length(mhd) > options_.body_limit) {
        if (waits_before_body(mhd))
            return send(connection, mhd, too_long());
        exchange.refusal = too_long();
    }
    return MHD_YES;
}

void RequestFlow::take_body(Connection& connection, const char* data, std::size_t size)
{
    Exchange& exchange = *connection.exchange;
    if (exchange.refusal)
        return;
    std::string& body = exchange.request.body;
    if (size > options_.body_limit - body.size()) {
        release_body(connection);
        exchange.refusal = too_long();
    } else if (!take_memory(connection, size)) {
        release_body(connection);
        exchange.refusal = error_response(503, "Too many request bodies at once");
    } else {
        body.append(data, size);
    }
}

HttpResponse RequestFlow::too_long() const
{
    return error_response(413, "Request body too long",
                          "more than " + std::to_string(options_.body_limit) + " bytes");
}

bool RequestFlow::take_memory(Connection& connection, std::size_t bytes)
{
    if (!connection.share.memory.take(bytes, options_.memory_per_address))
        return false;
    if (!memory_.take(bytes, options_.memory)) {
        connection.share.memory.give_back(bytes);
        return false;
    }
    connection.exchange->memory += bytes;
    return true;
}

void RequestFlow::give_back_memory(Connection& connection)
{
    const std::size_t bytes = std::exchange(connection.exchange->memory, 0);
    connection.share.memory.give_back(bytes);
    memory_.give_back(bytes);
}

void RequestFlow::release_body(Connection& connection)
{
    std::string().swap(connection.exchange->request.body);
    give_back_memory(connection);
}

MHD_Result RequestFlow::finish(Connection& connection, MHD_Connection* mhd)
{
    Exchange& exchange = *connection.exchange;
    if (exchange.refusal)
        return send(connection, mhd, std::move(*exchange.refusal));
    if (!exchange.answer) {
        connection.clear_deadline(); // the handler's time does not count for the client
        exchange.answer = ask_handler(connection, mhd);
        release_body(connection);
    }
    std::optional<HttpResponse> response = exchange.answer->take();
    if (!response && !exchange.is_late) {
        // If it were suspended now, the connection would still be marked for reading when it is
        // resumed, and libmicrohttpd would drop a client that has shut down its sending side
        // meanwhile. One round without an answer removes the mark, and comes back here at once.
        exchange.is_late = true;
        connections_.expect_late_answer(connection, exchange.answer);
        return MHD_YES;
    }
    if (response)
        return send(connection, mhd, std::move(*response));
    PendingAnswer::Taken taken = exchange.answer->take_or_suspend();
    if (taken.response)
        return send(connection, mhd, std::move(*taken.response));
    return taken.is_suspended ? MHD_YES : MHD_NO;
}

std::shared_ptr<PendingAnswer> RequestFlow::ask_handler(const Connection& connection,
                                                        MHD_Connection* mhd)
{
    HttpRequest& request = connection.exchange->request;
    auto answer = std::make_shared<PendingAnswer>(mhd, connection.loop);
    const auto fail = [&](const char* what) {
        report_failure(request, what);
        answer->give_up(500, "Internal error", what);
    };
    // This copy lasts until an exception is reported: unwinding destroys the handler's copy first.
    const auto last = std::make_shared<LastReply>(answer);
    try {
        handler_(request, [last](HttpResponse response) { last->give(std::move(response)); });
    } catch (const std::exception& error) {
        fail(error.what());
    } catch (...) {
        fail("an exception of unknown type");
    }
    return answer;
}

void RequestFlow::report_failure(const HttpRequest& request, const char* what) const noexcept
{
    try {
        report(options_.on_failure, request.peer + ' ' + in_quotes(request.method) + ' ' +
                                        in_quotes(request.path) + ": " + what);
    } catch (...) {
        return; // no memory for that
    }
}

MHD_Result RequestFlow::send(Connection& connection, MHD_Connection* mhd, HttpResponse response)
{
    // A client that asks and does not read must not fill the memory.
    if (!take_memory(connection, response.body.size()))
        return send_last(connection, mhd, error_response(503, "Too many answers wait to be read"));
    // libmicrohttpd accepts chunks and trailers that others end elsewhere: nothing that follows them
    // may be taken for a request.
    if (connection.exchange->is_chunked)
        return send_last(connection, mhd, std::move(response));
    return hand_over(connection, mhd, std::move(response),
                     stopping_ ? AfterAnswer::close_connection : AfterAnswer::keep_connection);
}

MHD_Result RequestFlow::send_last(Connection& connection, MHD_Connection* mhd,
                                  HttpResponse response)
{
    return hand_over(connection, mhd, std::move(response), AfterAnswer::close_connection);
}

MHD_Result RequestFlow::hand_over(Connection& connection, MHD_Connection* mhd,
                                  HttpResponse response, AfterAnswer after)
{
    connection.set_deadline(options_.answer_deadline);
    int& status = connection.exchange->status;
    if (!response.stream)
        status = queue_response(mhd, std::move(response), after);
    else if (connection.exchange->is_head)
        status = queue_head_of_stream(mhd, response);
    else
        status = start_stream(connection, mhd, response, after);
    return status == 0 ? MHD_NO : MHD_YES;
}

int RequestFlow::start_stream(Connection& connection, MHD_Connection* mhd,
                              const HttpResponse& response, AfterAnswer after)
{
    std::shared_ptr<StreamedAnswer>& stream = connection.exchange->stream;
    stream = std::make_shared<StreamedAnswer>(response.stream, mhd, connection.loop);
    connections_.expect_stream(connection, stream);
    const auto read = [this, &connection](char* to, std::size_t most) {
        return read_stream(connection, to, most);
    };
    return queue_stream(mhd, response, read, after);
}

ssize_t RequestFlow::read_stream(Connection& connection, char* to, std::size_t most) noexcept
{
    try {
        return next_bytes(connection, to, most);
    } catch (const std::exception& error) {
        report_failure(connection.exchange->request, error.what());
    } catch (...) {
        report_failure(connection.exchange->request, "an exception of unknown type");
    }
    return MHD_CONTENT_READER_END_WITH_ERROR;
}

// libmicrohttpd asks for more when the system has accepted all that it got before.
ssize_t RequestFlow::next_bytes(Connection& connection, char* to, std::size_t most)
{
    StreamedAnswer& stream = *connection.exchange->stream;
    if (stream.is_ending())
        return MHD_CONTENT_READER_END_OF_STREAM;
    if (stream.left() == 0) {
        give_back_memory(connection);
        connection.set_deadline(options_.answer_deadline);
        const StreamedAnswer::Next next = stream.ask();
        if (next == StreamedAnswer::Next::end)
            return MHD_CONTENT_READER_END_OF_STREAM;
        if (next == StreamedAnswer::Next::later) {
            connection.clear_deadline(); // the client has read all that there was
            return 0;
        }
        if (!take_memory(connection, stream.left()))
            throw std::runtime_error("too many answers wait to be read");
    }
    return static_cast<ssize_t>(stream.take(to, most));
}

void RequestFlow::end(Connection& connection, MHD_RequestTerminationCode how)
{
    if (connection.exchange) {
        give_back_memory(connection);
        const std::unique_ptr<Exchange> exchange = std::move(connection.exchange);
        if (exchange->answer)
            exchange->answer->end();
        if (exchange->is_late)
            connections_.forget_late_answer(connection);
        if (exchange->stream)
            connections_.forget_stream(connection);
        if (options_.on_request) {
            HttpRequest& request = exchange->request;
            // That its client goes is how a stream usually ends.
            const bool answered = how == MHD_REQUEST_TERMINATED_COMPLETED_OK || exchange->stream;
            const auto duration = std::chrono::steady_clock::now() - exchange->begin;
            report(options_.on_request,
                   HttpAccess{exchange->is_head ? MHD_HTTP_METHOD_HEAD : std::move(request.method),
                              std::move(request.path), std::move(request.peer), request.route,
                              answered ? exchange->status : 0,
                              std::chrono::duration_cast<std::chrono::microseconds>(duration)});
        }
    }
    connection.has_served = true;
    connection.has_request = false;
    connection.has_answered = true;
    connection.set_deadline(options_.idle_deadline);
}

} // namespace nmos_instrument::host

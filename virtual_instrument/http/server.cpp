// SPDX-License-Identifier: Apache-2.0

#include "http/server.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <strings.h>

#include "http/all_signals_blocked.h"
#include "http/connection_table.h"
#include "http/error_response.h"
#include "http/exchange.h"
#include "http/listening_socket.h"
#include "http/open_file_limit.h"
#include "http/queue_response.h"
#include "http/request_path.h"

namespace virtual_instrument {

namespace {

using std::chrono::milliseconds;

// Headers and one piece of a body; libmicrohttpd clears as much after each request.
constexpr std::intptr_t connection_memory = 16 * 1024;

// What stop() adds to its deadline, so that those who are given up get to know.
constexpr milliseconds farewell{250};

std::string peer_text(const sockaddr* address)
{
    std::array<char, INET_ADDRSTRLEN> text{};
    sockaddr_in peer{};
    std::memcpy(&peer, address, sizeof peer);
    inet_ntop(AF_INET, &peer.sin_addr, text.data(), text.size());
    return std::string(text.data()) + ':' + std::to_string(ntohs(peer.sin_port));
}

const char* header(MHD_Connection* connection, const char* name)
{
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
}

// True: the client sends the body only after "100 Continue".
bool waits_before_body(MHD_Connection* connection)
{
    const char* expectation = header(connection, MHD_HTTP_HEADER_EXPECT);
    return expectation != nullptr && strcasecmp(expectation, "100-continue") == 0;
}

// 0 for a chunked body. A malformed length never comes here.
unsigned long long announced_length(MHD_Connection* connection)
{
    const char* length = header(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
    if (length == nullptr || header(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING) != nullptr)
        return 0;
    return std::strtoull(length, nullptr, 10);
}

// Whoever keeps the reply shares this; when all have gone without an answer, that is the answer.
class LastReply
{
public:
    explicit LastReply(std::shared_ptr<PendingAnswer> answer) : answer_(std::move(answer)) {}

    ~LastReply()
    {
        try {
            answer_->give(error_response(500, "Internal error", "the request was not answered"));
        } catch (...) {
            // Memory is short; the client's patience or stop() ends the connection.
        }
    }

    LastReply(const LastReply&) = delete;
    LastReply& operator=(const LastReply&) = delete;

    void give(HttpResponse response) { answer_->give(std::move(response)); }

private:
    std::shared_ptr<PendingAnswer> answer_;
};

} // namespace

class HttpServer::Daemon
{
public:
    Daemon(HttpServerOptions options, HttpHandler handler);
    ~Daemon() { stop(); }

    std::uint16_t port() const { return port_; }
    unsigned connection_limit() const { return options_.connection_limit; }
    void stop();

private:
    // libmicrohttpd's callbacks: each finds its daemon in the first parameter and lets no exception
    // out.
    static MHD_Result on_arrival(void* self, const sockaddr* address, socklen_t length);
    static void on_connection(void* self, MHD_Connection* connection, void** context,
                              MHD_ConnectionNotificationCode what);
    static void* on_request_line(void* self, const char* target, MHD_Connection* connection);
    static size_t leave_encoded(void* self, MHD_Connection* connection, char* text);
    static MHD_Result on_request(void* self, MHD_Connection* connection, const char* target,
                                 const char* method, const char* version, const char* data,
                                 size_t* size, void** context);
    static void on_request_end(void* self, MHD_Connection* connection, void** context,
                               MHD_RequestTerminationCode how);
    static void on_remark(void* self, const char* format, va_list arguments);

    MHD_Daemon* start(int listening_socket);
    void watch();
    milliseconds watch_interval() const;

    MHD_Result begin(Connection& connection, MHD_Connection* mhd, const char* target,
                     const char* method);
    void take_body(Exchange& exchange, const char* data, std::size_t size);
    MHD_Result finish(Connection& connection, MHD_Connection* mhd);
    std::shared_ptr<PendingAnswer> ask_handler(const HttpRequest& request, MHD_Connection* mhd);
    MHD_Result send(Connection& connection, MHD_Connection* mhd, HttpResponse response);
    HttpResponse too_long() const;
    void release_body(Exchange& exchange);
    void end_exchange(Connection& connection, MHD_RequestTerminationCode how);
    void remark(std::string_view text) const;

    HttpServerOptions options_;
    HttpHandler handler_;
    std::uint16_t port_ = 0;
    std::atomic<bool> stopping_{false};
    std::atomic<std::size_t> body_memory_{0};
    ConnectionTable connections_;
    std::mutex stop_mutex_;
    MHD_Daemon* daemon_ = nullptr;
    std::thread watchdog_;
};

HttpServer::Daemon::Daemon(HttpServerOptions options, HttpHandler handler)
    : options_(std::move(options)), handler_(std::move(handler))
{
    options_.threads = std::max(options_.threads, 1U);
    options_.connection_limit =
        std::max(make_room_for_connections(options_.connection_limit), options_.threads);
    const ListeningSocket listening = listen_on(options_.address, options_.port);
    port_ = listening.port;

    const AllSignalsBlocked inherited_by_threads;
    daemon_ = start(listening.descriptor);
    if (daemon_ == nullptr) // the socket may be closed or not, depending on what failed
        throw std::runtime_error("libmicrohttpd does not start");
    try {
        watchdog_ = std::thread([this] { watch(); });
    } catch (...) {
        stop();
        throw;
    }
}

MHD_Daemon* HttpServer::Daemon::start(int listening_socket)
{
    // The logger first, so that it hears about the options after it. No time-out of libmicrohttpd's:
    // every byte would begin it anew.
    std::vector<MHD_OptionItem> settings{
        {MHD_OPTION_EXTERNAL_LOGGER, reinterpret_cast<std::intptr_t>(&on_remark), this},
        {MHD_OPTION_LISTEN_SOCKET, listening_socket, nullptr},
        {MHD_OPTION_CONNECTION_LIMIT, options_.connection_limit, nullptr},
        {MHD_OPTION_PER_IP_CONNECTION_LIMIT, options_.connections_per_address, nullptr},
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, connection_memory, nullptr},
        {MHD_OPTION_CONNECTION_TIMEOUT, 0, nullptr},
        {MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr},
        {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<std::intptr_t>(&on_connection), this},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&on_request_end), this},
        {MHD_OPTION_URI_LOG_CALLBACK, reinterpret_cast<std::intptr_t>(&on_request_line), this},
        {MHD_OPTION_UNESCAPE_CALLBACK, reinterpret_cast<std::intptr_t>(&leave_encoded), this}};
    if (options_.threads > 1) // a pool of one would be a remark in the log
        settings.push_back({MHD_OPTION_THREAD_POOL_SIZE, options_.threads, nullptr});
    settings.push_back({MHD_OPTION_END, 0, nullptr});
    return MHD_start_daemon(MHD_USE_EPOLL | MHD_USE_INTERNAL_POLLING_THREAD |
                                MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG,
                            0, &on_arrival, this, &on_request, this, //
                            MHD_OPTION_ARRAY, settings.data(), MHD_OPTION_END);
}

void HttpServer::Daemon::stop()
{
    const std::lock_guard lock(stop_mutex_);
    if (daemon_ == nullptr)
        return;
    // Quiescing libmicrohttpd would race with its own threads over the listening socket and may abort
    // the process, so arrivals are turned away instead.
    stopping_ = true;
    const auto end = std::chrono::steady_clock::now() + options_.stop_deadline;
    do
        connections_.end_idle();
    while (!connections_.wait_until_empty(milliseconds(10)) &&
           std::chrono::steady_clock::now() < end);

    // libmicrohttpd aborts the process when it is stopped with suspended connections.
    connections_.give_up_late_answers();
    connections_.wait_until_empty(farewell);

    connections_.close_watch();
    if (watchdog_.joinable())
        watchdog_.join();
    MHD_stop_daemon(daemon_);
    daemon_ = nullptr;
}

void HttpServer::Daemon::watch()
{
    while (connections_.wait_for_next_look(watch_interval()))
        connections_.end_overdue();
}

milliseconds HttpServer::Daemon::watch_interval() const
{
    const milliseconds shortest = std::min({options_.header_deadline, options_.body_deadline,
                                            options_.answer_deadline, options_.idle_deadline});
    return std::clamp(shortest / 8, milliseconds(5), milliseconds(250));
}

MHD_Result HttpServer::Daemon::on_arrival(void* self, const sockaddr*, socklen_t)
{
    return static_cast<Daemon*>(self)->stopping_ ? MHD_NO : MHD_YES;
}

void HttpServer::Daemon::on_connection(void* self, MHD_Connection* connection, void** context,
                                       MHD_ConnectionNotificationCode what)
{
    auto& daemon = *static_cast<Daemon*>(self);
    if (what == MHD_CONNECTION_NOTIFY_CLOSED) {
        if (*context != nullptr)
            daemon.connections_.remove(*static_cast<Connection*>(*context));
        *context = nullptr;
        return;
    }
    try {
        const int socket =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
        const sockaddr* peer =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
        Connection& added = daemon.connections_.add(socket, peer_text(peer));
        added.set_deadline(daemon.options_.header_deadline);
        *context = &added;
    } catch (...) {
        *context = nullptr; // its first request is refused
    }
}

// What this gives is the context of the request's other callbacks.
void* HttpServer::Daemon::on_request_line(void* self, const char*, MHD_Connection* connection)
{
    auto& daemon = *static_cast<Daemon*>(self);
    auto* ours = static_cast<Connection*>(
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
    if (ours != nullptr) {
        ours->has_request = true;
        if (ours->has_served)
            ours->set_deadline(daemon.options_.header_deadline);
    }
    return ours;
}

// Decoding here would make "%00" the end of the path and "%2F" a slash; see request_path.
size_t HttpServer::Daemon::leave_encoded(void*, MHD_Connection*, char* text)
{
    return std::strlen(text);
}

// Called once when the headers are complete, once for each piece of the body, once when the request is,
// and once more when a late answer has resumed the connection. An answer must not be queued while
// pieces come.
MHD_Result HttpServer::Daemon::on_request(void* self, MHD_Connection* connection,
                                          const char* target, const char* method, const char*,
                                          const char* data, size_t* size, void** context)
{
    auto& daemon = *static_cast<Daemon*>(self);
    if (*context == nullptr)
        return MHD_NO;
    Connection& ours = *static_cast<Connection*>(*context);
    try {
        if (!ours.exchange)
            return daemon.begin(ours, connection, target, method);
        if (*size == 0)
            return daemon.finish(ours, connection);
        daemon.take_body(*ours.exchange, data, std::exchange(*size, 0));
        return MHD_YES;
    } catch (const std::exception& error) {
        daemon.remark(error.what());
        return MHD_NO;
    }
}

MHD_Result HttpServer::Daemon::begin(Connection& connection, MHD_Connection* mhd,
                                     const char* target, const char* method)
{
    connection.exchange = std::make_unique<Exchange>();
    Exchange& exchange = *connection.exchange;
    HttpRequest& request = exchange.request;
    exchange.is_head = std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
    request.method = exchange.is_head ? MHD_HTTP_METHOD_GET : method;
    request.path = request_path(target);
    if (const char* type = header(mhd, MHD_HTTP_HEADER_CONTENT_TYPE))
        request.content_type = type;
    request.peer = connection.peer;
    connection.set_deadline(options_.body_deadline);

    const char* coding = header(mhd, MHD_HTTP_HEADER_TRANSFER_ENCODING);
    if (coding != nullptr && strcasecmp(coding, "chunked") != 0) {
        // Its end could not be found; libmicrohttpd closes the connection after such an answer.
        return send(connection, mhd,
                    error_response(501, "Transfer coding not understood",
                                   std::string(coding) + ": only chunked is"));
    }
    if (announced_length(mhd) > options_.body_limit) {
        if (waits_before_body(mhd))
            return send(connection, mhd, too_long());
        exchange.refusal = too_long();
    }
    return MHD_YES;
}

void HttpServer::Daemon::take_body(Exchange& exchange, const char* data, std::size_t size)
{
    if (exchange.refusal)
        return;
    std::string& body = exchange.request.body;
    if (size > options_.body_limit - body.size()) {
        release_body(exchange);
        exchange.refusal = too_long();
        return;
    }
    if (body_memory_.fetch_add(size) + size > options_.body_memory) {
        body_memory_ -= size;
        release_body(exchange);
        exchange.refusal = error_response(503, "Too many request bodies at once");
        return;
    }
    try {
        body.append(data, size);
    } catch (...) {
        body_memory_ -= size;
        throw;
    }
}

HttpResponse HttpServer::Daemon::too_long() const
{
    return error_response(413, "Request body too long",
                          "more than " + std::to_string(options_.body_limit) + " bytes");
}

void HttpServer::Daemon::release_body(Exchange& exchange)
{
    std::string& body = exchange.request.body;
    body_memory_ -= body.size();
    std::string().swap(body);
}

MHD_Result HttpServer::Daemon::finish(Connection& connection, MHD_Connection* mhd)
{
    Exchange& exchange = *connection.exchange;
    if (exchange.refusal)
        return send(connection, mhd, std::move(*exchange.refusal));
    if (!exchange.answer) {
        connection.clear_deadline(); // the handler's time is not the client's
        exchange.answer = ask_handler(exchange.request, mhd);
        release_body(exchange);
    }
    std::optional<HttpResponse> response = exchange.answer->take();
    if (!response && !exchange.is_late) {
        // Suspended now, the connection would still be marked for reading when it is resumed, and
        // libmicrohttpd would drop a client that has shut down its sending side meanwhile. A round
        // without an answer takes the mark away, and leads here again at once.
        exchange.is_late = true;
        connections_.expect_late_answer(connection, exchange.answer);
        return MHD_YES;
    }
    if (!response)
        response = exchange.answer->take_or_suspend();
    return response ? send(connection, mhd, std::move(*response)) : MHD_YES;
}

std::shared_ptr<PendingAnswer> HttpServer::Daemon::ask_handler(const HttpRequest& request,
                                                               MHD_Connection* mhd)
{
    auto answer = std::make_shared<PendingAnswer>(mhd);
    const auto fail = [&](const char* what) {
        remark(request.method + ' ' + request.path + ": " + what);
        answer->give(error_response(500, "Internal error", what));
    };
    // Kept until an exception is reported: unwinding takes the handler's own copy first.
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

MHD_Result HttpServer::Daemon::send(Connection& connection, MHD_Connection* mhd,
                                    HttpResponse response)
{
    connection.set_deadline(options_.answer_deadline);
    const AfterAnswer after =
        stopping_ ? AfterAnswer::close_connection : AfterAnswer::keep_connection;
    connection.exchange->status = queue_response(mhd, std::move(response), after);
    return connection.exchange->status == 0 ? MHD_NO : MHD_YES;
}

void HttpServer::Daemon::on_request_end(void* self, MHD_Connection*, void** context,
                                        MHD_RequestTerminationCode how)
{
    if (*context != nullptr)
        static_cast<Daemon*>(self)->end_exchange(*static_cast<Connection*>(*context), how);
    *context = nullptr;
}

void HttpServer::Daemon::end_exchange(Connection& connection, MHD_RequestTerminationCode how)
{
    if (const std::unique_ptr<Exchange> exchange = std::move(connection.exchange)) {
        release_body(*exchange);
        if (exchange->answer)
            exchange->answer->end();
        if (exchange->is_late)
            connections_.forget_late_answer(connection);
        if (options_.on_request) {
            try {
                HttpRequest& request = exchange->request;
                options_.on_request(
                    {exchange->is_head ? MHD_HTTP_METHOD_HEAD : std::move(request.method),
                     std::move(request.path), std::move(request.peer),
                     how == MHD_REQUEST_TERMINATED_COMPLETED_OK ? exchange->status : 0,
                     std::chrono::duration_cast<std::chrono::microseconds>(
                         std::chrono::steady_clock::now() - exchange->begin)});
            } catch (...) {
                // A log line that cannot be written is no reason to fail.
            }
        }
    }
    connection.has_served = true;
    connection.has_request = false;
    connection.has_answered = true;
    connection.set_deadline(options_.idle_deadline);
}

void HttpServer::Daemon::on_remark(void* self, const char* format, va_list arguments)
{
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    std::string_view line(text.data());
    if (line.ends_with('\n'))
        line.remove_suffix(1);
    static_cast<Daemon*>(self)->remark(line);
}

void HttpServer::Daemon::remark(std::string_view text) const
{
    if (!options_.on_diagnostic)
        return;
    try {
        options_.on_diagnostic(std::string(text));
    } catch (...) {
        // As above.
    }
}

HttpServer::HttpServer(HttpServerOptions options, HttpHandler handler)
    : daemon_(std::make_unique<Daemon>(std::move(options), std::move(handler)))
{}

HttpServer::~HttpServer() = default;

std::uint16_t HttpServer::port() const
{
    return daemon_->port();
}

unsigned HttpServer::connection_limit() const
{
    return daemon_->connection_limit();
}

void HttpServer::stop()
{
    daemon_->stop();
}

} // namespace virtual_instrument

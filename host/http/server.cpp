// SPDX-License-Identifier: Apache-2.0

#include "http/server.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <microhttpd.h>
#include <sys/socket.h>

#include "http/all_signals_blocked.h"
#include "http/client_address.h"
#include "http/connection_table.h"
#include "http/event_loop.h"
#include "http/open_file_limit.h"
#include "http/report.h"
#include "http/request_flow.h"

namespace nmos_instrument::host {

namespace {

using std::chrono::milliseconds;

// For the headers and one piece of a body. libmicrohttpd clears this much after each request.
constexpr std::intptr_t connection_memory = std::intptr_t{16} * 1024;

// What stop() adds to its deadline, so that clients whose requests are given up hear about it.
constexpr milliseconds farewell{250};

// Places for newcomers until the connections that have to make room for them are gone. Without any,
// newcomers wait.
unsigned reserve_of(unsigned connections)
{
    return connections / 32;
}

} // namespace

class HttpServer::Daemon
{
public:
    Daemon(ListeningSocket socket, HttpServerOptions options, HttpHandler handler);
    ~Daemon() { stop(); }

    std::uint16_t port() const { return port_; }
    unsigned connection_limit() const { return options_.connection_limit; }
    void stop();

private:
    // One of the server threads.
    struct Worker
    {
        explicit Worker(Daemon& its_server) : server(its_server) {}

        Daemon& server;
        EventLoop loop;
    };

    // libmicrohttpd's callbacks: the first parameter of each is its worker, and none lets an
    // exception out.
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

    MHD_Daemon* start_daemon(int listening_socket, unsigned number, Worker& worker);
    void watch();
    milliseconds watch_interval() const;

    HttpServerOptions options_;
    const std::uint16_t port_;
    unsigned places_ = 0; ///< for connections: the limit and the reserve
    std::atomic<bool> stopping_{false};
    ConnectionTable connections_;
    RequestFlow flow_;
    std::mutex stop_mutex_;
    std::vector<std::unique_ptr<Worker>> workers_;
    std::thread watchdog_;
};

HttpServer::Daemon::Daemon(ListeningSocket socket, HttpServerOptions options, HttpHandler handler)
    : options_(std::move(options)),
      port_(socket.port()),
      flow_(options_, std::move(handler), connections_, stopping_)
{
    options_.threads = std::max(options_.threads, 1U);
    const unsigned wanted = options_.connection_limit + reserve_of(options_.connection_limit);
    places_ = std::max(make_room_for_connections(wanted), options_.threads);
    if (places_ < wanted)
        options_.connection_limit = places_ - reserve_of(places_);

    const AllSignalsBlocked inherited_by_threads;
    try {
        for (unsigned i = 0; i < options_.threads; ++i) {
            Worker& worker = *workers_.emplace_back(std::make_unique<Worker>(*this));
            worker.loop.start(start_daemon(socket.duplicate(), i, worker));
        }
        watchdog_ = std::thread([this] { watch(); });
    } catch (...) {
        stop();
        throw;
    }
}

MHD_Daemon* HttpServer::Daemon::start_daemon(int listening_socket, unsigned number, Worker& worker)
{
    const unsigned share = places_ / options_.threads;
    const bool has_one_more = number < places_ % options_.threads;
    // The logger comes first, so that it hears about the options after it. libmicrohttpd's own
    // time-out is not used: every byte would start it again.
    const std::array settings{
        MHD_OptionItem{MHD_OPTION_EXTERNAL_LOGGER, reinterpret_cast<std::intptr_t>(&on_remark),
                       &worker},
        MHD_OptionItem{MHD_OPTION_LISTEN_SOCKET, listening_socket, nullptr},
        MHD_OptionItem{MHD_OPTION_CONNECTION_LIMIT, share + (has_one_more ? 1 : 0), nullptr},
        MHD_OptionItem{MHD_OPTION_CONNECTION_MEMORY_LIMIT, connection_memory, nullptr},
        MHD_OptionItem{MHD_OPTION_CONNECTION_TIMEOUT, 0, nullptr},
        MHD_OptionItem{MHD_OPTION_NOTIFY_CONNECTION,
                       reinterpret_cast<std::intptr_t>(&on_connection), &worker},
        MHD_OptionItem{MHD_OPTION_NOTIFY_COMPLETED,
                       reinterpret_cast<std::intptr_t>(&on_request_end), &worker},
        MHD_OptionItem{MHD_OPTION_URI_LOG_CALLBACK,
                       reinterpret_cast<std::intptr_t>(&on_request_line), &worker},
        MHD_OptionItem{MHD_OPTION_UNESCAPE_CALLBACK,
                       reinterpret_cast<std::intptr_t>(&leave_encoded), &worker},
        MHD_OptionItem{MHD_OPTION_END, 0, nullptr}};
    MHD_Daemon* const daemon =
        MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG, //
                         0, &on_arrival, &worker, &on_request, &worker,                //
                         MHD_OPTION_ARRAY, settings.data(), MHD_OPTION_END);
    if (daemon == nullptr) // the socket may be closed or not, depending on what failed
        throw std::runtime_error("libmicrohttpd did not start");
    return daemon;
}

void HttpServer::Daemon::stop()
{
    const std::lock_guard lock(stop_mutex_);
    if (workers_.empty())
        return;
    // Quiescing libmicrohttpd would race with its own threads over the listening socket and might
    // abort the process, so new connections are refused instead.
    stopping_ = true;
    connections_.end_streams();
    const auto end = std::chrono::steady_clock::now() + options_.stop_deadline;
    do
        connections_.end_idle();
    while (!connections_.wait_until_empty(milliseconds(10)) &&
           std::chrono::steady_clock::now() < end);

    // libmicrohttpd aborts the process if it is stopped with suspended connections.
    connections_.give_up_late_answers();
    connections_.wait_until_empty(farewell);

    connections_.close_watch();
    if (watchdog_.joinable())
        watchdog_.join();
    workers_.clear();
}

void HttpServer::Daemon::watch()
{
    while (connections_.wait_for_next_look(watch_interval())) {
        connections_.end_overdue();
        connections_.ask_streams();
    }
}

milliseconds HttpServer::Daemon::watch_interval() const
{
    const milliseconds shortest = std::min({options_.header_deadline, options_.body_deadline,
                                            options_.answer_deadline, options_.idle_deadline});
    return std::clamp(shortest / 8, milliseconds(5), milliseconds(250));
}

MHD_Result HttpServer::Daemon::on_arrival(void* self, const sockaddr* address, socklen_t)
{
    Daemon& daemon = static_cast<Worker*>(self)->server;
    const unsigned most = daemon.options_.connections_per_address;
    if (daemon.stopping_ ||
        (most != 0 && daemon.connections_.count_of(client_key(address)) >= most))
        return MHD_NO;
    daemon.connections_.make_room(daemon.options_.connection_limit);
    return MHD_YES;
}

void HttpServer::Daemon::on_connection(void* self, MHD_Connection* connection, void** context,
                                       MHD_ConnectionNotificationCode what)
{
    Daemon& daemon = static_cast<Worker*>(self)->server;
    if (what == MHD_CONNECTION_NOTIFY_CLOSED) {
        if (*context != nullptr)
            daemon.connections_.remove(*static_cast<Connection*>(*context));
        *context = nullptr;
        // libmicrohttpd notes only at its next look that it may accept connections again.
        static_cast<Worker*>(self)->loop.wake();
        return;
    }
    const int socket =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    try {
        const sockaddr* peer =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
        Connection& added = daemon.connections_.add(socket, peer_text(peer), client_key(peer),
                                                    static_cast<Worker*>(self)->loop);
        added.set_deadline(daemon.options_.header_deadline);
        *context = &added;
    } catch (...) {
        // Nothing would enforce its deadlines.
        shutdown(socket, SHUT_RDWR);
    }
}

// The result becomes the context of the request's other callbacks.
void* HttpServer::Daemon::on_request_line(void* self, const char* target,
                                          MHD_Connection* connection)
{
    auto* ours = static_cast<Connection*>(
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
    if (ours != nullptr) {
        ours->has_request = true;
        ours->target = look_at_target(target);
        if (ours->has_served)
            ours->set_deadline(static_cast<Worker*>(self)->server.options_.header_deadline);
    }
    return ours;
}

// If it were decoded here, "%00" would end the path and "%2F" would be a slash; see request_path.
size_t HttpServer::Daemon::leave_encoded(void*, MHD_Connection*, char* text)
{
    return std::strlen(text);
}

// Called once when the headers are complete, once for each piece of the body, once when the request
// is complete, and once more when a late answer has resumed the connection. An answer must not be
// queued while pieces of the body are still coming.
MHD_Result HttpServer::Daemon::on_request(void* self, MHD_Connection* connection,
                                          const char* target, const char* method,
                                          const char* version, const char* data, size_t* size,
                                          void** context)
{
    Daemon& daemon = static_cast<Worker*>(self)->server;
    if (*context == nullptr)
        return MHD_NO;
    try {
        Connection& ours = *static_cast<Connection*>(*context);
        if (!ours.exchange)
            return daemon.flow_.begin(ours, connection, target, method, version);
        if (*size == 0)
            return daemon.flow_.finish(ours, connection);
        daemon.flow_.take_body(ours, data, std::exchange(*size, 0));
        return MHD_YES;
    } catch (const std::exception& error) {
        report(daemon.options_.on_failure, error.what());
        return MHD_NO;
    } catch (...) {
        return MHD_NO;
    }
}

void HttpServer::Daemon::on_request_end(void* self, MHD_Connection*, void** context,
                                        MHD_RequestTerminationCode how)
{
    if (*context != nullptr)
        static_cast<Worker*>(self)->server.flow_.end(*static_cast<Connection*>(*context), how);
    *context = nullptr;
}

void HttpServer::Daemon::on_remark(void* self, const char* format, va_list arguments)
{
    std::array<char, 512> text{};
    // A remark that is too long loses its end.
    static_cast<void>(std::vsnprintf(text.data(), text.size(), format, arguments));
    text[std::strcspn(text.data(), "\n")] = '\0';
    const Worker& worker = *static_cast<Worker*>(self);
    report(worker.server.options_.on_diagnostic, text.data());
    // What it remarks may be an error that it answers only at its next look.
    worker.loop.wake();
}

HttpServer::HttpServer(HttpServerOptions options, HttpHandler handler)
    : HttpServer(ListeningSocket(options.listen, options.port), options, std::move(handler))
{}

HttpServer::HttpServer(ListeningSocket socket, HttpServerOptions options, HttpHandler handler)
    : daemon_(std::make_unique<Daemon>(std::move(socket), std::move(options), std::move(handler)))
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

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// An HTTP/1.1 server around libmicrohttpd: complete requests in, complete answers out, or answers that
// go on (HttpStream).
//
//     HttpServer server(options, [](const HttpRequest& request, HttpReply reply) {
//         reply(HttpResponse{.body = "[\"self/\"]"});
//     });
//
// A client costs a connection, never a thread: one that is slow, idle or waiting for a late answer
// does not hold up the others.

#ifndef NMOS_INSTRUMENT_HOST_HTTP_SERVER_H
#define NMOS_INSTRUMENT_HOST_HTTP_SERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "http/listening_socket.h"
#include "http/message.h"

namespace nmos_instrument::host {

/// Gives the answer: once, from any thread, before the handler returns or at any time after that,
/// even when the server is gone. Calls after the first do nothing. If the last copy goes away
/// without a call, the client gets a 500.
using HttpReply = std::function<void(HttpResponse)>;

/// Called on several server threads at once. It must not wait, least of all for another HTTP
/// request: a handler that needs time keeps the reply and returns. The request is gone then, so
/// copy what you need from it. An exception becomes a 500 with its text.
using HttpHandler = std::function<void(HttpRequest&, HttpReply)>;

/// One finished request, for a log and for counting.
struct HttpAccess
{
    std::string method; ///< as received, so HEAD stays HEAD
    std::string path;   ///< as in HttpRequest
    std::string peer;
    std::size_t route; ///< as the handler noted it; 0 if it was not asked
    int status; ///< 0 if the client went away before its answer; a stream has one when it has begun
    std::chrono::microseconds
        duration; ///< from the end of the headers to the last byte handed over
};

struct HttpServerOptions
{
    ListenAt listen{.address = "127.0.0.1"};
    std::uint16_t port = 0; ///< 0: any free one
    unsigned threads = 2;

    /// The limit of open files is raised for it as far as the system allows, see
    /// HttpServer::connection_limit. So that nobody locks out others, a client above it takes the
    /// place of the oldest idle connection of the address that has most. Below 32 there is no
    /// reserve for that: clients above it wait in the listen queue.
    unsigned connection_limit = 4096;

    /// Connections above it are closed at once; 0: no limit. An address is here, and in all of these
    /// options, what ClientKey counts as one client.
    unsigned connections_per_address = 2048;

    std::size_t body_limit = std::size_t{1024} * 1024; ///< longer: 413

    /// All bodies that are being received and all answers that are being sent, together; a request
    /// or answer that would exceed it becomes a 503.
    std::size_t memory = std::size_t{64} * 1024 * 1024;

    /// The same for one client address.
    std::size_t memory_per_address = std::size_t{16} * 1024 * 1024;

    // A connection ends when a deadline has passed, however regularly bytes trickle in. 0 ends
    // everything at once; there is no value for "never".
    std::chrono::milliseconds header_deadline{
        10'000};                                     ///< connected, or request line, to header end
    std::chrono::milliseconds body_deadline{30'000}; ///< header end to body end
    std::chrono::milliseconds answer_deadline{
        30'000}; ///< reply to the last byte accepted; of a stream, each piece has as long
    std::chrono::milliseconds idle_deadline{30'000}; ///< answer to the next request line

    /// How long stop() waits for running requests before it answers them with 503.
    std::chrono::milliseconds stop_deadline{1'500};

    // For a log. All may be called on several threads at once; exceptions are swallowed.
    std::function<void(const HttpAccess&)> on_request;
    std::function<void(const std::string&)> on_failure;    ///< what became a 500, and where
    std::function<void(const std::string&)> on_diagnostic; ///< libmicrohttpd's own remarks
};

class HttpServer
{
public:
    /// Accepts connections when it returns, at the place and port of the options. Throws as
    /// ListeningSocket does.
    HttpServer(HttpServerOptions options, HttpHandler handler);

    /// The same on a socket that already listens, whose place and port replace those of the
    /// options.
    HttpServer(ListeningSocket socket, HttpServerOptions options, HttpHandler handler);

    /// Stops.
    ~HttpServer();

    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t port() const;

    /// The option, or less if the system allows fewer open files.
    unsigned connection_limit() const;

    /// Accepts nothing more, ends streams at once, closes idle connections, finishes running
    /// requests within the stop deadline and closes the rest. When it returns, no handler runs and
    /// none will. Further calls do nothing. A handler or a callback must not call it: it waits for
    /// their threads.
    void stop();

private:
    class Daemon;
    std::unique_ptr<Daemon> daemon_;
};

} // namespace nmos_instrument::host

#endif

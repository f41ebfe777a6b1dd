// SPDX-License-Identifier: Apache-2.0
//
// An HTTP/1.1 client around libcurl: one thread and one set of connections for all that a process
// asks of other servers, however many instruments it runs.
//
//     HttpClient client(log);
//     client.send({.method = "POST", .url = url, .json = body}, [](const ClientAnswer& answer) {
//         if (answer.status == 201) ...
//     });
//
// What has to happen at a certain time between the messages runs on the same thread, so that it
// needs neither a thread nor a lock of its own.

#ifndef NMOS_INSTRUMENT_HOST_HTTP_CLIENT_H
#define NMOS_INSTRUMENT_HOST_HTTP_CLIENT_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "http/client_transfer.h"
#include "log/log.h"

namespace nmos_instrument::host {

struct ClientRequest
{
    std::string method; ///< any but HEAD, whose answers have no body
    std::string url;

    /// The address of the URL's host, if it is known: an IPv4 address, or an IPv6 address without
    /// brackets. Otherwise the system's resolver is asked.
    std::string address{};

    /// The body, sent as application/json. Without one there is no Content-Type (IS-04 v1.2, APIs:
    /// Client Side Implementation Notes, Empty Request Bodies).
    std::optional<std::string> json{};

    /// For https: a file of certificates that are trusted, instead of those of the system.
    std::string ca_file{};

    std::chrono::milliseconds time_limit{5'000}; ///< for all of it
};

struct ClientAnswer
{
    int status = 0;                       ///< 0 if there was no complete answer
    std::string body{};                   ///< at most 64 KiB of it
    std::string why{};                    ///< if there was no complete answer
    std::string location{};               ///< of a redirect, which is never followed
    std::chrono::microseconds duration{}; ///< since it left the queue
};

class HttpClient
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Task = std::function<void()>;
    using Receive = std::function<void(const ClientAnswer&)>;

    explicit HttpClient(Log log);

    /// Gives up the transfers that run or wait, with a reason, and waits for no name server. Tasks
    /// that wait are dropped. It must not be called on the client's own thread.
    ~HttpClient();

    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // All of these may be called on any thread, and return at once. What they are given is called
    // on the client's thread, where it must not wait; exceptions are logged and swallowed. If one
    // of these throws, for want of memory, nothing of what it was given is called.

    /// Calls `receive` once, always. Throws also when the client ends, as seen by a callback:
    /// otherwise one that sends again what fails would do so for ever.
    void send(ClientRequest request, Receive receive);

    /// Throws likewise.
    void start(std::unique_ptr<ClientTransfer> transfer);

    /// As soon as possible, after what is due already.
    void run(Task task);

    /// Tasks run in the order of their times, and those of one time in the order of their arrival.
    void run_at(TimePoint time, Task task);

private:
    class Worker;
    const Log log_;
    std::unique_ptr<Worker> worker_;
};

} // namespace nmos_instrument::host

#endif

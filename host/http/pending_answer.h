// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_PENDING_ANSWER_H
#define NMOS_INSTRUMENT_HOST_HTTP_PENDING_ANSWER_H

#include <mutex>
#include <optional>

#include "http/event_loop.h"
#include "http/message.h"

struct MHD_Connection;

namespace nmos_instrument::host {

/// Where the thread that gives an answer meets the server thread of the connection. The answer may
/// come long after the server thread has left: the connection is then suspended, so that it costs
/// nothing until the answer resumes it.
class PendingAnswer
{
public:
    /// `loop` is that of the server thread.
    PendingAnswer(MHD_Connection* connection, const EventLoop& loop)
        : connection_(connection), loop_(loop)
    {}

    /// From any thread. Only the first answer counts, and none counts after the request has ended.
    void give(HttpResponse response);
    bool is_given();

    /// Gives an error response in place of an answer; if there is no memory for that, nothing, and
    /// the connection ends. From any thread; does nothing after an answer.
    void give_up(int status, const char* error, const char* debug = nullptr) noexcept;

    /// On the server thread: the answer, if there is one.
    std::optional<HttpResponse> take();

    struct Taken
    {
        std::optional<HttpResponse> response;
        bool is_suspended = false; ///< until the answer comes, or has been given up
    };

    /// On the server thread: the answer; or nothing, if it has been given up; or the connection is
    /// suspended.
    Taken take_or_suspend();

    /// On the server thread: the request has ended, so the connection must not be used any more.
    void end();

private:
    void end_wait();

    std::mutex mutex_;
    MHD_Connection* connection_;
    const EventLoop& loop_;
    std::optional<HttpResponse> response_;
    bool given_ = false; ///< or given up
    bool suspended_ = false;
};

} // namespace nmos_instrument::host

#endif

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

    /// On the server thread: the answer, if there is one.
    std::optional<HttpResponse> take();

    /// On the server thread: the answer; or nothing, and the connection is suspended until it
    /// comes.
    std::optional<HttpResponse> take_or_suspend();

    /// On the server thread: the request has ended, so the connection must not be used any more.
    void end();

private:
    std::mutex mutex_;
    MHD_Connection* connection_;
    const EventLoop& loop_;
    std::optional<HttpResponse> response_;
    bool given_ = false;
    bool suspended_ = false;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_EXCHANGE_H
#define NMOS_INSTRUMENT_HOST_HTTP_EXCHANGE_H

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "http/message.h"
#include "http/pending_answer.h"
#include "http/streamed_answer.h"

namespace nmos_instrument::host {

/// One request as it comes in and its answer as it goes out, on the connection's server thread.
struct Exchange
{
    HttpRequest request;
    bool is_head = false;
    bool is_chunked = false; ///< the body

    /// Sent instead of asking the handler; the rest of the body is thrown away.
    std::optional<HttpResponse> refusal;

    /// Set when the handler has been asked.
    std::shared_ptr<PendingAnswer> answer;
    bool is_late = false;

    int status = 0; ///< of the queued answer

    /// Set when the answer is one that goes on.
    std::shared_ptr<StreamedAnswer> stream;

    std::size_t memory = 0; ///< taken for the body, later for the answer or a piece of it
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_REQUEST_FLOW_H
#define NMOS_INSTRUMENT_HOST_HTTP_REQUEST_FLOW_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

#include <microhttpd.h>
#include <sys/types.h>

#include "http/connection_table.h"
#include "http/exchange.h"
#include "http/memory_budget.h"
#include "http/message.h"
#include "http/pending_answer.h"
#include "http/queue_response.h"
#include "http/server.h"

namespace nmos_instrument::host {

/// What happens from the end of a request's headers to the last byte of its answer, on the server
/// thread of its connection. The MHD_Result says whether the connection goes on.
class RequestFlow
{
public:
    /// All arguments but the handler must outlive it. While `stopping` is true, an answer is the
    /// last one of its connection.
    RequestFlow(const HttpServerOptions& options, HttpHandler handler, ConnectionTable& connections,
                const std::atomic<bool>& stopping)
        : options_(options),
          handler_(std::move(handler)),
          connections_(connections),
          stopping_(stopping)
    {}

    /// The headers are complete.
    MHD_Result begin(Connection& connection, MHD_Connection* mhd, const char* target,
                     const char* method, const char* version);

    /// A piece of the body.
    void take_body(Connection& connection, const char* data, std::size_t size);

    /// The request is complete, or its late answer has come.
    MHD_Result finish(Connection& connection, MHD_Connection* mhd);

    /// The answer has been handed over, or the connection has ended before that.
    void end(Connection& connection, MHD_RequestTerminationCode how);

private:
    std::shared_ptr<PendingAnswer> ask_handler(const Connection& connection, MHD_Connection* mhd);
    MHD_Result send(Connection& connection, MHD_Connection* mhd, HttpResponse response);
    MHD_Result send_last(Connection& connection, MHD_Connection* mhd, HttpResponse response);
    MHD_Result hand_over(Connection& connection, MHD_Connection* mhd, HttpResponse response,
                         AfterAnswer after);
    int start_stream(Connection& connection, MHD_Connection* mhd, const HttpResponse& response,
                     AfterAnswer after);
    ssize_t read_stream(Connection& connection, char* to, std::size_t most) noexcept;
    ssize_t next_bytes(Connection& connection, char* to, std::size_t most);
    void report_failure(const HttpRequest& request, const char* what) const noexcept;
    HttpResponse too_long() const;

    bool take_memory(Connection& connection, std::size_t bytes);
    void give_back_memory(Connection& connection);
    void release_body(Connection& connection);

    const HttpServerOptions& options_;
    HttpHandler handler_;
    ConnectionTable& connections_;
    const std::atomic<bool>& stopping_;
    MemoryBudget memory_; ///< of all request bodies and answers
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_QUEUE_RESPONSE_H
#define NMOS_INSTRUMENT_HOST_HTTP_QUEUE_RESPONSE_H

#include <cstddef>
#include <functional>

#include <sys/types.h>

#include "http/message.h"

struct MHD_Connection;

namespace nmos_instrument::host {

enum class AfterAnswer
{
    keep_connection, ///< as the client wishes
    close_connection
};

/// Copies the next bytes of a body that goes on. Gives how many there were, or what else a
/// MHD_ContentReaderCallback may give; never throws.
using ReadBytes = std::function<ssize_t(char* to, std::size_t most)>;

/// Hands the answer to libmicrohttpd, its body without a copy. Gives the status that is sent: 500 in
/// place of an answer that HTTP does not allow; 0 when memory is short and nothing can be sent.
int queue_response(MHD_Connection* connection, HttpResponse response, AfterAnswer after);

/// The same for an answer whose body is what `read` gives.
int queue_stream(MHD_Connection* connection, const HttpResponse& response, ReadBytes read,
                 AfterAnswer after);

/// The same for an answer to HEAD. The connection ends then.
int queue_head_of_stream(MHD_Connection* connection, const HttpResponse& response);

} // namespace nmos_instrument::host

#endif

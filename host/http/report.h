// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_REPORT_H
#define NMOS_INSTRUMENT_HOST_HTTP_REPORT_H

#include <utility>

namespace nmos_instrument::host {

/// Calls one of the log callbacks of HttpServerOptions, if it is set. A request does not fail
/// because a log line cannot be written.
template <typename Callback, typename Message>
void report(const Callback& callback, Message&& message) noexcept
{
    if (!callback)
        return;
    try {
        callback(std::forward<Message>(message));
    } catch (...) {
        return;
    }
}

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_HTTP_REPORT_H
#define VIRTUAL_INSTRUMENT_HTTP_REPORT_H

#include <utility>

namespace virtual_instrument {

/// Calls one of the log callbacks of HttpServerOptions, if it is set. A log line that cannot be written
/// is no reason to fail.
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

} // namespace virtual_instrument

#endif

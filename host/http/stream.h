// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_STREAM_H
#define NMOS_INSTRUMENT_HOST_HTTP_STREAM_H

#include <optional>
#include <string>

namespace nmos_instrument::host {

/// The body of an answer that goes on, such as server-sent events.
class HttpStream
{
public:
    HttpStream() = default;
    virtual ~HttpStream() = default;

    HttpStream(const HttpStream&) = delete;
    HttpStream& operator=(const HttpStream&) = delete;

    /// The next piece, when everything before it has been handed over. Empty: there is nothing at
    /// the moment; it is asked again within about 250 ms, and costs no thread until then. Nothing:
    /// the end of the answer.
    ///
    /// Called on a server thread, never on two at once; it must not wait, as a handler must not.
    /// After an exception the connection ends.
    virtual std::optional<std::string> next() = 0;
};

} // namespace nmos_instrument::host

#endif

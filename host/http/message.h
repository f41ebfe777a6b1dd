// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MESSAGE_H
#define NMOS_INSTRUMENT_HOST_HTTP_MESSAGE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "http/stream.h"

namespace nmos_instrument::host {

/// A request whose body has arrived in full.
struct HttpRequest
{
    /// As received; methods are case-sensitive (RFC 9110 9.1). HEAD arrives as GET.
    std::string method;

    /// As received, with three exceptions: the query is cut off; the scheme and host of an absolute
    /// target are cut off; and a percent-encoded letter, digit, "-", ".", "_" or "~" is decoded,
    /// because RFC 3986 6.2.2.2 makes both spellings the same path. Everything else stays encoded:
    /// "%2F" is not a slash and "%00" does not end the path. OPTIONS may have "*".
    std::string path;

    /// As received, with its parameters; nothing if there is no such header.
    std::optional<std::string> content_type;

    /// The lists of Accept and If-None-Match as received, several lines of one joined by commas;
    /// nothing if there is no such header.
    std::optional<std::string> accept{};
    std::optional<std::string> if_none_match{};

    /// Any bytes, including NUL.
    std::string body;

    /// Address and port of the client, such as "192.168.1.20:50123"; see client_address.h.
    std::string peer;

    /// Which of its routes the handler takes it for; the handler notes it here for HttpAccess.
    std::size_t route = 0;
};

/// Content-Length, Date, Connection, `Access-Control-Allow-Origin: *` and
/// `X-Content-Type-Options: nosniff` are added by the server.
struct HttpResponse
{
    int status = 200;

    /// Sent as it is; if empty, there is no such header.
    std::string content_type = "application/json";

    std::string body;

    /// Further headers, such as Allow. A line break in one makes the answer a 500.
    std::vector<std::pair<std::string, std::string>> headers;

    /// If set, the body is what it gives, piece by piece, without Content-Length; `body` is not sent.
    /// An answer to HEAD does not ask it, and is the last one of its connection.
    std::shared_ptr<HttpStream> stream = nullptr;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_URL_H
#define NMOS_INSTRUMENT_HOST_HTTP_URL_H

#include <optional>
#include <string>

namespace nmos_instrument::host {

/// The parts of a URL that hold no secrets. User, password and query are not kept.
struct Url
{
    std::string scheme;
    std::string host; ///< an IPv4 address is a dotted quad here, however the URL writes it
    std::string port; ///< empty if the URL has none
    std::string path;
};

/// As libcurl, which fetches it, reads the URL; nothing if it cannot.
std::optional<Url> parse_url(const std::string& url);

/// "http://192.0.2.7:8080/a.sdp" in quotes, for the log.
std::string shown_url(const std::string& url);

} // namespace nmos_instrument::host

#endif

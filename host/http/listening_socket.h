// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_LISTENING_SOCKET_H
#define NMOS_INSTRUMENT_HOST_HTTP_LISTENING_SOCKET_H

#include <cstdint>
#include <string>

namespace nmos_instrument::host {

struct ListeningSocket
{
    int descriptor;
    std::uint16_t port;
};

/// Made here rather than by libmicrohttpd, which would not say why it cannot. Throws as HttpServer does.
ListeningSocket listen_on(const std::string& address, std::uint16_t port);

} // namespace nmos_instrument::host

#endif

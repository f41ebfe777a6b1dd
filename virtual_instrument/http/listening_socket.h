// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_HTTP_LISTENING_SOCKET_H
#define VIRTUAL_INSTRUMENT_HTTP_LISTENING_SOCKET_H

#include <cstdint>
#include <string>

namespace virtual_instrument {

struct ListeningSocket
{
    int descriptor;
    std::uint16_t port;
};

/// Made here rather than by libmicrohttpd, which would not say why it cannot. Throws as HttpServer does.
ListeningSocket listen_on(const std::string& address, std::uint16_t port);

} // namespace virtual_instrument

#endif

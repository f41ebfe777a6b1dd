// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_LISTENING_SOCKET_H
#define NMOS_INSTRUMENT_HOST_HTTP_LISTENING_SOCKET_H

#include <cstdint>
#include <string>
#include <utility>

namespace nmos_instrument::host {

/// A socket that listens. Who connects before a server accepts waits in the kernel's queue. Made
/// here rather than by libmicrohttpd, which would not say why it cannot.
class ListeningSocket
{
public:
    /// Port 0: any free one. Throws std::system_error whose text names address and port,
    /// std::invalid_argument for an address that is not IPv4.
    ListeningSocket(const std::string& address, std::uint16_t port);
    ~ListeningSocket();

    ListeningSocket(ListeningSocket&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)), port_(other.port_)
    {}
    ListeningSocket& operator=(ListeningSocket&&) = delete;

    std::uint16_t port() const { return port_; }

    /// Gives the descriptor away: whoever takes it closes it.
    int release() { return std::exchange(descriptor_, -1); }

private:
    int descriptor_;
    std::uint16_t port_;
};

/// At the first port from `port` on that nobody uses.
ListeningSocket listen_at_first_free_port(const std::string& address, std::uint16_t port);

} // namespace nmos_instrument::host

#endif

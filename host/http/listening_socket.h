// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_LISTENING_SOCKET_H
#define NMOS_INSTRUMENT_HOST_HTTP_LISTENING_SOCKET_H

#include <cstdint>
#include <utility>

#include "network/listen_at.h"

namespace nmos_instrument::host {

/// A socket that listens. Clients that connect before a server accepts them wait in the kernel's
/// queue. It is made here because libmicrohttpd would not say why it failed.
class ListeningSocket
{
public:
    /// Port 0: any free one. Every address means IPv4 and, if the machine has it, IPv6. Throws
    /// std::system_error whose text names place and port, std::invalid_argument for an address that
    /// is neither IPv4 nor IPv6.
    ListeningSocket(const ListenAt& where, std::uint16_t port);
    ~ListeningSocket();

    ListeningSocket(ListeningSocket&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)), port_(other.port_)
    {}
    ListeningSocket& operator=(ListeningSocket&&) = delete;

    std::uint16_t port() const { return port_; }

    /// Another descriptor of the same socket, which the caller has to close. Throws
    /// std::system_error.
    int duplicate() const;

private:
    int descriptor_;
    std::uint16_t port_;
};

/// Listens at the first free port from `port` on.
ListeningSocket listen_at_first_free_port(const ListenAt& where, std::uint16_t port);

} // namespace nmos_instrument::host

#endif

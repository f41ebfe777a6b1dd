// SPDX-License-Identifier: Apache-2.0

#include "http/listening_socket.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

sockaddr_in name_of(const std::string& address, std::uint16_t port)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1)
        throw std::invalid_argument("'" + address + "' is not an IPv4 address");
    return name;
}

/// Binds, listens, and writes the actual port into `name`; false, with errno, if it cannot.
bool listen_on(int descriptor, sockaddr_in& name)
{
    // Otherwise a restart would have to wait until the kernel forgets the old connections.
    const int yes = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    // The kernel cuts the queue to net.core.somaxconn.
    constexpr int queue_length = 4096;
    socklen_t length = sizeof name;
    auto* const any_name = reinterpret_cast<sockaddr*>(&name);
    return bind(descriptor, any_name, length) == 0 && listen(descriptor, queue_length) == 0 &&
           getsockname(descriptor, any_name, &length) == 0;
}

} // namespace

ListeningSocket::ListeningSocket(const std::string& address, std::uint16_t port)
    : descriptor_(-1), port_(port)
{
    sockaddr_in name = name_of(address, port);
    descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor_ < 0 || !listen_on(descriptor_, name)) {
        const int reason = errno;
        if (descriptor_ >= 0)
            close(descriptor_);
        throw std::system_error(reason, std::generic_category(),
                                address + ':' + std::to_string(port));
    }
    port_ = ntohs(name.sin_port);
}

ListeningSocket::~ListeningSocket()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

int ListeningSocket::duplicate() const
{
    const int copy = fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
    if (copy < 0)
        throw std::system_error(errno, std::generic_category(), "listening socket");
    return copy;
}

ListeningSocket listen_at_first_free_port(const std::string& address, std::uint16_t port)
{
    constexpr std::uint16_t last = 65535;
    for (;; ++port) {
        try {
            return {address, port};
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::address_in_use || port == last)
                throw;
        }
    }
}

} // namespace nmos_instrument::host

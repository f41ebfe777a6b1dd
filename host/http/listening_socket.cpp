// SPDX-License-Identifier: Apache-2.0

#include "http/listening_socket.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

/// An address and a port, as the system takes them.
struct SocketName
{
    template <class Name>
    explicit SocketName(const Name& name) : length(sizeof name)
    {
        std::memcpy(&storage, &name, sizeof name);
    }

    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }

    sockaddr_storage storage{};
    socklen_t length;
};

SocketName ipv4_name(const in_addr& address, std::uint16_t port)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    name.sin_addr = address;
    return SocketName(name);
}

SocketName ipv6_name(const in6_addr& address, std::uint16_t port)
{
    sockaddr_in6 name{};
    name.sin6_family = AF_INET6;
    name.sin6_port = htons(port);
    name.sin6_addr = address;
    return SocketName(name);
}

bool has_ipv6()
{
    const int descriptor = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return errno != EAFNOSUPPORT;
    close(descriptor);
    return true;
}

SocketName name_of(const std::string& address, std::uint16_t port)
{
    in_addr ipv4{};
    in6_addr ipv6{};
    if (address.empty())
        return has_ipv6() ? ipv6_name(in6addr_any, port) : ipv4_name(in_addr{INADDR_ANY}, port);
    if (inet_pton(AF_INET, address.c_str(), &ipv4) == 1)
        return ipv4_name(ipv4, port);
    if (inet_pton(AF_INET6, address.c_str(), &ipv6) == 1)
        return ipv6_name(ipv6, port);
    throw std::invalid_argument("'" + address + "' is neither an IPv4 nor an IPv6 address");
}

std::uint16_t port_of(const SocketName& name)
{
    sockaddr_in ipv4; // an IPv6 name has the port at the same place
    std::memcpy(&ipv4, &name.storage, sizeof ipv4);
    return ntohs(ipv4.sin_port);
}

bool set_option(int descriptor, int level, int option, int value)
{
    return setsockopt(descriptor, level, option, &value, sizeof value) == 0;
}

bool bind_to_interface(int descriptor, const std::string& interface)
{
    return interface.empty() ||
           setsockopt(descriptor, SOL_SOCKET, SO_BINDTODEVICE, interface.c_str(),
                      static_cast<socklen_t>(interface.size() + 1)) == 0;
}

/// Binds, listens, and writes the actual port into `name`; false, with errno, if it cannot.
bool listen_on(int descriptor, const std::string& interface, SocketName& name)
{
    // Otherwise a restart would have to wait until the kernel forgets the old connections.
    set_option(descriptor, SOL_SOCKET, SO_REUSEADDR, 1);
    // Every address means IPv4 too, whatever the system's default.
    if (name.storage.ss_family == AF_INET6 && !set_option(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, 0))
        return false;
    // The kernel cuts the queue to net.core.somaxconn.
    constexpr int queue_length = 4096;
    return bind_to_interface(descriptor, interface) &&
           bind(descriptor, name.get(), name.length) == 0 &&
           listen(descriptor, queue_length) == 0 &&
           getsockname(descriptor, name.get(), &name.length) == 0;
}

std::string why_not(const ListenAt& where, std::uint16_t port, int error)
{
    std::string what = text_of(where, port);
    if (error == EPERM && !where.interface.empty())
        what += ": before Linux 5.7 only root may listen at an interface (CAP_NET_RAW), but "
                "everybody at an address";
    return what;
}

} // namespace

ListeningSocket::ListeningSocket(const ListenAt& where, std::uint16_t port)
    : descriptor_(-1), port_(port)
{
    SocketName name = name_of(where.address, port);
    descriptor_ = socket(name.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor_ < 0 || !listen_on(descriptor_, where.interface, name)) {
        const int reason = errno;
        if (descriptor_ >= 0)
            close(descriptor_);
        throw std::system_error(reason, std::generic_category(), why_not(where, port, reason));
    }
    port_ = port_of(name);
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

ListeningSocket listen_at_first_free_port(const ListenAt& where, std::uint16_t port)
{
    constexpr std::uint16_t last = 65535;
    for (;; ++port) {
        try {
            return {where, port};
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::address_in_use || port == last)
                throw;
        }
    }
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "http/listening_socket.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {

namespace {

[[noreturn]] void fail(int descriptor, const std::string& where)
{
    const int reason = errno;
    if (descriptor >= 0)
        close(descriptor);
    throw std::system_error(reason, std::generic_category(), where);
}

} // namespace

ListeningSocket listen_on(const std::string& address, std::uint16_t port)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1)
        throw std::invalid_argument("'" + address + "' is no IPv4 address");

    const std::string where = address + ':' + std::to_string(port);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        fail(descriptor, where);
    // A restart must not wait for the connections of the last run to be forgotten.
    const int yes = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    // The kernel cuts the queue to net.core.somaxconn.
    constexpr int queue_length = 4096;
    socklen_t length = sizeof name;
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0 ||
        listen(descriptor, queue_length) != 0 ||
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&name), &length) != 0)
        fail(descriptor, where);
    return {descriptor, ntohs(name.sin_port)};
}

} // namespace nmos_instrument::host

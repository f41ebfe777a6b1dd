// SPDX-License-Identifier: Apache-2.0

#include "http/client_address.h"

#include <algorithm>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace nmos_instrument::host {
namespace {

constexpr ClientKey mapped_ipv4 = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
constexpr std::size_t mapped_bits = 96;
constexpr std::size_t network_bits = 64;

/// All 128 bits, an IPv4 address as IPv6 maps it.
ClientKey bytes_of(const sockaddr* address)
{
    ClientKey bytes = mapped_ipv4;
    if (address->sa_family == AF_INET) {
        sockaddr_in ipv4;
        std::memcpy(&ipv4, address, sizeof ipv4);
        std::memcpy(bytes.data() + mapped_bits / 8, &ipv4.sin_addr, sizeof ipv4.sin_addr);
    } else {
        sockaddr_in6 ipv6;
        std::memcpy(&ipv6, address, sizeof ipv6);
        std::memcpy(bytes.data(), &ipv6.sin6_addr, bytes.size());
    }
    return bytes;
}

bool is_ipv4(const ClientKey& bytes)
{
    return std::equal(bytes.begin(), bytes.begin() + mapped_bits / 8, mapped_ipv4.begin());
}

void cut_to_network(ClientKey& bytes)
{
    std::fill(bytes.begin() + network_bits / 8, bytes.end(), std::uint8_t{0});
}

std::string text_of(const ClientKey& bytes)
{
    char text[INET6_ADDRSTRLEN];
    if (is_ipv4(bytes))
        inet_ntop(AF_INET, bytes.data() + mapped_bits / 8, text, sizeof text);
    else
        inet_ntop(AF_INET6, bytes.data(), text, sizeof text);
    return text;
}

std::uint16_t port_of(const sockaddr* address)
{
    sockaddr_in ipv4; // an IPv6 name has the port at the same place
    std::memcpy(&ipv4, address, sizeof ipv4);
    return ntohs(ipv4.sin_port);
}

} // namespace

ClientKey client_key(const sockaddr* address)
{
    ClientKey bytes = bytes_of(address);
    if (!is_ipv4(bytes))
        cut_to_network(bytes);
    return bytes;
}

std::string peer_text(const sockaddr* address)
{
    const ClientKey bytes = bytes_of(address);
    const std::string host = is_ipv4(bytes) ? text_of(bytes) : '[' + text_of(bytes) + ']';
    return host + ':' + std::to_string(port_of(address));
}

std::string address_of(const std::string& peer)
{
    const std::string host = peer.substr(0, peer.rfind(':'));
    return host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
}

std::string client_of(const std::string& peer)
{
    std::string address = address_of(peer);
    ClientKey bytes{};
    if (inet_pton(AF_INET6, address.c_str(), bytes.data()) != 1)
        return address;
    cut_to_network(bytes);
    return text_of(bytes) + '/' + std::to_string(network_bits);
}

} // namespace nmos_instrument::host

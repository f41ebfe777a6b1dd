// SPDX-License-Identifier: Apache-2.0

#include "text/ipv4_address.h"

#include <arpa/inet.h>

namespace nmos_instrument::host {

std::optional<std::uint32_t> ipv4_from_dotted_quad(const std::string& text)
{
    in_addr address;
    if (text.find('\0') != std::string::npos || inet_pton(AF_INET, text.c_str(), &address) != 1)
        return std::nullopt;
    return ntohl(address.s_addr);
}

std::optional<std::uint32_t> ipv4_from_any_form(const std::string& text)
{
    in_addr address;
    if (inet_aton(text.c_str(), &address) == 0)
        return std::nullopt;
    return ntohl(address.s_addr);
}

std::string dotted_quad(std::uint32_t address)
{
    const in_addr in{htonl(address)};
    char text[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &in, text, sizeof text);
    return text;
}

bool is_ipv6(const std::string& text)
{
    in6_addr address;
    return text.find('\0') == std::string::npos && inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

bool is_loopback(const std::string& text)
{
    const auto ipv4 = ipv4_from_dotted_quad(text);
    return (ipv4 && is_loopback(*ipv4)) || text == "::1" || text == "[::1]" || text == "localhost";
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_IPV4_ADDRESS_H
#define NMOS_INSTRUMENT_HOST_TEXT_IPV4_ADDRESS_H

#include <cstdint>
#include <optional>
#include <string>

namespace nmos_instrument::host {

/// The value of a dotted quad in decimal without leading zeros, which every reader understands in
/// the same way; nothing for any other text.
std::optional<std::uint32_t> ipv4_from_dotted_quad(const std::string& text);

/// The value of any text that inet_aton accepts, also "10.1" and "0x0a000001". The library checks
/// SDP files by inet_aton, so an accepted file may contain such a text.
std::optional<std::uint32_t> ipv4_from_any_form(const std::string& text);

std::string dotted_quad(std::uint32_t address);

bool is_ipv6(const std::string& text);

/// Whether only the machine itself is meant: 127.0.0.0/8, ::1 also in the brackets of a URL, localhost.
bool is_loopback(const std::string& text);

/// 1.0.0.0 to 223.255.255.255: the addresses that a host may have.
constexpr bool is_unicast(std::uint32_t address)
{
    return address >> 24 != 0 && address >> 28 < 0xe;
}

/// 127.0.0.0/8
constexpr bool is_loopback(std::uint32_t address)
{
    return address >> 24 == 0x7f;
}

/// 169.254.0.0/16
constexpr bool is_link_local(std::uint32_t address)
{
    return address >> 16 == 0xa9fe;
}

/// 224.0.0.0/4
constexpr bool is_multicast(std::uint32_t address)
{
    return address >> 28 == 0xe;
}

} // namespace nmos_instrument::host

#endif

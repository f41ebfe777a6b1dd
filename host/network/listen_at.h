// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NETWORK_LISTEN_AT_H
#define NMOS_INSTRUMENT_HOST_NETWORK_LISTEN_AT_H

#include <cstdint>
#include <string>

namespace nmos_instrument::host {

/// Where to listen; without any of it, at every address of the machine.
struct ListenAt
{
    std::string address{};    ///< IPv4, or IPv6 without brackets
    std::string interface {}; ///< at every address, but only to what arrives by this interface

    bool operator==(const ListenAt&) const = default;
};

/// "192.0.2.10:3000", "[::1]:3000", "eth0:3000", "any:3000"
std::string text_of(const ListenAt& where, std::uint16_t port);

} // namespace nmos_instrument::host

#endif

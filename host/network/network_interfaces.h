// SPDX-License-Identifier: Apache-2.0
//
// The network interfaces of the machine, as they are at this moment.

#ifndef NMOS_INSTRUMENT_HOST_NETWORK_NETWORK_INTERFACES_H
#define NMOS_INSTRUMENT_HOST_NETWORK_NETWORK_INTERFACES_H

#include <cstdint>
#include <string>
#include <vector>

namespace nmos_instrument::host {

struct NetworkInterface
{
    struct Ipv4
    {
        std::uint32_t address;
        int prefix; ///< of its network

        bool operator==(const Ipv4&) const = default;
    };

    std::string name;
    bool is_up = false;
    bool is_loopback = false;
    bool has_default_route = false; ///< the IPv4 one that counts, if there are several
    std::vector<Ipv4> ipv4;         ///< in the order of the system
    std::vector<std::string> ipv6;

    bool operator==(const NetworkInterface&) const = default;
};

/// Throws std::system_error if the system does not say.
std::vector<NetworkInterface> network_interfaces();

/// Null if there is none of that name.
const NetworkInterface* find_interface(const std::vector<NetworkInterface>& interfaces,
                                       const std::string& name);

/// The name of the interface of the default route of the lowest metric in a text like that of
/// /proc/net/route; empty if there is none.
std::string interface_of_default_route(const std::string& routes);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#include "node/listening.h"

#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "network/network_interfaces.h"
#include "text/ipv4_address.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

/// "192.0.2.10 (eth0), ::1 (lo)"
std::string own_addresses()
{
    std::vector<std::string> addresses;
    for (const NetworkInterface& interface : network_interfaces()) {
        for (const NetworkInterface::Ipv4& own : interface.ipv4)
            addresses.push_back(dotted_quad(own.address) + " (" + interface.name + ')');
        for (const std::string& own : interface.ipv6)
            addresses.push_back(own + " (" + interface.name + ')');
    }
    return word_list(addresses);
}

} // namespace

ListeningSocket listen(const ListenAt& where, std::uint16_t port, IfPortInUse if_in_use)
{
    if (if_in_use == IfPortInUse::take_next_free_one)
        return listen_at_first_free_port(where, port);
    try {
        return {where, port};
    } catch (const std::system_error& error) {
        if (error.code() != std::errc::address_not_available)
            throw;
        throw std::runtime_error(std::string(error.what()) + "; this machine has " +
                                 own_addresses());
    }
}

} // namespace nmos_instrument::host

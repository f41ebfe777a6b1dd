// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NETWORK_ADDRESS_SOURCE_H
#define NMOS_INSTRUMENT_HOST_NETWORK_ADDRESS_SOURCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "network/network_interfaces.h"

namespace nmos_instrument::host {

/// Where the one IPv4 address comes from that the texts of the instrument name; without any of it,
/// from an interface that is up and no loopback, if possible from that of the default route.
struct AddressSource
{
    std::string fixed{};      ///< this address, whether or not the machine has it
    std::string interface {}; ///< the first one of this interface

    bool operator==(const AddressSource&) const = default;
};

/// The address, as the interfaces are now; nothing if there is none. Link-local addresses (RFC 3927)
/// are taken only where there are no others. Among equals it is `current`, so that an address that
/// is added does not move an instrument, or else the first.
std::optional<std::uint32_t> choose_address(const AddressSource& source,
                                            const std::vector<NetworkInterface>& interfaces,
                                            std::optional<std::uint32_t> current);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NETWORK_REACH_H
#define NMOS_INSTRUMENT_HOST_NETWORK_REACH_H

#include <optional>
#include <string>
#include <vector>

#include "network/address_source.h"
#include "network/listen_at.h"
#include "network/network_interfaces.h"

namespace nmos_instrument::host {

/// How others reach the instrument.
struct Reach
{
    ListenAt listen;
    AddressSource address; ///< that the texts name

    bool operator==(const Reach&) const = default;
};

/// What the settings mean. `listen` is an address, an interface or "any", and without it where the
/// address is; `address` is IPv4 or an interface, and without it that of where it listens; without
/// both it is 127.0.0.1. Throws std::runtime_error if there is nothing that the texts could name.
Reach reach_of(const std::optional<std::string>& listen, const std::optional<std::string>& address);

/// Throws std::runtime_error, with the interfaces that there are, if one of the reach is not.
void expect_interfaces(const Reach& reach, const std::vector<NetworkInterface>& interfaces);

} // namespace nmos_instrument::host

#endif

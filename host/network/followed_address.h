// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NETWORK_FOLLOWED_ADDRESS_H
#define NMOS_INSTRUMENT_HOST_NETWORK_FOLLOWED_ADDRESS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "log/log.h"
#include "network/address_source.h"
#include "network/network_interfaces.h"

namespace nmos_instrument::host {

/// The address that the texts of the instrument name, while those of the machine change. One thread
/// only.
class FollowedAddress
{
public:
    using Interfaces = std::function<std::vector<NetworkInterface>()>;
    using Moved = std::function<void(const std::string& address)>;

    FollowedAddress(AddressSource source, Log log, Interfaces interfaces = network_interfaces);

    /// True if it can change.
    bool may_move() const { return source_.fixed.empty(); }

    /// Looks at the interfaces. Calls `moved` with the address at the first look that finds one, and
    /// whenever it is another; if `moved` throws, the next look calls it again. An address that is
    /// lost stays until there is another. What is missing is logged once.
    void look(const Moved& moved);

private:
    void note_absence(const std::vector<NetworkInterface>& interfaces);

    const AddressSource source_;
    const Log log_;
    const Interfaces interfaces_;
    std::optional<std::uint32_t> current_;
    bool is_absent_ = false;
};

} // namespace nmos_instrument::host

#endif

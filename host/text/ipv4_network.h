// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_IPV4_NETWORK_H
#define NMOS_INSTRUMENT_HOST_TEXT_IPV4_NETWORK_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nmos_instrument::host {

/// All addresses that begin with the same bits, as RFC 4632 writes them: 192.0.2.0/24.
struct Ipv4Network
{
    std::uint32_t address = 0; ///< the bits behind the prefix are 0
    int prefix = 32;           ///< 0 to 32; 0 is every address

    bool contains(std::uint32_t other) const;

    /// True if every address of `other` is in this network too.
    bool contains(const Ipv4Network& other) const;

    bool operator==(const Ipv4Network&) const = default;
};

/// The network of that size around an address.
Ipv4Network network_around(std::uint32_t address, int prefix);

/// "192.0.2.0/24", or one address as "192.0.2.7". Bits behind the prefix, as in "192.0.2.7/24", are
/// refused: it is not clear whether the host or its network is meant.
std::optional<Ipv4Network> parse_ipv4_network(std::string_view text);

/// What parse_ipv4_network takes, in words.
std::string_view allowed_ipv4_network();

/// "192.0.2.0/24"; one address without its "/32".
std::string text_of(const Ipv4Network& network);

/// True if one of the networks has the address.
bool any_contains(const std::vector<Ipv4Network>& networks, std::uint32_t address);

} // namespace nmos_instrument::host

#endif

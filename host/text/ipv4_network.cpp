// SPDX-License-Identifier: Apache-2.0

#include "text/ipv4_network.h"

#include <algorithm>

#include "text/ascii.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

/// The bits that the addresses of a network have in common.
constexpr std::uint32_t mask_of(int prefix)
{
    // A shift by all 32 bits is undefined.
    return prefix == 0 ? 0 : ~std::uint32_t{0} << (32 - prefix);
}

/// 0 to 32 in decimal, without leading zeros.
std::optional<int> parse_prefix(std::string_view text)
{
    const bool leading_zero = text.size() > 1 && text.front() == '0';
    if (text.empty() || text.size() > 2 || leading_zero ||
        !std::all_of(text.begin(), text.end(), is_digit))
        return std::nullopt;
    const int prefix = std::stoi(std::string(text));
    return prefix <= 32 ? std::optional(prefix) : std::nullopt;
}

} // namespace

bool Ipv4Network::contains(std::uint32_t other) const
{
    return (other & mask_of(prefix)) == address;
}

bool Ipv4Network::contains(const Ipv4Network& other) const
{
    return other.prefix >= prefix && contains(other.address);
}

Ipv4Network network_around(std::uint32_t address, int prefix)
{
    return {address & mask_of(prefix), prefix};
}

std::optional<Ipv4Network> parse_ipv4_network(std::string_view text)
{
    const std::size_t slash = text.find('/');
    const auto address = ipv4_from_dotted_quad(std::string(text.substr(0, slash)));
    const auto prefix =
        slash == std::string_view::npos ? std::optional(32) : parse_prefix(text.substr(slash + 1));
    if (!address || !prefix)
        return std::nullopt;
    const Ipv4Network network = network_around(*address, *prefix);
    return network.address == *address ? std::optional(network) : std::nullopt;
}

std::string_view allowed_ipv4_network()
{
    return "an IPv4 network like 192.0.2.0/24 with no bits set behind the prefix, or an IPv4 "
           "address like 192.0.2.7";
}

std::string text_of(const Ipv4Network& network)
{
    const std::string address = dotted_quad(network.address);
    return network.prefix == 32 ? address : address + '/' + std::to_string(network.prefix);
}

bool any_contains(const std::vector<Ipv4Network>& networks, std::uint32_t address)
{
    return std::any_of(networks.begin(), networks.end(),
                       [address](const Ipv4Network& network) { return network.contains(address); });
}

} // namespace nmos_instrument::host

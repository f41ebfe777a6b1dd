// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_hosts.h"

#include <algorithm>
#include <iterator>

#include "network/network_interfaces.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

/// Where no ordinary host is: 0.0.0.0/8, by which Linux connects to the machine itself, loopback
/// and link-local (RFC 6890).
constexpr Ipv4Network special_ranges[] = {{0x00000000, 8}, {0x7f000000, 8}, {0xa9fe0000, 16}};

bool is_special(std::uint32_t address)
{
    return std::any_of(std::begin(special_ranges), std::end(special_ranges),
                       [=](const Ipv4Network& range) { return range.contains(address); });
}

bool is_special(const Ipv4Network& network)
{
    return std::any_of(std::begin(special_ranges), std::end(special_ranges),
                       [&](const Ipv4Network& range) { return range.contains(network); });
}

} // namespace

ManifestHosts::ManifestHosts(const std::vector<Ipv4Network>& own, const Ipv4Network& served,
                             const std::vector<Ipv4Network>& named)
{
    constexpr Ipv4Network unspecified{0x00000000, 8};
    const auto add = [](std::vector<Ipv4Network>& list, const Ipv4Network& network) {
        if (std::find(list.begin(), list.end(), network) == list.end())
            list.push_back(network);
    };
    for (const Ipv4Network& network : own) {
        if (!is_special(network))
            add(networks_, network);
    }
    if (!is_special(served))
        add(networks_, served);
    else if (!unspecified.contains(served)) // served everywhere says nothing of loopback
        add(special_, served);
    for (const Ipv4Network& network : named)
        add(is_special(network) ? special_ : networks_, network);
}

bool ManifestHosts::allow(std::uint32_t address) const
{
    return any_contains(is_special(address) ? special_ : networks_, address);
}

std::string ManifestHosts::text() const
{
    std::vector<Ipv4Network> all = networks_;
    all.insert(all.end(), special_.begin(), special_.end());
    return word_list(all, [](const Ipv4Network& network) { return text_of(network); });
}

Ipv4Network network_of_interface(std::uint32_t address)
{
    for (const NetworkInterface& interface : network_interfaces()) {
        for (const NetworkInterface::Ipv4& own : interface.ipv4) {
            if (own.address == address)
                return network_around(address, own.prefix);
        }
    }
    constexpr int usual_prefix = 24;
    return network_around(address, usual_prefix);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "network/address_source.h"

#include <algorithm>
#include <tuple>

#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

/// What makes one address better than another; the least is the best.
struct Candidate
{
    bool is_link_local;
    bool is_beside_default_route;
    bool is_new; ///< not the current one
    std::uint32_t address;

    auto rank() const { return std::tuple(is_link_local, is_beside_default_route, is_new); }
};

bool comes_from(const NetworkInterface& interface, const AddressSource& source)
{
    return source.interface.empty() ? interface.is_up && !interface.is_loopback
                                    : interface.name == source.interface;
}

} // namespace

std::optional<std::uint32_t> choose_address(const AddressSource& source,
                                            const std::vector<NetworkInterface>& interfaces,
                                            std::optional<std::uint32_t> current)
{
    if (!source.fixed.empty())
        return ipv4_from_dotted_quad(source.fixed);
    std::vector<Candidate> candidates;
    for (const NetworkInterface& interface : interfaces) {
        if (!comes_from(interface, source))
            continue;
        for (const NetworkInterface::Ipv4& own : interface.ipv4)
            candidates.push_back({is_link_local(own.address), !interface.has_default_route,
                                  own.address != current, own.address});
    }
    // The first of several that are alike.
    const auto best = std::min_element(
        candidates.begin(), candidates.end(),
        [](const Candidate& left, const Candidate& right) { return left.rank() < right.rank(); });
    return best == candidates.end() ? std::nullopt : std::optional(best->address);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "network/followed_address.h"

#include <algorithm>
#include <utility>

#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

std::string name_of(const AddressSource& source)
{
    return source.interface.empty() ? "the network interfaces" : source.interface;
}

/// It has addresses, but none that can be named. The link-local ones are always there.
bool has_only_ipv6(const AddressSource& source, const std::vector<NetworkInterface>& interfaces)
{
    const NetworkInterface* const interface = find_interface(interfaces, source.interface);
    return interface != nullptr && interface->ipv4.empty() &&
           std::any_of(interface->ipv6.begin(), interface->ipv6.end(),
                       [](const std::string& address) { return !address.starts_with("fe80:"); });
}

} // namespace

FollowedAddress::FollowedAddress(AddressSource source, Log log, Interfaces interfaces)
    : source_(std::move(source)), log_(std::move(log)), interfaces_(std::move(interfaces))
{}

void FollowedAddress::look(const Moved& moved)
{
    const std::vector<NetworkInterface> interfaces = interfaces_();
    const std::optional<std::uint32_t> found = choose_address(source_, interfaces, current_);
    if (!found) {
        note_absence(interfaces);
        return;
    }
    if (found != current_)
        moved(dotted_quad(*found));
    else if (is_absent_)
        log_.info("{}: the address {} is back", name_of(source_), dotted_quad(*found));
    current_ = found;
    is_absent_ = false;
}

void FollowedAddress::note_absence(const std::vector<NetworkInterface>& interfaces)
{
    if (is_absent_)
        return;
    is_absent_ = true;
    if (current_)
        log_.warning("{}: the address {} is gone; it is named until there is another",
                     name_of(source_), dotted_quad(*current_));
    else if (has_only_ipv6(source_, interfaces))
        log_.warning("waiting for an IPv4 address of {}: it has only IPv6, which the texts of the "
                     "instrument cannot name; --address names another one",
                     name_of(source_));
    else
        log_.warning("waiting for an IPv4 address of {}", name_of(source_));
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "network/network_interfaces.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <sstream>
#include <system_error>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

namespace nmos_instrument::host {
namespace {

struct FreeInterfaces
{
    void operator()(ifaddrs* interfaces) const { freeifaddrs(interfaces); }
};

std::uint32_t ipv4_in(const sockaddr* address)
{
    sockaddr_in ipv4;
    std::memcpy(&ipv4, address, sizeof ipv4);
    return ntohl(ipv4.sin_addr.s_addr);
}

std::string ipv6_text(const sockaddr* address)
{
    sockaddr_in6 ipv6;
    std::memcpy(&ipv6, address, sizeof ipv6);
    char text[INET6_ADDRSTRLEN];
    inet_ntop(AF_INET6, &ipv6.sin6_addr, text, sizeof text);
    return text;
}

/// The system names an interface once for each of its addresses, where an IPv4 address may have a
/// label behind the name: "eth0:1".
NetworkInterface& entry_of(std::vector<NetworkInterface>& interfaces, const ifaddrs& one)
{
    const std::string label = one.ifa_name;
    const std::string name = label.substr(0, label.find(':'));
    const auto known =
        std::find_if(interfaces.begin(), interfaces.end(),
                     [&](const NetworkInterface& entry) { return entry.name == name; });
    if (known != interfaces.end())
        return *known;
    NetworkInterface& entry = interfaces.emplace_back();
    entry.name = name;
    entry.is_up = (one.ifa_flags & IFF_UP) != 0;
    entry.is_loopback = (one.ifa_flags & IFF_LOOPBACK) != 0;
    return entry;
}

std::string routes_of_machine()
{
    std::ifstream file("/proc/net/route");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

std::vector<NetworkInterface> network_interfaces()
{
    ifaddrs* found = nullptr;
    if (getifaddrs(&found) != 0)
        throw std::system_error(errno, std::generic_category(), "network interfaces");
    const std::unique_ptr<ifaddrs, FreeInterfaces> owner(found);
    std::vector<NetworkInterface> interfaces;
    for (const ifaddrs* one = found; one != nullptr; one = one->ifa_next) {
        NetworkInterface& interface = entry_of(interfaces, *one);
        if (one->ifa_addr == nullptr)
            continue;
        if (one->ifa_addr->sa_family == AF_INET && one->ifa_netmask != nullptr)
            interface.ipv4.push_back(
                {ipv4_in(one->ifa_addr), std::popcount(ipv4_in(one->ifa_netmask))});
        if (one->ifa_addr->sa_family == AF_INET6)
            interface.ipv6.push_back(ipv6_text(one->ifa_addr));
    }
    const std::string default_route = interface_of_default_route(routes_of_machine());
    for (NetworkInterface& interface : interfaces)
        interface.has_default_route = interface.name == default_route;
    return interfaces;
}

const NetworkInterface* find_interface(const std::vector<NetworkInterface>& interfaces,
                                       const std::string& name)
{
    const auto found =
        std::find_if(interfaces.begin(), interfaces.end(),
                     [&](const NetworkInterface& interface) { return interface.name == name; });
    return found == interfaces.end() ? nullptr : &*found;
}

std::string interface_of_default_route(const std::string& routes)
{
    std::string best;
    unsigned long lowest_metric = std::numeric_limits<unsigned long>::max();
    std::istringstream lines(routes);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string name;
        std::string destination;
        std::string mask;
        std::string skipped;
        unsigned long metric = 0;
        words >> name >> destination;
        words >> skipped >> skipped >> skipped >> skipped; // gateway, flags, two counters
        words >> metric >> mask;
        if (words && destination == "00000000" && mask == "00000000" && metric < lowest_metric) {
            best = name;
            lowest_metric = metric;
        }
    }
    return best;
}

} // namespace nmos_instrument::host

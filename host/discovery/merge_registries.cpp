// SPDX-License-Identifier: Apache-2.0

#include "discovery/merge_registries.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include "http/url.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

std::tuple<std::string, std::string, std::string> endpoint(const Registry& registry)
{
    const Url url = parse_url(registry.url).value_or(Url{});
    return {url.scheme, registry.address, url.port};
}

bool has_ipv4_address(const std::vector<Registry>& found, const std::string& url)
{
    return std::any_of(found.begin(), found.end(), [&](const Registry& other) {
        return other.url == url && !is_ipv6(other.address);
    });
}

auto order(const Registry& registry)
{
    return std::tie(registry.priority, registry.url, registry.address);
}

} // namespace

std::vector<Registry> merge_registries(const std::vector<Registry>& found)
{
    std::set<std::tuple<std::string, std::string, std::string>> endpoints;
    std::vector<Registry> merged;
    for (const Registry& registry : found) {
        if (is_ipv6(registry.address) && has_ipv4_address(found, registry.url))
            continue;
        if (endpoints.insert(endpoint(registry)).second)
            merged.push_back(registry);
    }
    std::sort(merged.begin(), merged.end(),
              [](const Registry& a, const Registry& b) { return order(a) < order(b); });
    return merged;
}

} // namespace nmos_instrument::host

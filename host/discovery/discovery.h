// SPDX-License-Identifier: Apache-2.0
//
// Finds registries: by unicast DNS-SD in the machine's search domain, and by mDNS (IS-04 v1.2,
// Discovery).

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_DISCOVERY_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_DISCOVERY_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "discovery/registry.h"
#include "log/log.h"

namespace nmos_instrument::host {

struct DiscoveryOptions
{
    std::string dns_domain{};            ///< empty: the search domain of resolv.conf(5)
    bool development_registries = false; ///< use those of priority 100 and more too
};

/// Looks for registries as long as it exists. What the build or the machine lacks (avahi-daemon, a
/// search domain) is said once in the log; the rest goes on without it.
class Discovery
{
public:
    /// All that are known, in no particular order.
    using Found = std::function<void(std::vector<Registry>)>;

    /// Looks for the first time at once. `found` is called on a thread of the discovery, one call
    /// at a time: at the end of this search and of each that is asked for, and whenever the list
    /// changes otherwise. It must not destroy the discovery.
    Discovery(DiscoveryOptions options, Log log, Found found);

    /// When it returns, `found` is not called any more.
    ~Discovery();

    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;

    /// Looks again. Any thread; returns at once. It takes up to a few seconds until `found` is
    /// called; searches that are asked for meanwhile are one.
    void search();

private:
    class Searches;
    std::unique_ptr<Searches> searches_;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_SEARCH_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_SEARCH_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "discovery/advertised_registry.h"
#include "discovery/stop_request.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// Looks for registries by unicast DNS-SD (RFC 6763). A build without c-ares finds none. One thread.
class DnsSearch
{
public:
    using Clock = std::chrono::steady_clock;

    /// `domain`: empty for the search domains of resolv.conf(5), which is read for each search.
    /// `server`: one like "127.0.0.1:5300" instead of those of resolv.conf; for tests.
    DnsSearch(std::string domain, Log log, std::string server = "");
    ~DnsSearch();

    DnsSearch(const DnsSearch&) = delete;
    DnsSearch& operator=(const DnsSearch&) = delete;

    /// Takes up to 3 seconds, and ends at once if it is asked to stop. What no server answers for is
    /// used as long as the last answer said.
    std::vector<AdvertisedRegistry> search(const StopRequest& stop);

    /// When the answers of the last search are too old; it may have had none.
    Clock::time_point next() const;

private:
    class Findings;
    std::unique_ptr<Findings> findings_;
};

} // namespace nmos_instrument::host

#endif

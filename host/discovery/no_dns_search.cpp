// SPDX-License-Identifier: Apache-2.0
//
// In place of dns_search.cpp in a build without c-ares.

#include <utility>

#include "discovery/dns_search.h"

namespace nmos_instrument::host {

class DnsSearch::Findings
{};

DnsSearch::DnsSearch(std::string /*domain*/, Log log, std::string /*server*/)
{
    log.debug("this build has no unicast DNS-SD");
}

DnsSearch::~DnsSearch() = default;

std::vector<AdvertisedRegistry> DnsSearch::search(const StopRequest& /*stop*/)
{
    return {};
}

DnsSearch::Clock::time_point DnsSearch::next() const
{
    return Clock::time_point::max();
}

} // namespace nmos_instrument::host

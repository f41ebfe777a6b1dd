// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_BROWSE_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_BROWSE_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "discovery/advertised_registry.h"
#include "discovery/dns_channel.h"
#include "discovery/stop_request.h"

namespace nmos_instrument::host {

/// One look for registries by unicast DNS: a PTR record names the instances, each has an SRV and a
/// TXT record, and the host of the SRV record has addresses (RFC 6763 4 to 6).
class DnsBrowse
{
public:
    struct Found
    {
        AdvertisedRegistry registry;
        std::chrono::seconds lifetime; ///< the shortest of the records that it is made of
    };

    DnsBrowse(DnsChannel& channel, const std::vector<std::string>& domains);

    DnsBrowse(const DnsBrowse&) = delete;
    DnsBrowse& operator=(const DnsBrowse&) = delete;

    /// Call it once.
    void run(DnsChannel::TimePoint end, const StopRequest& stop) { channel_.run(end, stop); }

    /// After run(): of the instances about which all is known.
    std::vector<Found> found() const;

    /// After run(): what was not answered, for people; empty if all was.
    const std::string& trouble() const { return trouble_; }

    /// After run(): instances beyond the most that are looked at.
    std::size_t too_many() const { return too_many_; }

private:
    struct Instance
    {
        std::string full_name;
        std::string domain;
        std::string host{};
        int port = 0;
        TxtStrings txt{};
        std::vector<std::string> addresses{};
        std::uint32_t ttl; ///< seconds
        bool unanswered = false;
        bool address_unanswered = false;
    };

    void ask_for_instances(const std::string& domain);
    void add_instance(const std::string& name, const std::string& domain, std::uint32_t ttl);
    void ask_about(Instance& instance);
    void take_service(Instance& instance, DnsMessage message);
    void ask_for_addresses(Instance& instance, DnsType type);
    bool is_answered(const DnsChannel::Answer& answer, const std::string& name);

    DnsChannel& channel_;
    std::deque<Instance> instances_; ///< questions that are open refer to them
    std::size_t too_many_ = 0;
    std::string trouble_;
};

} // namespace nmos_instrument::host

#endif

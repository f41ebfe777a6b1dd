// SPDX-License-Identifier: Apache-2.0

#include "discovery/dns_browse.h"

#include <algorithm>

#include <fmt/format.h>

#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// Of one host. A registry has one or two.
constexpr std::size_t most_addresses = 8;

template <class Container, class Value>
bool contains(const Container& container, const Value& value)
{
    return std::find(container.begin(), container.end(), value) != container.end();
}

} // namespace

DnsBrowse::DnsBrowse(DnsChannel& channel, const std::vector<std::string>& domains)
    : channel_(channel)
{
    for (const std::string& domain : domains)
        ask_for_instances(domain);
}

void DnsBrowse::ask_for_instances(const std::string& domain)
{
    const std::string name = std::string(registration_service) + '.' + domain;
    channel_.ask(name, DnsType::ptr, [this, name, domain](const DnsChannel::Answer& answer) {
        if (!is_answered(answer, name))
            return;
        for (const DnsRecord& record : dns_records(answer.message, DnsType::ptr))
            if (const auto instance = dns_name(answer.message, record))
                add_instance(*instance, domain, record.ttl);
    });
}

void DnsBrowse::add_instance(const std::string& name, const std::string& domain, std::uint32_t ttl)
{
    if (name.empty())
        return;
    const auto has_name = [&](const Instance& instance) { return instance.full_name == name; };
    if (std::any_of(instances_.begin(), instances_.end(), has_name))
        return;
    if (instances_.size() == most_instances) {
        ++too_many_;
        return;
    }
    instances_.push_back({.full_name = name, .domain = domain, .ttl = ttl});
    ask_about(instances_.back());
}

void DnsBrowse::ask_about(Instance& instance)
{
    const auto name = name_for_question(instance.full_name);
    if (!name) {
        instance.unanswered = true;
        return;
    }
    channel_.ask(*name, DnsType::srv, [this, &instance](const DnsChannel::Answer& answer) {
        if (is_answered(answer, instance.full_name))
            take_service(instance, answer.message);
        else
            instance.unanswered = true;
    });
    channel_.ask(*name, DnsType::txt, [this, &instance](const DnsChannel::Answer& answer) {
        instance.unanswered |= !is_answered(answer, instance.full_name);
        // RFC 6763 6.8: more than one record is not for us.
        const auto records = dns_records(answer.message, DnsType::txt);
        if (records.empty())
            return;
        instance.txt = dns_strings(answer.message, records.front());
        instance.ttl = std::min(instance.ttl, records.front().ttl);
    });
}

void DnsBrowse::take_service(Instance& instance, DnsMessage message)
{
    for (const DnsRecord& record : dns_records(message, DnsType::srv)) {
        const auto service = dns_service(message, record);
        if (!service)
            continue;
        instance.host = service->host;
        instance.port = service->port;
        instance.ttl = std::min(instance.ttl, record.ttl);
        ask_for_addresses(instance, DnsType::a);
        ask_for_addresses(instance, DnsType::aaaa);
        return;
    }
}

void DnsBrowse::ask_for_addresses(Instance& instance, DnsType type)
{
    const auto name = name_for_question(instance.host);
    if (!name || *name == ".")
        return;
    channel_.ask(*name, type, [this, &instance, type](const DnsChannel::Answer& answer) {
        instance.address_unanswered |= !is_answered(answer, instance.host);
        for (const DnsRecord& record : dns_records(answer.message, type)) {
            const auto address = dns_address(answer.message, record);
            if (!address || contains(instance.addresses, *address) ||
                instance.addresses.size() == most_addresses)
                continue;
            instance.addresses.push_back(*address);
            instance.ttl = std::min(instance.ttl, record.ttl);
        }
    });
}

bool DnsBrowse::is_answered(const DnsChannel::Answer& answer, const std::string& name)
{
    if (!answer.is_complete && trouble_.empty())
        trouble_ = fmt::format("no answer about {}: {}", in_quotes(name), answer.trouble);
    return answer.is_complete;
}

std::vector<DnsBrowse::Found> DnsBrowse::found() const
{
    std::vector<Found> found;
    for (const Instance& instance : instances_) {
        // One family of addresses is enough.
        if (instance.unanswered || (instance.address_unanswered && instance.addresses.empty()))
            continue;
        AdvertisedRegistry registry{.name = first_label(instance.full_name),
                                    .host = instance.host,
                                    .port = instance.port,
                                    .txt = instance.txt,
                                    .origin = "DNS-SD in " + instance.domain};
        const std::chrono::seconds lifetime(instance.ttl);
        if (instance.addresses.empty())
            found.push_back({registry, lifetime});
        for (const std::string& address : instance.addresses) {
            registry.address = address;
            found.push_back({registry, lifetime});
        }
    }
    return found;
}

} // namespace nmos_instrument::host

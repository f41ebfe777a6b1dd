// SPDX-License-Identifier: Apache-2.0

#include "discovery/judge_advertisement.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string_view>

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>

#include "text/ascii.h"
#include "text/ipv4_address.h"
#include "text/pieces.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

constexpr std::string_view api_version = "v1.2";
constexpr long first_development_priority = 100;

// Each of these says what is wrong, or nothing.

std::string protocol_fault(const TxtStrings& txt)
{
    const auto protocol = txt_value(txt, "api_proto");
    if (!protocol)
        return "it has no api_proto";
    if (*protocol != "http" && *protocol != "https")
        return fmt::format("its api_proto is {}, not http or https", in_quotes(*protocol));
    return "";
}

bool has_version(std::string_view versions)
{
    while (!versions.empty())
        if (trimmed(cut_off(versions, ',')) == api_version)
            return true;
    return false;
}

std::string version_fault(const TxtStrings& txt)
{
    const auto versions = txt_value(txt, "api_ver");
    if (!versions)
        return "it has no api_ver";
    if (!has_version(*versions))
        return fmt::format("its api_ver {} does not include {}", in_quotes(*versions), api_version);
    return "";
}

/// IS-04 v1.3 added this key; a registry of v1.2 too may have it.
std::string authorization_fault(const TxtStrings& txt)
{
    const auto authorization = txt_value(txt, "api_auth");
    return authorization && same_name(*authorization, "true") ? "it asks for authorization" : "";
}

std::string priority_fault(const TxtStrings& txt, DevelopmentRegistries development)
{
    const auto text = txt_value(txt, "pri");
    if (!text)
        return "it has no pri";
    const auto priority = number_from_to(0, INT_MAX, *text);
    if (!priority)
        return fmt::format("its pri is {}, not a whole number from 0 to {}", in_quotes(*text),
                           INT_MAX);
    if (*priority >= first_development_priority && development == DevelopmentRegistries::left_out)
        return fmt::format("its pri is {}: {} and more are for development", *priority,
                           first_development_priority);
    return "";
}

std::string service_fault(const AdvertisedRegistry& advertised)
{
    if (advertised.host.empty())
        return "it has no SRV record";
    // RFC 2782, Target
    if (advertised.host == ".")
        return "it is not available: the host in its SRV record is \".\"";
    if (advertised.port < 1 || advertised.port > 65535)
        return fmt::format("its port is {}", advertised.port);
    return "";
}

bool is_usable_ipv6(const std::string& text)
{
    in6_addr address;
    return text.find('\0') == std::string::npos &&
           inet_pton(AF_INET6, text.c_str(), &address) == 1 && !IN6_IS_ADDR_UNSPECIFIED(&address) &&
           !IN6_IS_ADDR_MULTICAST(&address) && !IN6_IS_ADDR_V4MAPPED(&address);
}

bool is_ipv6_link_local(const std::string& text)
{
    in6_addr address;
    return inet_pton(AF_INET6, text.c_str(), &address) == 1 && IN6_IS_ADDR_LINKLOCAL(&address);
}

std::string address_fault(const AdvertisedRegistry& advertised)
{
    const std::string& address = advertised.address;
    if (address.empty())
        return fmt::format("its host {} has no address", in_quotes(advertised.host));
    const auto ipv4 = ipv4_from_dotted_quad(address);
    if (ipv4 ? !is_unicast(*ipv4) : !is_usable_ipv6(address))
        return fmt::format("no host has its address {}", in_quotes(address));
    // A URL cannot say which interface it is reached by.
    if (!ipv4 && is_ipv6_link_local(address))
        return fmt::format("its address {} is link-local", in_quotes(address));
    return "";
}

/// In a URL, a name like "10.1" or "reg.0x7f" is an IPv4 address; no top-level domain begins with a
/// digit.
bool may_be_number(std::string_view host)
{
    const std::string_view last = host.substr(host.rfind('.') + 1);
    return last.empty() || is_digit(last.front());
}

bool is_host_name(std::string_view host)
{
    if (host.size() > 253 || may_be_number(host))
        return false;
    while (!host.empty()) {
        const std::string_view label = cut_off(host, '.');
        if (label.empty() || label.size() > 63 ||
            !std::all_of(label.begin(), label.end(), [](char c) {
                return is_letter(c) || is_digit(c) || c == '-' || c == '_';
            }))
            return false;
    }
    return true;
}

/// The host for a URL: its name, or its address if the name does not fit there.
std::string url_host(const AdvertisedRegistry& advertised)
{
    std::string_view host = advertised.host;
    if (host.ends_with('.'))
        host.remove_suffix(1);
    if (is_host_name(host))
        return std::string(host);
    const std::string& address = advertised.address;
    return is_ipv6(address) ? '[' + address + ']' : address;
}

/// What is wrong first, or nothing.
std::string fault_of(const AdvertisedRegistry& advertised, DevelopmentRegistries development)
{
    for (const std::string& fault :
         {protocol_fault(advertised.txt), version_fault(advertised.txt),
          authorization_fault(advertised.txt), priority_fault(advertised.txt, development),
          service_fault(advertised), address_fault(advertised)})
        if (!fault.empty())
            return fault;
    return "";
}

} // namespace

Judgement judge_advertisement(const AdvertisedRegistry& advertised,
                              DevelopmentRegistries development)
{
    std::string fault = fault_of(advertised, development);
    if (!fault.empty())
        return {std::nullopt, std::move(fault)};
    const TxtStrings& txt = advertised.txt;
    Registry registry;
    registry.url = fmt::format("{}://{}:{}/x-nmos/registration/{}", *txt_value(txt, "api_proto"),
                               url_host(advertised), advertised.port, api_version);
    registry.address = advertised.address;
    registry.priority = static_cast<int>(*number_from_to(0, INT_MAX, *txt_value(txt, "pri")));
    registry.origin = advertised.origin;
    return {std::move(registry), ""};
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_ADVERTISED_REGISTRY_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_ADVERTISED_REGISTRY_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nmos_instrument::host {

/// The service type of registries (IS-04 v1.2, Discovery).
constexpr const char* registration_service = "_nmos-registration._tcp";

/// A DNS-SD instance is looked at no further once so many are known: nobody has more registries,
/// and who pretends to have them shall not keep us busy.
constexpr std::size_t most_instances = 64;

/// The strings of a TXT record, "key=value" or "key" each (RFC 6763 6.3).
using TxtStrings = std::vector<std::string>;

/// One instance of the service at one address of its host, as it came from the network: any text
/// may be any bytes.
struct AdvertisedRegistry
{
    std::string name;      ///< of the instance, for people
    std::string host{};    ///< with or without the final dot; empty: there is no SRV record
    std::string address{}; ///< IPv4 or IPv6; empty: none was found
    int port = 0;
    TxtStrings txt{};
    std::string origin; ///< as Registry::origin

    bool operator==(const AdvertisedRegistry&) const = default;
};

/// The value of a key. Letters of keys have no case, the first string with the key counts, and a key
/// without "=" has no value (RFC 6763 6.4).
std::optional<std::string_view> txt_value(const TxtStrings& txt, std::string_view key);

} // namespace nmos_instrument::host

#endif

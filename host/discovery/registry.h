// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_REGISTRY_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_REGISTRY_H

#include <string>

namespace nmos_instrument::host {

/// A registry that may be used: one of API version v1.2 that asks for no authorization.
struct Registry
{
    /// Where its Registration API begins, without a slash at the end:
    /// "http://registry.example:8080/x-nmos/registration/v1.2"
    std::string url;

    /// Of the URL's host, as discovery found it: an IPv4 address, or an IPv6 address without
    /// brackets. Empty if the system's resolver has to be asked.
    std::string address;

    /// TXT record pri: 0 is used first; from 100 on for development (IS-04 v1.2, Registration API).
    int priority = 0;

    /// Where it is known from, for people: "named", "DNS-SD in example.com", "mDNS".
    std::string origin;

    bool operator==(const Registry&) const = default;
};

} // namespace nmos_instrument::host

#endif

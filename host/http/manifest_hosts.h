// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_HOSTS_H
#define NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_HOSTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "text/ipv4_network.h"

namespace nmos_instrument::host {

/// Whom manifests are fetched from. Any client may name any URL, so without a limit the instrument
/// would look for it into networks that the client itself cannot reach.
class ManifestHosts
{
public:
    /// `own`: the networks that the instrument has an address in; `served`: the one where it is
    /// served; `named`: those that the operator adds.
    ///
    /// A network that includes the machine itself or link-local addresses (RFC 3927) counts only
    /// if the instrument is served there, or if the operator names such a network and no wider one.
    ManifestHosts(const std::vector<Ipv4Network>& own, const Ipv4Network& served,
                  const std::vector<Ipv4Network>& named);

    bool allow(std::uint32_t address) const;

    /// "192.0.2.0/24, 198.51.100.7"
    std::string text() const;

private:
    std::vector<Ipv4Network> networks_;
    std::vector<Ipv4Network> special_; ///< inside those of no ordinary host
};

/// The network of the machine's interface with this address; a machine without it may get it later,
/// and then most likely with a prefix of 24 bits.
Ipv4Network network_of_interface(std::uint32_t address);

} // namespace nmos_instrument::host

#endif

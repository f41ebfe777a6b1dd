// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_MERGE_REGISTRIES_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_MERGE_REGISTRIES_H

#include <vector>

#include "discovery/registry.h"

namespace nmos_instrument::host {

/// One list of all that was found, sorted by priority. What has the same protocol, address and port
/// is one registry, as it was found first. The IPv6 addresses of a registry do not count if it has
/// an IPv4 address.
std::vector<Registry> merge_registries(const std::vector<Registry>& found);

} // namespace nmos_instrument::host

#endif

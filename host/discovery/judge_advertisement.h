// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_JUDGE_ADVERTISEMENT_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_JUDGE_ADVERTISEMENT_H

#include <optional>
#include <string>

#include "discovery/advertised_registry.h"
#include "discovery/registry.h"

namespace nmos_instrument::host {

/// Those of priority 100 and more, "reserved for development work to avoid colliding with a live
/// system" (IS-04 v1.2, Registration API, pri).
enum class DevelopmentRegistries
{
    left_out,
    used
};

struct Judgement
{
    std::optional<Registry> registry; ///< if it may be used
    std::string reason;               ///< why it is left out otherwise, for people
};

Judgement judge_advertisement(const AdvertisedRegistry& advertised,
                              DevelopmentRegistries development);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_SDP_TEXT_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_SDP_TEXT_H

#include <array>
#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "configuration/resource_counts.h"

namespace nmos_instrument::host {

/// What a sender's SDP file depends on besides its active half.
struct SdpFacts
{
    Carriage carriage = Carriage::st2110;
    /// For each leg the hardware address of its interface, if the clock is internal; else empty.
    std::array<std::string, leg_count> local_clocks;
};

SdpFacts sdp_facts(const Configuration& configuration);

/// `text` is the SDP file of a sender that carries `essence`. The library made it of `active`.
std::string corrected_sdp(const std::string& text, const SdpFacts& facts, Essence essence,
                          const CONNECTION_HALF_IS05_ST& active);

} // namespace nmos_instrument::host

#endif

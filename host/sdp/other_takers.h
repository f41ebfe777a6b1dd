// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_OTHER_TAKERS_H
#define NMOS_INSTRUMENT_HOST_SDP_OTHER_TAKERS_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "sdp/sdp_receiver.h"

namespace nmos_instrument::host {

/// By index_of(Essence): one receiver of each kind, or nothing if none is shown.
using OneOfEachKind = std::array<std::optional<SdpReceiver>, all_essences.size()>;

/// Which receivers of other kinds than the one that was asked would take an SDP file.
std::vector<Essence> other_takers(const std::string& sdp, Essence asked,
                                  const OneOfEachKind& receivers);

} // namespace nmos_instrument::host

#endif

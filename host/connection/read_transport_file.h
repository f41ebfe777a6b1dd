// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_READ_TRANSPORT_FILE_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_READ_TRANSPORT_FILE_H

#include <array>
#include <string>
#include <string_view>

#include "configuration/resource_counts.h"
#include "connection/connection_facts.h"
#include "connection/connection_patch.h"

namespace nmos_instrument::host {

struct TransportFileReading
{
    /// Why the receiver does not take the file, one reason a line; empty if it does.
    std::string refusal;
    /// What the file says about each leg. A leg that is not in the file is switched off.
    std::array<LegPatch, leg_count> legs;
};

/// What is wrong with the line at which ConnectionApi::analyze_sdp_file gives up.
constexpr std::string_view lacks_second_value =
    " lacks its second value: \"a=group:DUP\" takes two names, "
    "\"a=source-filter: incl IN IP4\" two addresses";

/// What a receiver makes of an SDP file that a controller sent.
TransportFileReading read_transport_file(const std::string& sdp, const ConnectionFacts& receiver);

} // namespace nmos_instrument::host

#endif

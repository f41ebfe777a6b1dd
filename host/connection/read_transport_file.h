// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_READ_TRANSPORT_FILE_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_READ_TRANSPORT_FILE_H

#include <array>
#include <string>

#include "configuration/resource_counts.h"
#include "connection/connection_patch.h"
#include "sdp/read_sdp.h"

namespace nmos_instrument::host {

struct TransportFileReading
{
    SdpFindings findings;
    /// What the file says about each leg, if no finding refuses it. A leg that is not in the file
    /// is switched off.
    std::array<LegPatch, leg_count> legs;
};

/// What a receiver makes of an SDP file that a controller sent.
TransportFileReading read_transport_file(const std::string& sdp, const SdpReceiver& receiver);

} // namespace nmos_instrument::host

#endif

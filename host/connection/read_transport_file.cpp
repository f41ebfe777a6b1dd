// SPDX-License-Identifier: Apache-2.0

#include "connection/read_transport_file.h"

#include <utility>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

LegPatch patch_of(const SdpLeg& leg)
{
    LegPatch patch;
    patch.rtp_enabled = true;
    patch.destination_port = leg.port;
    patch.destination_ip = leg.multicast ? leg.address : null_text;
    patch.interface_ip = leg.multicast ? auto_text : leg.address;
    patch.source_ip = leg.source.empty() ? null_text : leg.source;
    return patch;
}

LegPatch switched_off()
{
    LegPatch patch;
    patch.rtp_enabled = false;
    return patch;
}

} // namespace

TransportFileReading read_transport_file(const std::string& sdp, const SdpReceiver& receiver)
{
    SdpReading file = read_sdp(sdp, receiver);
    TransportFileReading reading;
    for (std::size_t i = 0; i < leg_count; ++i)
        reading.legs[i] = file.legs[i] ? patch_of(*file.legs[i]) : switched_off();
    reading.findings = std::move(file.findings);
    return reading;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_READING_REPORT_H
#define NMOS_INSTRUMENT_HOST_SDP_READING_REPORT_H

#include <array>
#include <string>
#include <vector>

#include "configuration/configuration.h"
#include "sdp/read_sdp.h"

namespace nmos_instrument::host {

/// An SDP file in the eyes of a receiver, as it is reported.
struct ReportedReading
{
    const SdpReading& reading;
    Essence receiver;
    const std::array<MediaInterface, interface_count>& interfaces; ///< of the receiver
    const std::vector<std::string>& hints; ///< UTF-8; worth knowing, and no finding
};

/// The report as a JSON object, which docs/check-sdp.md explains. Bytes of the file that are not
/// UTF-8 become U+FFFD.
std::string reading_report(const ReportedReading& reported);

} // namespace nmos_instrument::host

#endif

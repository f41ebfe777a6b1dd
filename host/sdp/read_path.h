// SPDX-License-Identifier: Apache-2.0
//
// Where a medium is received: its c= line (RFC 4566 5.7) and its source filter (RFC 4570).

#ifndef NMOS_INSTRUMENT_HOST_SDP_READ_PATH_H
#define NMOS_INSTRUMENT_HOST_SDP_READ_PATH_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sdp/sdp_description.h"
#include "sdp/sdp_finding.h"

namespace nmos_instrument::host {

struct SdpPath
{
    std::string address; ///< dotted quad
    bool multicast = true;
    std::size_t address_line = 0;
    /// Dotted quads, each once, in the order of the file; none: any source.
    std::vector<std::string> sources;
    std::size_t source_line = 0;
};

/// The path of a medium. What its lines do not say, those of the session do. Nothing, with a reason
/// in the findings, if there is no usable address.
std::optional<SdpPath> read_path(const SdpSection& session, const SdpMedium& medium,
                                 SdpFindings& findings);

} // namespace nmos_instrument::host

#endif

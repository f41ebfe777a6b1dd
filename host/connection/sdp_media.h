// SPDX-License-Identifier: Apache-2.0
//
// What the library's SDP parser does not report: which media a file describes, and in which
// encoding.

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_SDP_MEDIA_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_SDP_MEDIA_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nmos_instrument::host {

/// A media description (RFC 4566 5.14): an `m=` line and the lines up to the next one.
struct SdpMedium
{
    std::string kind;                   ///< "video"
    bool absent = false;                ///< port 0: offered in principle, not sent
    std::vector<std::string> encodings; ///< of its `a=rtpmap` lines, like "raw"
    std::size_t first_line = 0;         ///< in the file, from 0
    std::size_t end_line = 0;           ///< the line after its last one
};

/// `lines` without their line breaks.
std::vector<SdpMedium> media_of(const std::vector<std::string_view>& lines);

/// Whether a medium is one of `media_types`, like "video/raw". Without an rtpmap line it fits every
/// encoding of its kind.
bool fits(const SdpMedium& medium, const std::vector<std::string>& media_types);

} // namespace nmos_instrument::host

#endif

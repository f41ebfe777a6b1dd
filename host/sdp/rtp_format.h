// SPDX-License-Identifier: Apache-2.0
//
// What the packets of a medium carry: its payload type, a=rtpmap and a=fmtp lines (RFC 4566 6).

#ifndef NMOS_INSTRUMENT_HOST_SDP_RTP_FORMAT_H
#define NMOS_INSTRUMENT_HOST_SDP_RTP_FORMAT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sdp/sdp_description.h"
#include "sdp/sdp_finding.h"

namespace nmos_instrument::host {

/// The media type that stands for SMPTE ST 2022-6.
constexpr std::string_view st2022_6_media_type = "video/SMPTE2022-6";

enum class Fit
{
    no,
    unknown, ///< of the right kind, but no a=rtpmap line says what it is
    yes
};

/// One payload type of a medium.
struct RtpFormat
{
    Fit fit = Fit::no;                       ///< into the receiver
    std::string_view payload_type;           ///< as in the m= line
    std::size_t rtpmap_line = 0;             ///< 0: none
    std::string_view encoding;               ///< "raw"
    std::string_view clock_rate;             ///< "90000"
    std::string_view channels;               ///< empty if not given
    std::vector<const SdpAttribute*> fmtp{}; ///< its lines; one, unless the file is odd
};

/// The first payload type of the medium that a receiver of `media_types`, like "video/raw", takes;
/// if it takes none, the first one at all.
RtpFormat format_for(const SdpMedium& medium, const std::vector<std::string>& media_types);

/// What is wrong with the a=rtpmap and a=fmtp lines of a medium that is one of the legs.
void check_rtp_format(const SdpMedium& medium, const RtpFormat& format, SdpFindings& findings);

/// NAME=VALUE, or NAME alone, in an a=fmtp line; without blanks around either.
struct FormatParameter
{
    std::string_view name;
    std::string_view value;
};

/// The parameters of a format, in the order of the file.
std::vector<FormatParameter> parameters_of(const RtpFormat& format);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The structure of an SDP file (RFC 4566): a session and its media, each with its lines. Values are
// pieces of the text that was parsed and live as long as it.

#ifndef NMOS_INSTRUMENT_HOST_SDP_SDP_DESCRIPTION_H
#define NMOS_INSTRUMENT_HOST_SDP_SDP_DESCRIPTION_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "sdp/sdp_finding.h"

namespace nmos_instrument::host {

/// The protocol of SMPTE ST 2110 and ST 2022-6 in an m= line.
constexpr std::string_view rtp_protocol = "RTP/AVP";

/// Stands for a port that is malformed, which is a finding.
constexpr long unknown_port = -1;

/// A line without its letter.
struct SdpLine
{
    std::size_t number; ///< in the file, from 1
    std::string_view value;
};

/// a=NAME or a=NAME:VALUE
struct SdpAttribute
{
    std::size_t line;
    std::string_view name;
    std::string_view value; ///< empty without a colon
};

/// What may stand in the session and in each medium.
struct SdpSection
{
    std::vector<SdpLine> connections; ///< c=
    std::vector<SdpAttribute> attributes;
};

struct SdpMedium : SdpSection
{
    std::size_t line = 0;                  ///< of m=
    std::string_view kind;                 ///< "video"
    long port = 0;                         ///< 0: described, not sent
    bool several_ports = false;            ///< like 5004/2
    std::string_view protocol;             ///< "RTP/AVP"
    std::vector<std::string_view> formats; ///< payload types, as they are written
};

struct SdpDescription
{
    std::string_view origin; ///< o=
    SdpSection session;
    std::vector<SdpMedium> media;
    std::size_t line_count = 0;
};

/// The structure of `text`, whose line breaks are LF. A line that is malformed is a finding and is
/// left out; a medium whose m= line is malformed keeps its place, so that its lines do not count for
/// another one.
SdpDescription parse_sdp_description(std::string_view text, SdpFindings& findings);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// An SDP file in the eyes of a receiver. The steps:
//
//   parse_sdp_description   text -> session and media            RFC 4566
//   select_media            media -> the media of the legs       RFC 5888, RFC 7104
//   leg_paths               media -> group, source, port         RFC 4566, RFC 4570
//   check_formats           encodings, clock rates, both legs    SMPTE ST 2110, ST 2022-7
//   ask_library             format parameters                    ConnectionApi::analyze_sdp_file

#ifndef NMOS_INSTRUMENT_HOST_SDP_READ_SDP_H
#define NMOS_INSTRUMENT_HOST_SDP_READ_SDP_H

#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "sdp/leg_paths.h"
#include "sdp/sdp_finding.h"
#include "sdp/sdp_receiver.h"

namespace nmos_instrument::host {

struct SdpReading
{
    SdpFindings findings;
    /// What to join, if no finding refuses the file; then at least one. A leg that the file does not
    /// name, or that it names with port 0, is not there.
    SdpLegs legs;
    /// What the library's parser found about the format; empty if no legs were found.
    sdp_str format = sdp_str();
    /// The value of the o= line: who wrote the file. It says nothing about the legs.
    std::string origin;

    bool taken() const { return !findings.refuse(); }
};

/// Reads any bytes.
SdpReading read_sdp(const std::string& sdp, const SdpReceiver& receiver);

} // namespace nmos_instrument::host

#endif

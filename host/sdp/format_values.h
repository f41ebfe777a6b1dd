// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_SDP_FORMAT_VALUES_H
#define NMOS_INSTRUMENT_HOST_SDP_FORMAT_VALUES_H

#include <string>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

namespace nmos_instrument::host {

/// One value that an SDP file gives for both legs together.
struct FormatValue
{
    const char* key;   ///< for programs
    const char* title; ///< for people
    std::string value; ///< as it is in the file; empty if the file has none
};

std::vector<FormatValue> format_values(const sdp_str& found);

} // namespace nmos_instrument::host

#endif

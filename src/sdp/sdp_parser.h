// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_SDP_SDP_PARSER_H
#define NMOS_INSTRUMENT_SRC_SDP_SDP_PARSER_H

#include <string>
#include <string_view>

#include "nmos_instrument/connection_state.h"

namespace nmos_instrument {

/// Decides whether the instrument takes another frame size.
struct FormatSwitch
{
    bool capable;         ///< it can switch between 2K and 4K
    bool allowed;         ///< its settings permit that
    short current_format; ///< its video format code
};

/// Reads an SDP file line by line: appends a message to `errors` for each problem and stores what
/// is accepted in `out`. Throws std::out_of_range when a line ends before its second value.
void parse_sdp(std::string_view sdp, const FormatSwitch& format_switch, std::string& errors,
               sdp_str& out);

} // namespace nmos_instrument

#endif

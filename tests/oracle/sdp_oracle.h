// SPDX-License-Identifier: Apache-2.0
//
// A second implementation of everything around SDP files, written to be read: text in std::string,
// searched with find and cut with substr, numbers by the C library. It shares nothing with the
// library and cares nothing for speed.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_SDP_ORACLE_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_SDP_ORACLE_H

#include <string>
#include <vector>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/system_parameters.h"

namespace oracle {

// sdp_parser.cpp

int analyze_sdp_file(const std::string& sdp, bool switch_capable, short current_format,
                     bool switch_allowed, std::string& errors, sdp_str& out);

// sdp_lines.cpp

std::string convert_crlf(const std::string& text, const std::string& newline);

struct SplitText
{
    int count;
    /// The pieces and, if the table has room for it, the number that stands for the rest.
    std::vector<std::string> entries;
};
SplitText split_string(const std::string& text, const std::string& delimiter, int max_parts);

std::string make_fullpath_from_request(const std::string& request_line);

// sdp_writer.cpp

std::string make_single_senderid_sdp(const NMOS_IS05_ST& state, int index,
                                     const st_param_sys& parameters);

} // namespace oracle

#endif

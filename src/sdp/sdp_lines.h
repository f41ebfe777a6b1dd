// SPDX-License-Identifier: Apache-2.0
//
// Texts cut into lines and pieces: what hosts use beside the SDP parser.

#ifndef NMOS_INSTRUMENT_SRC_SDP_SDP_LINES_H
#define NMOS_INSTRUMENT_SRC_SDP_SDP_LINES_H

#include <string>
#include <string_view>

namespace nmos_instrument {

/// Copy of `text` with every line break replaced by `newline`.
std::string unify_line_breaks(std::string_view text, std::string_view newline);

/// Cuts `text` into `parts` at each `delimiter`; returns how many pieces a delimiter ended. The
/// entry after the last piece receives the leading integer of what is left, if the table has one.
int cut_pieces(std::string_view text, std::string_view delimiter, std::string* parts,
               int max_parts);

/// Path of an HTTP request line; throws std::out_of_range when it has no "/".
std::string path_of_request(const std::string& request_line);

} // namespace nmos_instrument

#endif

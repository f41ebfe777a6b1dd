// SPDX-License-Identifier: Apache-2.0
//
// Text into lines and pieces: what the SDP parser stands on, and what hosts use beside it.

#ifndef NMOS_INSTRUMENT_SRC_SDP_LINES_H
#define NMOS_INSTRUMENT_SRC_SDP_LINES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace nmos_instrument {

/// Walks over the lines of a text that a line break ends: CR LF, LF CR, lone CR or lone LF. Breaks
/// in a row are taken greedily from the left.
class LineReader
{
public:
    explicit LineReader(std::string_view text) noexcept : text_(text) {}

    /// The next line without its break; false when no further break follows.
    bool next(std::string_view& line) noexcept;

    /// What follows the last line that was read.
    std::string_view rest() const noexcept { return text_.substr(position_); }

private:
    std::string_view text_;
    std::size_t position_ = 0;
    // The next break of each kind is looked for once only, which keeps the walk linear.
    std::size_t next_lf_ = 0;
    std::size_t next_cr_ = 0;
    bool started_ = false;
};

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

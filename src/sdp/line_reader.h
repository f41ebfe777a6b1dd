// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_SDP_LINE_READER_H
#define NMOS_INSTRUMENT_SRC_SDP_LINE_READER_H

#include <cstddef>
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

} // namespace nmos_instrument

#endif

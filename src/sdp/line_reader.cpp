// SPDX-License-Identifier: Apache-2.0

#include "sdp/line_reader.h"

#include <algorithm>

namespace nmos_instrument {

bool LineReader::next(std::string_view& line) noexcept
{
    if (!started_ || next_lf_ < position_)
        next_lf_ = text_.find('\n', position_);
    if (!started_ || next_cr_ < position_)
        next_cr_ = text_.find('\r', position_);
    started_ = true;

    const std::size_t end = std::min(next_lf_, next_cr_);
    if (end == std::string_view::npos)
        return false;
    line = text_.substr(position_, end - position_);
    position_ = end + 1;
    const char other = text_[end] == '\n' ? '\r' : '\n';
    if (position_ < text_.size() && text_[position_] == other)
        ++position_;
    return true;
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0

#include "text/text_buffer.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument {

char* TextBuffer::flush(char* position)
{
    const auto written = static_cast<std::size_t>(position - buffer_);
    if (written == 0)
        return position;
    if (flushed_.empty())
        flushed_.reserve(expected_size(written));
    flushed_.append(buffer_, written - 1);
    buffer_[0] = buffer_[written - 1];
    return buffer_ + 1;
}

void TextBuffer::append_long(std::initializer_list<std::string_view> texts)
{
    for (std::string_view text : texts) {
        for (;;) {
            const auto room = static_cast<std::size_t>(limit() - position_);
            const std::size_t piece = std::min(room, text.size());
            std::memcpy(position_, text.data(), piece);
            position_ += piece;
            if (piece == text.size())
                break;
            text.remove_prefix(piece);
            position_ = flush(position_);
        }
    }
}

std::string TextBuffer::take()
{
    const auto written = static_cast<std::size_t>(position_ - buffer_);
    if (flushed_.empty())
        return std::string(buffer_, written);
    flushed_.append(buffer_, written);
    return std::move(flushed_);
}

/// The entries so far tell how long the list will be; a single body is hardly ever longer than two
/// buffers.
std::size_t TextBuffer::expected_size(std::size_t written) const noexcept
{
    if (entries_done_ == 0)
        return 2 * buffer_size;
    return written / entries_done_ * entries_total_ + buffer_size / 4;
}

} // namespace nmos_instrument

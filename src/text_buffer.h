// SPDX-License-Identifier: Apache-2.0
//
// TextBuffer: where every returned text grows.
//
// Text is written into a fixed buffer on the stack; a full buffer is appended to a string. So a
// text that fits the buffer costs one allocation of its exact size, a longer one usually one too,
// since the first flush reserves for the whole text from what is written so far.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_BUFFER_H
#define NMOS_INSTRUMENT_SRC_TEXT_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace nmos_instrument {

class TextBuffer
{
public:
    TextBuffer() noexcept = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    /// Where the next byte goes. A writer may keep it in a register and hand it back.
    char* position() const noexcept { return position_; }
    void set_position(char* position) noexcept { position_ = position; }

    /// First byte that must not be written.
    const char* limit() const noexcept { return buffer_ + buffer_size; }

    /// Appends what stands before `position` to the string, all but the last byte: the byte before
    /// the position stays readable (and replaceable). Returns the new position, behind which the
    /// buffer is free but for that byte.
    [[gnu::noinline]] char* flush(char* position)
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

    /// Appends a text of any length.
    [[gnu::always_inline]] void append(std::string_view text)
    {
        if (text.size() > static_cast<std::size_t>(limit() - position_)) [[unlikely]] {
            append_long(text);
            return;
        }
        std::memcpy(position_, text.data(), text.size());
        position_ += text.size();
    }

    /// Of a list of `total` entries `done` are written: what a flush estimates the size from.
    void set_progress(std::size_t done, std::size_t total) noexcept
    {
        entries_done_ = done;
        entries_total_ = total;
    }

    /// The finished text. The buffer is used up by it.
    std::string take()
    {
        const auto written = static_cast<std::size_t>(position_ - buffer_);
        if (flushed_.empty())
            return std::string(buffer_, written);
        flushed_.append(buffer_, written);
        return std::move(flushed_);
    }

private:
    static constexpr std::size_t buffer_size = 4096;

    [[gnu::noinline]] void append_long(std::string_view text)
    {
        position_ = flush(position_);
        while (!text.empty()) {
            const auto room = static_cast<std::size_t>(limit() - position_);
            const std::size_t piece = std::min(room, text.size());
            std::memcpy(position_, text.data(), piece);
            text.remove_prefix(piece);
            position_ += piece;
            if (!text.empty())
                position_ = flush(position_);
        }
    }

    /// A list is as long as its entries so far suggest; one long body is hardly longer than two
    /// buffers.
    std::size_t expected_size(std::size_t written) const noexcept
    {
        if (entries_done_ == 0)
            return 2 * buffer_size;
        return written / entries_done_ * entries_total_ + buffer_size / 4;
    }

    std::string flushed_;
    char* position_ = buffer_;
    std::size_t entries_done_ = 0;
    std::size_t entries_total_ = 0;
    char buffer_[buffer_size]; // deliberately not initialised: only what was written is read
};

} // namespace nmos_instrument

#endif

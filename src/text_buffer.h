// SPDX-License-Identifier: Apache-2.0
//
// TextBuffer: where every returned text grows.
//
// Text is written into a fixed buffer on the stack; a full buffer is appended to a string. So a
// text that fits the buffer costs one allocation of its exact size, a longer one usually one too,
// since the first flush reserves for the whole text from what is written so far.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_BUFFER_H
#define NMOS_INSTRUMENT_SRC_TEXT_BUFFER_H

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
    char* flush(char* position);

    /// Appends a text of any length. In line, since most texts are constants of a few bytes.
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
    std::string take();

private:
    static constexpr std::size_t buffer_size = 4096;

    void append_long(std::string_view text);
    std::size_t expected_size(std::size_t written) const noexcept;

    std::string flushed_;
    char* position_ = buffer_;
    std::size_t entries_done_ = 0;
    std::size_t entries_total_ = 0;
    char buffer_[buffer_size]; // deliberately not initialised: only what was written is read
};

} // namespace nmos_instrument

#endif

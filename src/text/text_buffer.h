// SPDX-License-Identifier: Apache-2.0
//
// TextBuffer: where every returned text grows.
//
// Text is written into a fixed buffer on the stack; a buffer with too little room left is appended
// to a string. So a short text costs one allocation of its exact size. A longer one usually costs
// one too, since the first flush estimates the size of the whole text and reserves it.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_TEXT_BUFFER_H
#define NMOS_INSTRUMENT_SRC_TEXT_TEXT_BUFFER_H

#include <cassert>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

// With the address sanitizer, writing past the buffer must not go unseen.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NMOS_INSTRUMENT_POISONED_GAP
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define NMOS_INSTRUMENT_POISONED_GAP
#endif
#if defined(NMOS_INSTRUMENT_POISONED_GAP)
#include <sanitizer/asan_interface.h>
#endif

namespace nmos_instrument {

class TextBuffer
{
public:
#if defined(NMOS_INSTRUMENT_POISONED_GAP)
    TextBuffer() noexcept
    {
        ASAN_POISON_MEMORY_REGION(behind_buffer_, sizeof behind_buffer_);
    }
    ~TextBuffer()
    {
        ASAN_UNPOISON_MEMORY_REGION(behind_buffer_, sizeof behind_buffer_);
    }
#else
    TextBuffer() noexcept = default;
#endif
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    /// Where the next byte goes. A writer may keep it in a register and hand it back.
    char* position() const noexcept
    {
        return position_;
    }
    void set_position(char* position) noexcept
    {
        position_ = position;
    }

    /// First byte that must not be written.
    const char* limit() const noexcept
    {
        return buffer_ + buffer_size;
    }

    /// Appends what precedes `position` to the string, all but the last byte: the byte before
    /// the position stays readable (and replaceable). Returns the new position: the
    /// buffer is free but for that byte.
    char* flush(char* position);

    /// Appends texts of any length, one after the other. In line, since most are constants of a
    /// few bytes.
    template <typename... Texts>
    [[gnu::always_inline]] void append(const Texts&... texts)
    {
        append_views(std::string_view(texts)...);
    }

    /// What is written so far; only for a text that is known to fit the buffer.
    std::string_view written() const noexcept
    {
        assert(flushed_.empty());
        return {buffer_, static_cast<std::size_t>(position_ - buffer_)};
    }

    /// Of a list of `total` entries `done` are written. A flush estimates the size from this.
    void set_progress(std::size_t done, std::size_t total) noexcept
    {
        entries_done_ = done;
        entries_total_ = total;
    }

    /// The finished text. Nothing may be written after it.
    std::string take();

private:
    static constexpr std::size_t buffer_size = 4096;

    template <typename... Views>
    [[gnu::always_inline]] void append_views(Views... views)
    {
        if ((views.size() + ...) > static_cast<std::size_t>(limit() - position_)) [[unlikely]] {
            append_long({views...});
            return;
        }
        char* to = position_;
        ((std::memcpy(to, views.data(), views.size()), to += views.size()), ...);
        position_ = to;
    }

    void append_long(std::initializer_list<std::string_view> texts);
    std::size_t expected_size(std::size_t written) const noexcept;

    std::string flushed_;
    char* position_ = buffer_;
    std::size_t entries_done_ = 0;
    std::size_t entries_total_ = 0;
    char buffer_[buffer_size]; // Intentional: not initialised, only what was written is read
#if defined(NMOS_INSTRUMENT_POISONED_GAP)
    char behind_buffer_[64];
#endif
};

} // namespace nmos_instrument

#endif

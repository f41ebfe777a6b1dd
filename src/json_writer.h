// SPDX-License-Identifier: Apache-2.0
//
// JsonText and JsonWriter: compact JSON, written as it goes, no value tree.
//
// A JsonText is the text that grows. A JsonWriter is a hand on it: a body function makes one at its
// start and hands the text back at its end, so that the position stays in a register between. Only
// one writer is in use on a text at a time:
//
//     void write_clock(JsonText& text, const CLOCK_IS04_ST& clock)
//     {
//         JsonWriter json(text);
//         json.begin_object();
//         json.member("name", clock.name);
//         json.member("ref_type", clock.ref_type);
//         json.end_object();
//     }
//
// Members are written in ascending byte order of their keys, each key once; a debug build asserts
// it. Every value is followed by a comma, which the end of its array or object, or
// JsonText::take, puts right.

#ifndef NMOS_INSTRUMENT_SRC_JSON_WRITER_H
#define NMOS_INSTRUMENT_SRC_JSON_WRITER_H

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "number_text.h"
#include "ordinary_bytes.h"
#include "record_fields.h"
#include "text_buffer.h"

namespace nmos_instrument {

class JsonText : public TextBuffer
{
public:
    explicit JsonText(Slashes slashes) noexcept : slashes_(slashes) {}

    Slashes slashes() const noexcept { return slashes_; }

    /// The finished text.
    std::string take()
    {
        set_position(position() - 1); // the comma behind the outermost value
        return TextBuffer::take();
    }

#ifdef NDEBUG
    void enter_object() noexcept {}
    void leave_object() noexcept {}
    void expect_ascending(std::string_view) noexcept {}
#else
    void enter_object() noexcept
    {
        assert(depth_ < max_depth);
        last_key_[depth_++] = {};
    }
    void leave_object() noexcept
    {
        --depth_;
    }
    void expect_ascending(std::string_view key) noexcept
    {
        assert(depth_ > 0);
        assert(last_key_[depth_ - 1] < key);
        last_key_[depth_ - 1] = key;
    }
#endif

private:
    Slashes slashes_;
#ifndef NDEBUG
    static constexpr std::size_t max_depth = 8;
    std::string_view last_key_[max_depth];
    std::size_t depth_ = 0;
#endif
};

/// Writes the rest of a field up to its first NUL, whatever it holds. Leaves room for what closes a
/// string. The position is taken and returned by value: a member function of the writer would take
/// the writer's address, and with it the position out of its register.
char* write_string_rest(JsonText& text, char* position, std::string_view rest);

/// How a record's texts are copied: by code that stands in line at each member, for the resources
/// that are written many in a row; or by calling one function, for all others, in half the code.
enum class Copying
{
    in_line,
    called
};

template <Copying copying>
class BasicJsonWriter
{
public:
    explicit BasicJsonWriter(JsonText& text) noexcept
        : text_(text), position_(text.position()), limit_(text.limit()), ordinary_(text.slashes())
    {}
    BasicJsonWriter(const BasicJsonWriter&) = delete;
    BasicJsonWriter& operator=(const BasicJsonWriter&) = delete;
    ~BasicJsonWriter() { text_.set_position(position_); }

    void begin_object()
    {
        text_.enter_object();
        begin('{');
    }
    void end_object()
    {
        text_.leave_object();
        end('}');
    }
    void begin_array() { begin('['); }
    void end_array() { end(']'); }

    /// The key of a member; its value follows.
    template <std::size_t N>
    [[gnu::always_inline]] BasicJsonWriter& key(const char (&name)[N])
    {
        need(key_size<N>);
        put_key(name);
        return *this;
    }

    /// A key of a table: the code's own text, which holds nothing to escape.
    [[gnu::noinline]] BasicJsonWriter& key(std::string_view name)
    {
        text_.expect_ascending(name);
        need(name.size() + 3);
        put_byte('"');
        std::memcpy(position_, name.data(), name.size());
        position_ += name.size();
        put_literal("\":");
        return *this;
    }

    void empty_object() { put_value("{}"); }
    void empty_array() { put_value("[]"); }
    void null() { put_value("null"); }
    void boolean(bool value)
    {
        if (value)
            put_value("true");
        else
            put_value("false");
    }
    /// A string of the code's own that holds nothing to escape.
    [[gnu::noinline]] void literal(std::string_view value)
    {
        need(value.size() + 3);
        put_byte('"');
        std::memcpy(position_, value.data(), value.size());
        position_ += value.size();
        put_literal("\",");
    }
    /// Throws std::overflow_error with an empty text when the number is NaN or infinite.
    [[gnu::noinline]] void number(double value)
    {
        need(number_text_size + 1);
        position_ = write_json_number(position_, value);
        put_byte(',');
    }
    [[gnu::noinline]] void number(int value)
    {
        need(number_text_size + 1);
        position_ = write_integer(position_, value);
        put_byte(',');
    }
    /// A record's text field: up to its first NUL, never past its end.
    template <std::size_t N>
    [[gnu::always_inline]] void string(const char (&field)[N])
    {
        need(string_size<N>);
        put_string(field);
    }
    /// The same, but null for a field that holds exactly "null".
    template <std::size_t N>
    [[gnu::always_inline]] void string_or_null(const char (&field)[N])
    {
        if (holds(field, "null"))
            null();
        else
            string(field);
    }

    template <std::size_t K, std::size_t N>
    [[gnu::always_inline]] void member(const char (&name)[K], const char (&field)[N])
    {
        need(key_size<K> + string_size<N>);
        put_key(name);
        put_string(field);
    }
    template <std::size_t K>
    [[gnu::always_inline]] void member(const char (&name)[K], double value)
    {
        key(name).number(value);
    }
    template <std::size_t K, std::size_t N>
    [[gnu::always_inline]] void member_or_null(const char (&name)[K], const char (&field)[N])
    {
        key(name).string_or_null(field);
    }
    /// A flag byte: false when 0, true otherwise.
    template <std::size_t K>
    [[gnu::always_inline]] void flag(const char (&name)[K], std::uint8_t value)
    {
        key(name).boolean(value != 0);
    }
    /// The first `count` fields, within the array.
    template <std::size_t K, std::size_t M, std::size_t N>
    [[gnu::always_inline]] void strings(const char (&name)[K], const char (&fields)[M][N],
                                        std::int32_t count)
    {
        key(name).begin_array();
        for (const auto& field : valid_entries(fields, count))
            string(field);
        end_array();
    }

private:
    [[gnu::always_inline]] void need(std::size_t bytes)
    {
        if (static_cast<std::size_t>(limit_ - position_) < bytes) [[unlikely]]
            position_ = text_.flush(position_);
    }
    [[gnu::always_inline]] void put_byte(char byte) { *position_++ = byte; }
    template <std::size_t N>
    [[gnu::always_inline]] void put_literal(const char (&literal)[N])
    {
        std::memcpy(position_, literal, N - 1);
        position_ += N - 1;
    }
    template <std::size_t N>
    [[gnu::always_inline]] void put_value(const char (&literal)[N])
    {
        need(N);
        put_literal(literal);
        put_byte(',');
    }
    [[gnu::always_inline]] void begin(char bracket)
    {
        need(1);
        put_byte(bracket);
    }
    [[gnu::always_inline]] void end(char bracket)
    {
        need(2);
        if (position_[-1] == ',')
            --position_;
        put_byte(bracket);
        put_byte(',');
    }

    template <std::size_t N>
    static constexpr std::size_t key_size = N - 1 + 3; ///< the name, two quotes, colon

    template <std::size_t N>
    [[gnu::always_inline]] void put_key(const char (&name)[N])
    {
        text_.expect_ascending({name, N - 1});
        put_byte('"');
        put_literal(name);
        put_literal("\":");
    }

    /// Nearly all texts are short and hold nothing to escape: so much is copied in line, all else is
    /// left to write_string_rest.
    template <std::size_t N>
    static constexpr std::size_t copied_in_line =
        copying == Copying::in_line
            ? std::min<std::size_t>(N, 128) / OrdinaryBytes::size* OrdinaryBytes::size
            : 0;

    template <std::size_t N>
    static constexpr std::size_t string_size = copied_in_line<N> + 3; ///< two quotes, comma

    template <std::size_t N>
    [[gnu::always_inline]] void put_string(const char (&field)[N])
    {
        put_byte('"');
        std::size_t at = 0;
        while (at != copied_in_line<N>) {
            const OrdinaryBytes::Marks marks = ordinary_.copy(position_ + at, field + at);
            if (marks != 0) {
                at += OrdinaryBytes::count(marks);
                break;
            }
            at += OrdinaryBytes::size;
        }
        position_ += at;
        if (copying == Copying::called || (at != N && field[at] != '\0'))
            position_ = write_string_rest(text_, position_, {field + at, N - at});
        put_literal("\",");
    }

    JsonText& text_;
    char* position_;
    const char* const limit_;
    const OrdinaryBytes ordinary_;
};

using JsonWriter = BasicJsonWriter<Copying::called>;
using FastJsonWriter = BasicJsonWriter<Copying::in_line>;

} // namespace nmos_instrument

#endif

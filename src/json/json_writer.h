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
//
// Room is made where an object or an array begins and for each of an array's entries, enough for
// all that stands between two such places; what may be long, a text with much to escape above all,
// makes room itself. So most members are written without a look at the room left. A debug build
// asserts this too, wherever the buffer's end happens to be.

#ifndef NMOS_INSTRUMENT_SRC_JSON_JSON_WRITER_H
#define NMOS_INSTRUMENT_SRC_JSON_JSON_WRITER_H

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "records/record_fields.h"
#include "text/number_text.h"
#include "text/text_buffer.h"
#include "json/ordinary_bytes.h"

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

/// What a body may write between two places where room is made: keys, brackets, and what is copied
/// in line of its texts. The largest need is a bit less than half of it, in write_node.
constexpr std::size_t json_room = 1024;

/// Writes the rest of a field up to its first NUL, whatever it holds, and makes room again. The
/// position is taken and returned by value: a member function of the writer would take the writer's
/// address, and with it the position out of its register.
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
    explicit BasicJsonWriter(JsonText& text)
        : text_(text),
          position_(text.position()),
          limit_(text.limit() - json_room),
          ordinary_(text.slashes())
    {
        make_room();
    }
    BasicJsonWriter(const BasicJsonWriter&) = delete;
    BasicJsonWriter& operator=(const BasicJsonWriter&) = delete;
    ~BasicJsonWriter()
    {
        expect_room();
        text_.set_position(position_);
    }

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
        put_key(name);
        return *this;
    }

    /// A key of a table: the code's own text, which holds nothing to escape.
    [[gnu::noinline]] BasicJsonWriter& key(std::string_view name)
    {
        text_.expect_ascending(name);
        make_room();
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
        make_room();
        put_byte('"');
        std::memcpy(position_, value.data(), value.size());
        position_ += value.size();
        put_literal("\",");
    }
    /// The value that another text holds; it must be known to fit the buffer.
    [[gnu::noinline]] void value_of(const JsonText& other)
    {
        text_.set_position(position_);
        text_.append(other.written());
        position_ = text_.position();
        note_room();
        make_room();
    }
    /// Throws std::overflow_error with an empty text when the number is NaN or infinite.
    [[gnu::noinline]] void number(double value)
    {
        make_room();
        position_ = write_json_number(position_, value);
        put_byte(',');
    }
    [[gnu::noinline]] void number(int value)
    {
        make_room();
        position_ = write_integer(position_, value);
        put_byte(',');
    }
    /// A record's text field: up to its first NUL, never past its end.
    template <std::size_t N>
    [[gnu::always_inline]] void string(const char (&field)[N])
    {
        make_room();
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
    [[gnu::always_inline]] void make_room()
    {
        expect_room();
        if (position_ > limit_) [[unlikely]]
            position_ = text_.flush(position_);
        note_room();
    }
    [[gnu::always_inline]] void put_byte(char byte) { *position_++ = byte; }
    /// Copied in pieces that fit a register, which the compiler joins with their neighbours: keys,
    /// quotes and commas become a few wide stores.
    template <std::size_t N>
    [[gnu::always_inline]] void put_literal(const char (&literal)[N])
    {
        copy_constant<N - 1>(position_, literal);
        position_ += N - 1;
    }
    template <std::size_t size>
    [[gnu::always_inline]] static void copy_constant(char* to, const char* from)
    {
        constexpr std::size_t piece = std::bit_floor(std::min<std::size_t>(size, 8));
        std::memcpy(to, from, piece);
        if constexpr (size > piece)
            copy_constant<size - piece>(to + piece, from + piece);
    }
    template <std::size_t N>
    [[gnu::always_inline]] void put_value(const char (&literal)[N])
    {
        put_literal(literal);
        put_byte(',');
    }
    [[gnu::always_inline]] void begin(char bracket)
    {
        make_room();
        put_byte(bracket);
    }
    [[gnu::always_inline]] void end(char bracket)
    {
        if (position_[-1] == ',')
            --position_;
        put_byte(bracket);
        put_byte(',');
    }

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
    [[gnu::always_inline]] void put_string(const char (&field)[N])
    {
        put_byte('"');
        bool complete = copied_in_line<N> == N;
        std::size_t at = 0;
        for (; at != copied_in_line<N>; at += OrdinaryBytes::size) {
            const OrdinaryBytes::Marks marks = ordinary_.copy(position_ + at, field + at);
            if (marks != 0) {
                at += OrdinaryBytes::count(marks);
                complete = field[at] == '\0';
                break;
            }
        }
        position_ += at;
        if (!complete) {
            expect_room();
            position_ = write_string_rest(text_, position_, {field + at, N - at});
            note_room();
        }
        put_literal("\",");
    }

    JsonText& text_;
    char* position_;
    const char* const limit_; ///< with the position behind it there is less room than json_room
    const OrdinaryBytes ordinary_;

#ifdef NDEBUG
    void expect_room() const noexcept {}
    void note_room() noexcept {}
#else
    void expect_room() const noexcept
    {
        assert(static_cast<std::size_t>(position_ - room_begin_) <= json_room);
    }
    void note_room() noexcept
    {
        room_begin_ = position_;
    }
    const char* room_begin_ = position_;
#endif
};

using JsonWriter = BasicJsonWriter<Copying::called>;
using FastJsonWriter = BasicJsonWriter<Copying::in_line>;

} // namespace nmos_instrument

#endif

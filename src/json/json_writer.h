// SPDX-License-Identifier: Apache-2.0
//
// JsonWriter: compact JSON, written as it goes, without a value tree.
//
// A body function is handed the text and makes a writer on it. The writer holds the position in the
// text, so that it can stay in a register, and hands it back at the end of the function:
//
//     [[gnu::flatten]] void write_clock(JsonText& text, const CLOCK_IS04_ST& clock)
//     {
//         JsonWriter json(text);
//         json.begin_object();
//         json.member("name", clock.name);
//         json.member("ref_type", clock.ref_type);
//         json.end_object();
//     }
//
// The writer is not the text itself: with the position in the text, where other functions see it, a
// list of receivers takes 1.3 times as long, a node 1.5 times.
//
// - Only one writer at a time is in use on a text.
// - Members are written in ascending byte order of their keys, each key once; a debug build asserts
//   it.
// - Every value is followed by a comma. The end of its object or array, or JsonText::take, removes
//   the last one.
// - Every string, number and constant makes room in the text's buffer for what comes next:
//   brackets, keys and the next value.
// - gnu::flatten in front of a body function compiles all of the writer into it, which makes it
//   up to four times as fast. The text is the same without it.

#ifndef NMOS_INSTRUMENT_SRC_JSON_JSON_WRITER_H
#define NMOS_INSTRUMENT_SRC_JSON_JSON_WRITER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "json/json_text.h"
#include "json/ordinary_bytes.h"
#include "json/room_use.h"
#include "records/record_fields.h"
#include "text/number_text.h"

namespace nmos_instrument {

/// Writes the rest of a field up to its first NUL, whatever it holds, and makes room again. Not a
/// member: that would take the writer's address, and with it the position out of its register.
char* write_string_rest(JsonText& text, char* position, std::string_view rest);

class JsonWriter
{
public:
    explicit JsonWriter(JsonText& text)
        : text_(text),
          position_(text.position()),
          limit_(text.limit() - json_room),
          ordinary_(text.slashes()),
          room_use_(text.position())
    {
        make_room();
    }
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;
    ~JsonWriter()
    {
        room_use_.end(position_);
        text_.set_position(position_);
    }

    void begin_object()
    {
        text_.keys().enter_object();
        put("{");
    }
    void end_object()
    {
        text_.keys().leave_object();
        end('}');
    }
    void begin_array() { put("["); }
    void end_array() { end(']'); }

    /// The key of a member; its value follows. Keys are the code's own and hold nothing to escape.
    JsonWriter& key(std::string_view name)
    {
        text_.keys().expect_ascending(name);
        put("\"");
        put(name);
        put("\":");
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
    void literal(std::string_view value)
    {
        put("\"");
        put(value);
        put("\",");
        make_room();
    }
    /// The value that another text holds; it must be known to fit the buffer.
    void value_of(const JsonText& other)
    {
        text_.set_position(position_);
        text_.append(other.written());
        position_ = text_.position();
        room_use_.begin(position_);
        make_room();
    }
    /// Throws std::overflow_error with an empty text when the number is NaN or infinite.
    void number(double value)
    {
        position_ = write_json_number(position_, value);
        put(",");
        make_room();
    }
    void number(int value)
    {
        position_ = write_integer(position_, value);
        put(",");
        make_room();
    }
    /// A record's text field: up to its first NUL, never past its end.
    template <std::size_t N>
    void string(const char (&field)[N])
    {
        put_string(field);
    }
    /// The same, but null for a field that holds exactly "null".
    template <std::size_t N>
    void string_or_null(const char (&field)[N])
    {
        if (holds(field, "null"))
            null();
        else
            string(field);
    }

    template <std::size_t N>
    void member(std::string_view name, const char (&field)[N])
    {
        key(name);
        put_string(field);
    }
    void member(std::string_view name, double value) { key(name).number(value); }
    template <std::size_t N>
    void member_or_null(std::string_view name, const char (&field)[N])
    {
        key(name).string_or_null(field);
    }
    /// A flag byte: false when 0, true otherwise.
    void flag(std::string_view name, std::uint8_t value) { key(name).boolean(value != 0); }
    /// The first `count` fields, within the array.
    template <std::size_t M, std::size_t N>
    void strings(std::string_view name, const char (&fields)[M][N], std::int32_t count)
    {
        key(name).begin_array();
        for (const auto& field : valid_entries(fields, count))
            string(field);
        end_array();
    }

private:
    void make_room()
    {
        room_use_.end(position_);
        if (position_ > limit_) [[unlikely]]
            position_ = text_.flush(position_);
        room_use_.begin(position_);
    }
    /// In pieces that fit a register: the compiler joins those of a constant with the quotes and
    /// commas around it.
    void put(std::string_view bytes)
    {
        while (bytes.size() >= 8)
            put_first<8>(bytes);
        if (bytes.size() >= 4)
            put_first<4>(bytes);
        if (bytes.size() >= 2)
            put_first<2>(bytes);
        if (!bytes.empty())
            put_first<1>(bytes);
    }
    template <std::size_t size>
    void put_first(std::string_view& bytes)
    {
        std::memcpy(position_, bytes.data(), size);
        position_ += size;
        bytes.remove_prefix(size);
    }
    void put_value(std::string_view value)
    {
        put(value);
        put(",");
        make_room();
    }
    void end(char bracket)
    {
        if (position_[-1] == ',')
            --position_;
        *position_++ = bracket;
        *position_++ = ',';
    }

    /// Nearly all texts are short and hold nothing to escape: these are copied in line, the rest of
    /// any other is left to write_string_rest.
    template <std::size_t N>
    void put_string(const char (&field)[N])
    {
        constexpr std::size_t block = OrdinaryBytes::size;
        constexpr std::size_t in_line = std::min<std::size_t>(N, 128) / block * block;
        put("\"");
        bool complete = in_line == N;
        std::size_t at = 0;
        for (; at != in_line; at += block) {
            const OrdinaryBytes::Marks marks = ordinary_.copy(position_ + at, field + at);
            if (marks != 0) {
                at += OrdinaryBytes::count(marks);
                complete = field[at] == '\0';
                break;
            }
        }
        position_ += at;
        if (!complete) {
            room_use_.end(position_);
            position_ = write_string_rest(text_, position_, {field + at, N - at});
            room_use_.begin(position_);
        }
        put("\",");
        make_room();
    }

    JsonText& text_;
    char* position_;
    const char* const limit_; ///< beyond it, less than json_room is left
    const OrdinaryBytes ordinary_;
    [[no_unique_address]] RoomUse room_use_;
};

} // namespace nmos_instrument

#endif

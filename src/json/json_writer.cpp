// SPDX-License-Identifier: Apache-2.0

#include "json/json_writer.h"

namespace nmos_instrument {

namespace {

/// Longest escape: "\u001f".
constexpr std::size_t escape_size = 6;

char* write_escape(char* to, char byte) noexcept
{
    const auto short_form = [to](char letter) {
        to[0] = '\\';
        to[1] = letter;
        return to + 2;
    };
    switch (byte) {
    case '"':
    case '\\':
    case '/':
        return short_form(byte);
    case '\b':
        return short_form('b');
    case '\f':
        return short_form('f');
    case '\n':
        return short_form('n');
    case '\r':
        return short_form('r');
    case '\t':
        return short_form('t');
    default:
        break;
    }
    // What is left is below 0x20, or 0x7F.
    const auto code = static_cast<unsigned char>(byte);
    std::memcpy(to, "\\u00", 4);
    to[4] = "0123456789abcdef"[code >> 4];
    to[5] = "0123456789abcdef"[code & 0xF];
    return to + 6;
}

} // namespace

char* write_string_rest(JsonText& text, char* position, std::string_view rest)
{
    constexpr std::size_t block = OrdinaryBytes::size;
    const OrdinaryBytes ordinary(text.slashes());
    // Beyond it, a block and an escape still fit, and json_room after them.
    const char* const limit = text.limit() - json_room - block - escape_size;
    const char* from = rest.data();
    const char* const end = from + rest.size();
    const auto make_room = [&] {
        if (position > limit)
            position = text.flush(position);
    };

    make_room();
    while (static_cast<std::size_t>(end - from) >= block) {
        make_room();
        const OrdinaryBytes::Marks marks = ordinary.copy(position, from);
        const std::size_t copied = marks != 0 ? OrdinaryBytes::count(marks) : block;
        position += copied;
        from += copied;
        if (marks == 0)
            continue;
        if (*from == '\0')
            return position;
        position = write_escape(position, *from++);
    }
    for (; from != end && *from != '\0'; ++from) {
        make_room();
        const auto code = static_cast<unsigned char>(*from);
        if (code < 0x20 || code == '"' || code == '\\' || code == 0x7F ||
            (code == '/' && text.slashes() == Slashes::escaped))
            position = write_escape(position, *from);
        else
            *position++ = *from;
    }
    return position;
}

} // namespace nmos_instrument

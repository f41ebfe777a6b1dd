// SPDX-License-Identifier: Apache-2.0

#include "text/json_output.h"

namespace nmos_instrument::host {
namespace {

/// The letter after the backslash, or NUL if there is none.
char short_escape(char c)
{
    switch (c) {
    case '"':
    case '\\':
        return c;
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return '\0';
    }
}

} // namespace

JsonOutput& JsonOutput::key(std::string_view key)
{
    element();
    text(key);
    text_ += form_ == JsonForm::indented ? ": " : ":";
    return *this;
}

JsonOutput& JsonOutput::element()
{
    if (!is_first_)
        text_ += ',';
    is_first_ = false;
    next_line();
    return *this;
}

void JsonOutput::text(std::string_view value)
{
    constexpr char hexadecimal[] = "0123456789abcdef";
    text_ += '"';
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if (const char letter = short_escape(c); letter != '\0')
            text_ += {'\\', letter};
        else if (byte < 0x20)
            text_ += {'\\', 'u', '0', '0', hexadecimal[byte / 16], hexadecimal[byte % 16]};
        else
            text_ += c;
    }
    text_ += '"';
}

void JsonOutput::begin(char bracket)
{
    text_ += bracket;
    ++depth_;
    is_first_ = true;
}

void JsonOutput::end(char bracket)
{
    --depth_;
    if (!is_first_)
        next_line();
    text_ += bracket;
    is_first_ = false; // of the object or array around it
}

void JsonOutput::next_line()
{
    if (form_ != JsonForm::indented)
        return;
    text_ += '\n';
    text_.append(depth_, ' ');
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "text/text_rules.h"

#include <cstddef>

#include "text/scanning.h"

namespace nmos_instrument {

namespace {

/// In a shape, 'h' is a hexadecimal digit in lower case and 'H' one in either case, 'v' and 'n' are
/// a UUID's version and variant; any other character is itself.
bool has_shape(std::string_view text, std::string_view shape)
{
    if (text.size() != shape.size())
        return false;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const char c = text[i];
        bool fits = false;
        switch (shape[i]) {
        case 'h':
            fits = is_lower_case_hex_digit(c);
            break;
        case 'H':
            fits = is_hex_digit(c);
            break;
        case 'v':
            fits = c >= '1' && c <= '5';
            break;
        case 'n':
            fits = c == '8' || c == '9' || c == 'a' || c == 'b';
            break;
        default:
            fits = c == shape[i];
        }
        if (!fits)
            return false;
    }
    return true;
}

} // namespace

bool is_utf8(std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size()) {
        const unsigned lead = static_cast<unsigned char>(text[at++]);
        if (lead < 0x80)
            continue;
        if (lead < 0xC2 || lead > 0xF4)
            return false;
        // These bounds of the second byte keep out overlong forms, surrogates and what lies above
        // U+10FFFF (RFC 3629, 4).
        unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        const std::size_t end = at + (lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3);
        if (end > text.size())
            return false;
        for (; at < end; ++at) {
            const unsigned byte = static_cast<unsigned char>(text[at]);
            if (byte < low || byte > high)
                return false;
            low = 0x80;
            high = 0xBF;
        }
    }
    return true;
}

bool is_uuid(std::string_view text)
{
    return has_shape(text, "hhhhhhhh-hhhh-vhhh-nhhh-hhhhhhhhhhhh");
}

bool is_version_time(std::string_view text)
{
    if (take_digits(text).empty() || !take_prefix(text, ":"))
        return false;
    const std::string_view nanoseconds = take_digits(text);
    const std::size_t zeros = nanoseconds.find_first_not_of('0');
    return text.empty() && !nanoseconds.empty() &&
           (zeros == std::string_view::npos || nanoseconds.size() - zeros <= 9);
}

bool is_uri(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon + 1 == text.size() || !is_letter(text.front()))
        return false;
    for (const char c : text.substr(0, colon)) {
        if (!is_letter(c) && !is_digit(c) && c != '+' && c != '-' && c != '.')
            return false;
    }
    for (const char c : text.substr(colon)) {
        if (!is_graphic(c))
            return false;
    }
    return true;
}

bool is_http_url(std::string_view text)
{
    if (!is_uri(text))
        return false;
    return (take_prefix(text, "http://") || take_prefix(text, "https://")) && !text.empty();
}

bool is_api_version(std::string_view text)
{
    return take_prefix(text, "v") && !take_digits(text).empty() && take_prefix(text, ".") &&
           is_digits(text);
}

bool is_clock_name(std::string_view text)
{
    return take_prefix(text, "clk") && is_digits(text);
}

bool is_mac_address(std::string_view text)
{
    return has_shape(text, "hh-hh-hh-hh-hh-hh");
}

bool is_lower_case_eui64(std::string_view text)
{
    return has_shape(text, "hh-hh-hh-hh-hh-hh-hh-hh");
}

bool is_eui64(std::string_view text)
{
    return has_shape(text, "HH-HH-HH-HH-HH-HH-HH-HH");
}

bool is_digits(std::string_view text)
{
    return !take_digits(text).empty() && text.empty();
}

bool is_media_type(std::string_view text)
{
    for (const char c : text) {
        if (!is_graphic(c))
            return false;
    }
    const std::size_t slash = text.find('/');
    return slash != 0 && slash != std::string_view::npos && slash + 1 < text.size() &&
           text.find('/', slash + 1) == std::string_view::npos;
}

bool is_video_media_type(std::string_view text)
{
    return text.starts_with("video/") && is_media_type(text);
}

bool is_audio_media_type(std::string_view text)
{
    return text.starts_with("audio/") && is_media_type(text);
}

} // namespace nmos_instrument

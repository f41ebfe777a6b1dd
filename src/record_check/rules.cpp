// SPDX-License-Identifier: Apache-2.0

#include "record_check/rules.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "text/number_text.h"

namespace nmos_instrument {

namespace {

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_lower_case_hex_digit(char c)
{
    return is_digit(c) || (c >= 'a' && c <= 'f');
}

bool is_hex_digit(char c)
{
    return is_lower_case_hex_digit(c) || (c >= 'A' && c <= 'F');
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Visible ASCII, no blank.
bool is_graphic(char c)
{
    return c > ' ' && c <= '~';
}

/// Takes the digits at the start of `text` from it.
std::string_view take_digits(std::string_view& text)
{
    std::size_t length = 0;
    while (length < text.size() && is_digit(text[length]))
        ++length;
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(length);
    return taken;
}

bool take_prefix(std::string_view& text, std::string_view prefix)
{
    if (!text.starts_with(prefix))
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

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

bool is_listed(std::string_view word, std::string_view words)
{
    constexpr std::string_view separator = ", ";
    for (;;) {
        const std::size_t end = words.find(separator);
        if (words.substr(0, end) == word)
            return true;
        if (end == std::string_view::npos)
            return false;
        words.remove_prefix(end + separator.size());
    }
}

/// Appends the pieces. Messages are rare, so it is the code that is kept short here, not its time:
/// inlined, each append would be as large as a check.
[[gnu::noinline]] void append(std::string& to, std::initializer_list<std::string_view> pieces)
{
    for (const std::string_view piece : pieces)
        to += piece;
}

struct NumberText
{
    explicit NumberText(long long value) : end(write_integer(text, value)) {}
    /// The digits of a whole number, else the shortest text that reads back as `value`; "nan" and
    /// "inf" too.
    explicit NumberText(double value)
    {
        constexpr double all_integers_exact = 9007199254740992.0; // 2^53
        const bool is_minus_zero = value == 0 && std::signbit(value);
        if (std::fabs(value) < all_integers_exact && std::trunc(value) == value && !is_minus_zero)
            end = write_integer(text, static_cast<long long>(value));
        else
            end = std::to_chars(text, text + sizeof text, value).ptr;
    }

    operator std::string_view() const { return {text, static_cast<std::size_t>(end - text)}; }

    char text[number_text_size] = {};
    char* end;
};

/// Whatever the record holds, a message is one line of visible ASCII and not longer than it helps.
std::string quoted(std::string_view text)
{
    constexpr std::size_t longest = 64;
    constexpr std::size_t shortened = 48;
    constexpr char hex[] = "0123456789abcdef";

    const bool whole = text.size() <= longest;
    std::string quote = "\"";
    for (const char c : whole ? text : text.substr(0, shortened)) {
        const unsigned byte = static_cast<unsigned char>(c);
        char shown[4] = {'\\', c, hex[byte / 16], hex[byte % 16]};
        if (c == '"' || c == '\\') {
            append(quote, {{shown, 2}});
        } else if (c == ' ' || is_graphic(c)) {
            append(quote, {{&c, 1}});
        } else {
            shown[1] = 'x';
            append(quote, {{shown, sizeof shown}});
        }
    }
    append(quote, {"\""});
    if (!whole)
        append(quote, {"... (", NumberText(static_cast<long long>(text.size())), " bytes)"});
    return quote;
}

constexpr std::string_view it_must_be = "it must be ";
constexpr std::string_view or_null = " or \"null\"";

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

bool is_utf8_and_not_empty(std::string_view text)
{
    return !text.empty() && is_utf8(text);
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

bool is_dotted_quad(std::string_view text)
{
    for (int octet = 0; octet < 4; ++octet) {
        if (octet != 0 && !take_prefix(text, "."))
            return false;
        const std::string_view number = take_digits(text);
        if (number.empty() || number.size() > 3)
            return false;
        // Some readers take an octet with a leading zero as octal.
        if (number.size() > 1 && number.front() == '0')
            return false;
        // Of two numbers with three digits the text order is the order of the values.
        if (number.size() == 3 && number > "255")
            return false;
    }
    return text.empty();
}

bool is_dotted_quad_or_auto(std::string_view text)
{
    return text == "auto" || is_dotted_quad(text);
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

std::string_view text_of(FieldBytes bytes) noexcept
{
    return {bytes.data(), strnlen(bytes.data(), bytes.size())};
}

void append_field_name(std::string& to, FieldName field)
{
    append(to, {field.name});
    if (field.index != FieldName::no_index)
        append(to, {"[", NumberText(static_cast<long long>(field.index)), "]"});
}

RecordPart::RecordPart(std::vector<std::string>& findings) noexcept
    : findings_(findings), outer_(nullptr), own_name_("")
{}

RecordPart::RecordPart(const RecordPart& outer, FieldName own_name) noexcept
    : findings_(outer.findings_), outer_(&outer), own_name_(own_name)
{}

void RecordPart::check_count(FieldName field, std::int32_t value, std::int32_t minimum,
                             std::int32_t capacity) const
{
    if (value > capacity)
        report_value(field, NumberText(static_cast<long long>(value)),
                     {"at most ", NumberText(static_cast<long long>(capacity)), " are allowed"});
    else if (value < minimum)
        report_value(field, NumberText(static_cast<long long>(value)),
                     {minimum == 0 ? "it must not be negative" : "at least 1 is needed"});
}

bool RecordPart::number(FieldName field, double value, std::int32_t lowest,
                        std::int32_t highest) const
{
    // Written so that NaN fails. Minus zero would show as "-0".
    if (value >= lowest && value <= highest && std::trunc(value) == value &&
        !(value == 0 && std::signbit(value)))
        return true;
    report_value(field, NumberText(value),
                 {it_must_be, "a whole number from ", NumberText(static_cast<long long>(lowest)),
                  " to ", NumberText(static_cast<long long>(highest))});
    return false;
}

bool RecordPart::text(FieldName field, FieldBytes bytes, const TextRule& rule) const
{
    if (!ends(field, bytes))
        return false;
    if (rule.holds(text_of(bytes)))
        return true;
    report(field, bytes, {it_must_be, rule.demand});
    return false;
}

bool RecordPart::text_or_null(FieldName field, FieldBytes bytes, const TextRule& rule) const
{
    if (!ends(field, bytes))
        return false;
    if (text_of(bytes) == "null" || rule.holds(text_of(bytes)))
        return true;
    report(field, bytes, {it_must_be, rule.demand, or_null});
    return false;
}

bool RecordPart::one_of(FieldName field, FieldBytes bytes, std::string_view words) const
{
    if (!ends(field, bytes))
        return false;
    if (is_listed(text_of(bytes), words))
        return true;
    report(field, bytes, {it_must_be, "one of: ", words});
    return false;
}

bool RecordPart::nmos_word_or_foreign_uri(FieldName field, FieldBytes bytes,
                                          std::string_view words) const
{
    if (!text_of(bytes).starts_with("urn:x-nmos:"))
        return text(field, bytes, uri);
    return one_of(field, bytes, words);
}

bool RecordPart::ends(FieldName field, FieldBytes bytes) const
{
    if (text_of(bytes).size() < bytes.size())
        return true;
    report(field, bytes,
           {"there is no NUL in its ", NumberText(static_cast<long long>(bytes.size())), " bytes"});
    return false;
}

void RecordPart::report(FieldName field, FieldBytes bytes, Pieces rule) const
{
    report_value(field, quoted(text_of(bytes)), rule);
}

void RecordPart::report_value(FieldName field, std::string_view value, Pieces rule) const
{
    std::string message;
    append_path(message);
    append_field_name(message, field);
    append(message, {" is ", value, ", "});
    append(message, rule);
    findings_.push_back(std::move(message));
}

void RecordPart::append_path(std::string& to) const
{
    if (outer_ == nullptr)
        return;
    outer_->append_path(to);
    append_field_name(to, own_name_);
    append(to, {"."});
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0

#include "record_check/rules.h"

#include <cmath>
#include <initializer_list>

#include "text/number_text.h"
#include "text/scanning.h"

namespace nmos_instrument {

namespace {

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

/// Appends the pieces. Messages are rare, so this is kept small rather than fast: in line, it would
/// be as large as the check that calls it.
[[gnu::noinline]] void append(std::string& to, std::initializer_list<std::string_view> pieces)
{
    for (const std::string_view piece : pieces)
        to += piece;
}

/// Whatever the record holds, a message is one line of visible ASCII, and not too long to read.
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
        append(quote, {"... (", NumberText(text.size()), " bytes)"});
    return quote;
}

constexpr std::string_view it_must_be = "it must be ";
constexpr std::string_view or_null = " or \"null\"";

} // namespace

bool is_utf8_and_not_empty(std::string_view text)
{
    return !text.empty() && is_utf8(text);
}

bool is_dotted_quad_or_auto(std::string_view text)
{
    return text == "auto" || is_dotted_quad(text);
}

void append_field_name(std::string& to, FieldName field)
{
    append(to, {field.name});
    if (field.index != FieldName::no_index)
        append(to, {"[", NumberText(field.index), "]"});
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
        report_value(field, NumberText(value), {"at most ", NumberText(capacity), " are allowed"});
    else if (value < minimum)
        report_value(field, NumberText(value),
                     {minimum == 0 ? "it must not be negative" : "at least 1 is needed"});
}

bool RecordPart::number(FieldName field, double value, std::int32_t lowest,
                        std::int32_t highest) const
{
    // Written so that NaN fails. Minus zero fails since it would show as "-0".
    if (value >= lowest && value <= highest && std::trunc(value) == value &&
        !(value == 0 && std::signbit(value)))
        return true;
    report_value(
        field, NumberText(value),
        {it_must_be, "a whole number from ", NumberText(lowest), " to ", NumberText(highest)});
    return false;
}

bool RecordPart::text(FieldName field, FieldBytes bytes, const TextRule& rule) const
{
    if (!ends(field, bytes))
        return false;
    if (rule.holds(field_text(bytes)))
        return true;
    report(field, bytes, {it_must_be, rule.demand});
    return false;
}

bool RecordPart::text_or_null(FieldName field, FieldBytes bytes, const TextRule& rule) const
{
    if (!ends(field, bytes))
        return false;
    if (field_text(bytes) == "null" || rule.holds(field_text(bytes)))
        return true;
    report(field, bytes, {it_must_be, rule.demand, or_null});
    return false;
}

bool RecordPart::one_of(FieldName field, FieldBytes bytes, std::string_view words) const
{
    if (!ends(field, bytes))
        return false;
    if (is_listed(field_text(bytes), words))
        return true;
    report(field, bytes, {it_must_be, "one of: ", words});
    return false;
}

bool RecordPart::nmos_word_or_foreign_uri(FieldName field, FieldBytes bytes,
                                          std::string_view words) const
{
    if (!field_text(bytes).starts_with("urn:x-nmos:"))
        return text(field, bytes, uri);
    return one_of(field, bytes, words);
}

bool RecordPart::ends(FieldName field, FieldBytes bytes) const
{
    if (field_text(bytes).size() < bytes.size())
        return true;
    report(field, bytes, {"there is no NUL in its ", NumberText(bytes.size()), " bytes"});
    return false;
}

void RecordPart::report(FieldName field, FieldBytes bytes, Pieces rule) const
{
    report_value(field, quoted(field_text(bytes)), rule);
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

// SPDX-License-Identifier: Apache-2.0
//
// What the record checks share: the rules for texts and numbers, and the path that a finding names.

#ifndef NMOS_INSTRUMENT_SRC_RECORD_CHECK_RULES_H
#define NMOS_INSTRUMENT_SRC_RECORD_CHECK_RULES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "records/record_fields.h"
#include "text/ipv4_text.h"
#include "text/text_rules.h"

namespace nmos_instrument {

/// What the text of a field has to be.
struct TextRule
{
    bool (*holds)(std::string_view text);
    const char* demand; ///< continues "it must be"
};

bool is_utf8_and_not_empty(std::string_view text);
bool is_dotted_quad_or_auto(std::string_view text);

// JSON text is UTF-8 (RFC 8259, 8.1), and the bodies copy the bytes of the record.
inline constexpr TextRule any_text = {is_utf8, "UTF-8"};
inline constexpr TextRule some_text = {is_utf8_and_not_empty, "UTF-8 and not empty"};
inline constexpr TextRule uuid = {is_uuid, "a UUID in lower case"};
inline constexpr TextRule version_time = {
    is_version_time, "<seconds>:<nanoseconds> with nanoseconds from 0 to 999999999"};
inline constexpr TextRule uri = {is_uri, "a URI"};
inline constexpr TextRule http_url = {is_http_url, "a URL that begins with http:// or https://"};
inline constexpr TextRule ipv4_address = {is_dotted_quad, "an IPv4 address"};
inline constexpr TextRule ipv4_address_or_auto = {is_dotted_quad_or_auto,
                                                  "\"auto\", an IPv4 address"};
inline constexpr TextRule api_version = {is_api_version, "like v1.2"};
inline constexpr TextRule clock_name = {is_clock_name, "like clk0"};
inline constexpr TextRule mac_address = {is_mac_address, "like 00-00-5e-00-53-01, in lower case"};
inline constexpr TextRule lower_case_eui64 = {is_lower_case_eui64,
                                              "like 00-00-5e-ff-fe-00-53-01, in lower case"};
inline constexpr TextRule eui64 = {is_eui64, "like 00-00-5E-FF-FE-00-53-01"};
inline constexpr TextRule digits = {is_digits, "digits"};
inline constexpr TextRule media_type = {is_media_type, "a media type"};
inline constexpr TextRule video_media_type = {is_video_media_type,
                                              "a media type that begins with video/"};
inline constexpr TextRule audio_media_type = {is_audio_media_type,
                                              "a media type that begins with audio/"};

/// A field, or one entry of an array.
struct FieldName
{
    static constexpr std::size_t no_index = static_cast<std::size_t>(-1);

    // Implicit, so that a check reads as the name beside the field.
    constexpr FieldName(const char* field_name, std::size_t entry = no_index)
        : name(field_name), index(entry)
    {}

    const char* name;
    std::size_t index;
};

/// A part of the record: the whole of it, an entry of one of its arrays, or an entry of an array in
/// that. The text of its path is made only when there is something to report.
///
/// Every check reports at most one finding for a field, and returns true when there was none.
class RecordPart
{
public:
    using Pieces = std::initializer_list<std::string_view>;

    /// The whole record.
    explicit RecordPart(std::vector<std::string>& findings) noexcept;
    /// `outer` must outlive it.
    RecordPart(const RecordPart& outer, FieldName own_name) noexcept;

    /// How many leading entries of an array are valid, bounded so that none lies outside of it.
    template <typename Entry, std::size_t N>
    std::size_t count(FieldName field, std::int32_t value, const Entry (&entries)[N],
                      std::int32_t minimum = 0) const
    {
        check_count(field, value, minimum, static_cast<std::int32_t>(N));
        return valid_entries(entries, value).size();
    }
    bool number(FieldName field, double value, std::int32_t lowest, std::int32_t highest) const;
    bool text(FieldName field, FieldBytes bytes, const TextRule& rule) const;
    bool text_or_null(FieldName field, FieldBytes bytes, const TextRule& rule) const;
    /// `words` as in "http, https".
    bool one_of(FieldName field, FieldBytes bytes, std::string_view words) const;
    /// One of `words`, or a URI outside of the name space of NMOS.
    bool nmos_word_or_foreign_uri(FieldName field, FieldBytes bytes, std::string_view words) const;

    /// "<path of the field> is <the text in quotes>, <pieces of the rule>".
    void report(FieldName field, FieldBytes bytes, Pieces rule) const;
    /// "<path of the field> is <value>, <pieces of the rule>".
    void report_value(FieldName field, std::string_view value, Pieces rule) const;

private:
    void check_count(FieldName field, std::int32_t value, std::int32_t minimum,
                     std::int32_t capacity) const;
    void append_path(std::string& to) const;
    bool ends(FieldName field, FieldBytes bytes) const;

    std::vector<std::string>& findings_;
    const RecordPart* outer_;
    FieldName own_name_;
};

/// Appends "name" or "name[index]".
void append_field_name(std::string& to, FieldName field);

} // namespace nmos_instrument

#endif

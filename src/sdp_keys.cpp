// SPDX-License-Identifier: Apache-2.0

#include "sdp_keys.h"

#include <array>

namespace nmos_instrument {
namespace {

/// Each key holds one '=' or ':'. Looking for these finds all keys of a line in one pass.
struct KeyText
{
    consteval KeyText(std::string_view key_text, SdpKey its_key)
        : text(key_text),
          separator(key_text.find_first_of("=:")),
          before_separator(key_text[separator - 1]),
          key(its_key)
    {}

    std::string_view text;
    std::size_t separator; ///< its position in the text
    char before_separator;
    SdpKey key;
};

// Keys with the same letter before their separator stand together.
constexpr KeyText key_texts[sdp_key_count] = {
    {"o=", SdpKey::origin},
    {"c=", SdpKey::connection},
    {"m=", SdpKey::media},
    {"a=", SdpKey::attribute},
    {"group:DUP ", SdpKey::group_dup},
    {"rtpmap:", SdpKey::rtpmap},
    {"fmtp:", SdpKey::fmtp},
    {"mid:", SdpKey::mid},
    {"source-filter:", SdpKey::source_filter},
    {"sampling=", SdpKey::sampling},
    {"depth=", SdpKey::depth},
    {"width=", SdpKey::width},
    {"height=", SdpKey::height},
    {"exactframerate=", SdpKey::exactframerate},
    {"TCS=", SdpKey::tcs},
    {"colorimetry=", SdpKey::colorimetry},
    {"PM=", SdpKey::packing_mode},
    {"SSN=", SdpKey::ssn},
    {"TP=", SdpKey::traffic_profile},
};

/// For each byte before a separator, the first row of its keys; the table's size when it has none.
constexpr auto first_row = [] {
    std::array<std::uint8_t, 256> rows{};
    rows.fill(sdp_key_count);
    for (std::size_t row = sdp_key_count; row-- > 0;)
        rows[static_cast<unsigned char>(key_texts[row].before_separator)] =
            static_cast<std::uint8_t>(row);
    return rows;
}();

bool stands_at(std::string_view line, std::size_t separator, const KeyText& key)
{
    return separator >= key.separator &&
           line.substr(separator - key.separator).starts_with(key.text);
}

} // namespace

SdpKeys::SdpKeys(std::string_view line) noexcept
{
    for (const char separator : {'=', ':'}) {
        for (std::size_t at = line.find(separator, 1); at < line.size();
             at = line.find(separator, at + 1))
            note_keys_at(line, at);
    }
}

void SdpKeys::note_keys_at(std::string_view line, std::size_t separator) noexcept
{
    const char before = line[separator - 1];
    for (std::size_t row = first_row[static_cast<unsigned char>(before)];
         row < sdp_key_count && key_texts[row].before_separator == before; ++row) {
        const KeyText& key = key_texts[row];
        if (has(key.key) || !stands_at(line, separator, key))
            continue;
        found_ |= bit(key.key);
        value_start_[index(key.key)] = separator - key.separator + key.text.size();
    }
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_keys.h"

#include <array>
#include <cstring>

namespace nmos_instrument {
namespace {

/// Each key holds one '=' or ':'. Looking for these finds all keys of a line in one pass.
struct KeyText
{
    consteval KeyText(std::string_view key_text, SdpKey its_key)
        : size(static_cast<std::uint8_t>(key_text.size())),
          separator(static_cast<std::uint8_t>(key_text.find_first_of("=:"))),
          before_separator(key_text[separator - 1U]),
          key(its_key)
    {
        key_text.copy(text, sizeof text);
    }

    char text[16] = {};
    std::uint8_t size;
    std::uint8_t separator; ///< its position in the text
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

static_assert(
    [] {
        for (std::size_t row = 2; row < sdp_key_count; ++row) {
            for (std::size_t earlier = 0; earlier + 1 < row; ++earlier) {
                if (key_texts[earlier].before_separator == key_texts[row].before_separator &&
                    key_texts[row - 1].before_separator != key_texts[row].before_separator)
                    return false;
            }
        }
        return true;
    }(),
    "a key that stands apart from those of its letter would never be found");

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
    if (separator < key.separator)
        return false;
    const std::size_t start = separator - key.separator;
    return line.size() - start >= key.size &&
           std::memcmp(line.data() + start, key.text, key.size) == 0;
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
        value_start_[index(key.key)] = separator - key.separator + key.size;
    }
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0

#include "sdp_keys.h"

namespace nmos_instrument {
namespace {

struct KeyText
{
    std::string_view text;
    SdpKey key;

    /// Each key holds one '=' or ':'. Looking for these finds all keys of a line in one pass.
    constexpr std::size_t separator() const { return text.find_first_of("=:"); }
    constexpr char before_separator() const { return text[separator() - 1]; }
};

// Keys with the same letter before their separator stand together.
constexpr std::array<KeyText, sdp_key_count> key_texts{{
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
}};

/// For each byte before a separator, the first row of its keys; the table's size when it has none.
constexpr auto first_row = [] {
    std::array<std::uint8_t, 256> rows{};
    rows.fill(key_texts.size());
    for (std::size_t row = key_texts.size(); row-- > 0;)
        rows[static_cast<unsigned char>(key_texts[row].before_separator())] =
            static_cast<std::uint8_t>(row);
    return rows;
}();

bool stands_at(std::string_view line, std::size_t separator, const KeyText& key)
{
    if (separator < key.separator())
        return false;
    return line.substr(separator - key.separator()).starts_with(key.text);
}

} // namespace

SdpKeys::SdpKeys(std::string_view line) noexcept
{
    for (std::size_t at = 1; at < line.size(); ++at) {
        if (line[at] != '=' && line[at] != ':')
            continue;
        const char before = line[at - 1];
        for (std::size_t row = first_row[static_cast<unsigned char>(before)];
             row < key_texts.size() && key_texts[row].before_separator() == before; ++row) {
            const KeyText& key = key_texts[row];
            if (has(key.key) || !stands_at(line, at, key))
                continue;
            found_ |= bit(key.key);
            value_start_[index(key.key)] = at - key.separator() + key.text.size();
        }
    }
}

} // namespace nmos_instrument

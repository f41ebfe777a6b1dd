// SPDX-License-Identifier: Apache-2.0

#include "text/quoted_text.h"

namespace nmos_instrument::host {

std::string in_quotes(std::string_view text)
{
    constexpr std::size_t longest = 96;
    constexpr std::size_t shortened = 72;
    constexpr char hex[] = "0123456789abcdef";

    const bool whole = text.size() <= longest;
    std::string quote = "\"";
    for (const char c : whole ? text : text.substr(0, shortened)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quote += '\\';
            quote += c;
        } else if (byte >= 0x20 && byte < 0x7f) {
            quote += c;
        } else {
            quote += {'\\', 'x', hex[byte / 16], hex[byte % 16]};
        }
    }
    quote += '"';
    if (!whole)
        quote += "... (" + std::to_string(text.size()) + " bytes)";
    return quote;
}

} // namespace nmos_instrument::host

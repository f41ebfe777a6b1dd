// SPDX-License-Identifier: Apache-2.0

#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

void add_printable(std::string& shown, char c)
{
    constexpr char hex[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7f)
        shown += c;
    else
        shown += {'\\', 'x', hex[byte / 16], hex[byte % 16]};
}

} // namespace

std::string printable(std::string_view text)
{
    std::string shown;
    for (const char c : text)
        add_printable(shown, c);
    return shown;
}

std::string in_quotes(std::string_view text)
{
    constexpr std::size_t longest = 96;
    constexpr std::size_t shortened = 72;

    const bool whole = text.size() <= longest;
    std::string quote = "\"";
    for (const char c : whole ? text : text.substr(0, shortened)) {
        if (c == '"' || c == '\\')
            quote += '\\';
        add_printable(quote, c);
    }
    quote += '"';
    if (!whole)
        quote += "... (" + std::to_string(text.size()) + " bytes)";
    return quote;
}

} // namespace nmos_instrument::host

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

std::string one_line(std::string_view text)
{
    while (text.ends_with('\n'))
        text.remove_suffix(1);
    std::string line;
    for (const char c : text) {
        if (c == '\n')
            line += " | ";
        else
            line += c;
    }
    return line;
}

std::string in_quotes(std::string_view text)
{
    constexpr std::size_t longest = 96; // as it is shown
    constexpr std::size_t shortened = 72;

    std::string quote = "\"";
    std::size_t cut = quote.size();
    for (std::size_t i = 0; i < text.size() && quote.size() <= longest + 1; ++i) {
        if (text[i] == '"' || text[i] == '\\')
            quote += '\\';
        add_printable(quote, text[i]);
        if (quote.size() <= shortened + 1)
            cut = quote.size();
    }
    if (quote.size() <= longest + 1)
        return quote + '"';
    return quote.substr(0, cut) + "\"... (" + std::to_string(text.size()) + " bytes)";
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "text/pieces.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "text/ascii.h"

namespace nmos_instrument::host {

std::string_view cut_off(std::string_view& rest, char separator)
{
    const std::size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return piece;
}

std::vector<std::string_view> words_of(std::string_view text)
{
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::string_view word = cut_off(text, ' ');
        if (!word.empty())
            words.push_back(word);
    }
    return words;
}

std::string_view trimmed(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::optional<long> number_from_to(long least, long most, std::string_view text)
{
    long number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    // It would take a sign.
    if (error != std::errc() || rest != end || !is_digit(text.front()) || number < least ||
        number > most)
        return std::nullopt;
    return number;
}

} // namespace nmos_instrument::host

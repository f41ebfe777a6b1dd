// SPDX-License-Identifier: Apache-2.0

#include "commands/number_option.h"

#include <charconv>

#include <CLI/CLI.hpp>

namespace nmos_instrument::program {

std::optional<long long> parse_number(const std::string& word)
{
    long long number = 0;
    const char* const end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, number);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return number;
}

std::string refusal_of(const std::string& word, const std::string& allowed)
{
    return "found \"" + word + "\", allowed: " + allowed;
}

CLI::Validator whole_number(long long lowest, long long highest, const std::string& allowed)
{
    const auto refuse = [=](const std::string& word) -> std::string {
        const std::optional<long long> number = parse_number(word);
        const bool fits = number && *number >= lowest && *number <= highest;
        return fits ? "" : refusal_of(word, allowed);
    };
    return {refuse, ""};
}

} // namespace nmos_instrument::program

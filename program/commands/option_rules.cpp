// SPDX-License-Identifier: Apache-2.0

#include "commands/option_rules.h"

#include <algorithm>
#include <charconv>

#include <CLI/CLI.hpp>

#include "text/quoted_text.h"
#include "text/word_list.h"

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
    return "found " + host::in_quotes(word) + ", allowed: " + allowed;
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

CLI::Validator one_of(const std::vector<std::string>& words)
{
    const auto refuse = [words](const std::string& word) -> std::string {
        const bool allowed = std::find(words.begin(), words.end(), word) != words.end();
        return allowed ? "" : refusal_of(word, host::word_list(words));
    };
    return {refuse, ""};
}

CLI::Validator obeys(const host::TextRule& rule)
{
    const auto refuse_or_rewrite = [rule](std::string& word) -> std::string {
        const std::string found = word;
        return rule.accept(word) ? "" : refusal_of(found, rule.allowed);
    };
    return {refuse_or_rewrite, ""};
}

void add_network_option(CLI::App& command, const std::string& name,
                        std::vector<host::Ipv4Network>& networks, const std::string& explanation)
{
    const auto refuse = [](const std::string& word) -> std::string {
        return host::parse_ipv4_network(word)
                   ? ""
                   : refusal_of(word, std::string(host::allowed_ipv4_network()));
    };
    const auto add = [&networks](const std::string& word) {
        networks.push_back(host::parse_ipv4_network(word).value());
    };
    command.add_option_function<std::string>(name, add, explanation + "; may be repeated")
        ->check(CLI::Validator(refuse, ""))
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->trigger_on_parse()
        ->type_name("CIDR");
}

} // namespace nmos_instrument::program

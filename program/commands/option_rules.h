// SPDX-License-Identifier: Apache-2.0
//
// What the words after an option may be. CLI11's own rules print ranges such as
// [-2147483648 - 2147483647], and refuse a word without saying what is allowed.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_OPTION_RULES_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_OPTION_RULES_H

#include <optional>
#include <string>
#include <vector>

#include "commands/cli11_names.h"
#include "configuration/value_rules.h"
#include "text/ipv4_network.h"

namespace nmos_instrument::program {

/// The whole number that `word` says; nothing for any other text.
std::optional<long long> parse_number(const std::string& word);

/// "found \"x\", allowed: 1 to 65535"
std::string refusal_of(const std::string& word, const std::string& allowed);

/// Refuses what is not a number from `lowest` to `highest`; `allowed` says the same in words.
CLI::Validator whole_number(long long lowest, long long highest, const std::string& allowed);

/// Refuses what is not one of `words`, and lists them.
CLI::Validator one_of(const std::vector<std::string>& words);

/// Refuses what a key of the configuration with this rule would not take, and says what is allowed.
/// As a transform it also rewrites the word to its usual spelling.
CLI::Validator obeys(const host::TextRule& rule);

/// An option that may be repeated, and adds one network each time. `networks` must outlive the
/// command.
void add_network_option(CLI::App& command, const std::string& name,
                        std::vector<host::Ipv4Network>& networks, const std::string& explanation);

} // namespace nmos_instrument::program

#endif

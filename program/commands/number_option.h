// SPDX-License-Identifier: Apache-2.0
//
// Options that take a whole number. CLI11's own rules print ranges such as
// [-2147483648 - 2147483647], and refuse a word without saying what is allowed.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_NUMBER_OPTION_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_NUMBER_OPTION_H

#include <optional>
#include <string>

namespace CLI { // NOLINT(readability-identifier-naming): its name, not ours
class Validator;
}

namespace nmos_instrument::program {

/// The whole number that `word` says; nothing for any other text.
std::optional<long long> parse_number(const std::string& word);

/// "found \"x\", allowed: 1 to 65535"
std::string refusal_of(const std::string& word, const std::string& allowed);

/// Refuses what is not a number from `lowest` to `highest`; `allowed` says the same in words.
CLI::Validator whole_number(long long lowest, long long highest, const std::string& allowed);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0
//
// Options that take one of a few words.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_WORD_OPTION_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_WORD_OPTION_H

#include <string>
#include <vector>

namespace CLI { // NOLINT(readability-identifier-naming): its name, not ours
class Validator;
}

namespace nmos_instrument::program {

/// Refuses what is not one of `words`, and lists them.
CLI::Validator one_of(const std::vector<std::string>& words);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0
//
// Options that take what a key of the configuration takes.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_RULE_OPTION_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_RULE_OPTION_H

#include "configuration/value_rules.h"

namespace CLI { // NOLINT(readability-identifier-naming): its name, not ours
class Validator;
}

namespace nmos_instrument::program {

/// Refuses what does not obey the rule, and says what is allowed. As a transform it also rewrites
/// the word to its usual spelling.
CLI::Validator obeys(const host::TextRule& rule);

} // namespace nmos_instrument::program

#endif

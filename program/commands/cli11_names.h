// SPDX-License-Identifier: Apache-2.0
//
// For headers that only name types of CLI11: to parse it takes longer than everything else here.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_CLI11_NAMES_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_CLI11_NAMES_H

namespace CLI { // NOLINT(readability-identifier-naming): its name, not ours
class App;
class Option;
class Validator;
} // namespace CLI

#endif

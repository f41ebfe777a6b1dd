// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_INDENT_JSON_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_INDENT_JSON_H

#include <string>
#include <string_view>

namespace nmos_instrument::program {

/// `text` spread over lines for people to read, with a line feed at its end. Only white space
/// between the tokens changes: numbers and strings keep their spelling and members their order,
/// which parsing and printing would lose. A text that is not JSON is returned as it is.
std::string indent_json(std::string_view text);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_COMMANDS_INDENT_JSON_H
#define VIRTUAL_INSTRUMENT_COMMANDS_INDENT_JSON_H

#include <string>
#include <string_view>

namespace virtual_instrument {

/// `text` spread over lines for reading, with a line feed at its end. Only white space between the
/// tokens changes: numbers and strings keep their spelling and members their order, which parsing
/// and printing would not give. A text that is not JSON is returned as it is.
std::string indent_json(std::string_view text);

} // namespace virtual_instrument

#endif

// SPDX-License-Identifier: Apache-2.0
//
// How values stand in reports.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_REPORT_VALUES_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_REPORT_VALUES_H

#include <cstddef>
#include <string>

#include <nlohmann/json.hpp>

namespace nmos_instrument::program {

/// `text` with spaces up to the next column, at least one.
std::string padded(std::string text, std::size_t width);

/// `text` in JSON, or null if it is empty.
nlohmann::ordered_json or_null(const std::string& text);

/// `line` in JSON, or null if it is 0, which is no line.
nlohmann::ordered_json line_or_null(std::size_t line);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_FORMAT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_FORMAT_H

#include <ostream>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "sdp/format_values.h"

namespace nmos_instrument::program {

/// A line for each value that the file has.
void print_format(const std::vector<host::FormatValue>& format, std::ostream& out);

/// An object; a value that the file does not have is null.
nlohmann::ordered_json format_as_json(const std::vector<host::FormatValue>& format);

} // namespace nmos_instrument::program

#endif

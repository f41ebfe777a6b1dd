// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_FORMAT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_FORMAT_H

#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>
#include <nmos_instrument/nmos_instrument.h>

namespace nmos_instrument::program {

/// One value that an SDP file gives for both legs together.
struct FormatValue
{
    const char* key;   ///< for programs
    const char* title; ///< for people
    std::string value; ///< as it is in the file; empty if the file has none
};

std::vector<FormatValue> format_values(const sdp_str& found);

/// A line for each value that the file has.
void print_format(const std::vector<FormatValue>& format, std::ostream& out);

/// An object; a value that the file does not have is null.
nlohmann::ordered_json format_as_json(const std::vector<FormatValue>& format);

} // namespace nmos_instrument::program

#endif

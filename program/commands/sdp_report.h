// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_REPORT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_REPORT_H

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "commands/sdp_verdict.h"

namespace nmos_instrument::program {

/// What came of one file.
struct CheckedFile
{
    std::string name; ///< "-" is standard input
    std::optional<SdpVerdict> verdict;
    std::string read_error; ///< if there is no verdict
};

/// For people. Bytes of the file that are not visible ASCII are shown as \xHH: the file may come
/// from anywhere, and a terminal obeys some bytes. A file that cannot be read is reported in
/// `errors`.
void report_as_text(const CheckedFile& file, std::ostream& out, std::ostream& errors);

/// For programs: an array with one object for each file. A value that was not found is null. Bytes
/// that are not UTF-8 become U+FFFD.
void report_as_json(const std::vector<CheckedFile>& files, std::ostream& out);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What an instrument has to say goes to the log of the program.

#ifndef NMOS_INSTRUMENT_PROGRAM_LOG_INSTRUMENT_LOG_H
#define NMOS_INSTRUMENT_PROGRAM_LOG_INSTRUMENT_LOG_H

#include <string>
#include <string_view>

#include <nmos_instrument_host/instrument.h>

namespace nmos_instrument::program {

/// The level that --log-level names.
nmos_instrument_host::LogLevel level_of(const std::string& name);

/// The log callback of an instrument: hands the line to spdlog.
void write_log(nmos_instrument_host::LogLevel level, std::string_view line);

} // namespace nmos_instrument::program

#endif

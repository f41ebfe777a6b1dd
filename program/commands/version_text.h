// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_VERSION_TEXT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_VERSION_TEXT_H

#include <string>

#include <nmos_instrument/version.h>

namespace nmos_instrument::program {

/// "nmos-instrument 1.0.0"
inline std::string version_text()
{
    return std::string("nmos-instrument ") + nmos_instrument::version();
}

} // namespace nmos_instrument::program

#endif

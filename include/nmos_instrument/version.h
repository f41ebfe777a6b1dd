// SPDX-License-Identifier: Apache-2.0

// The version of nmos-instrument, which is written here only: the build reads these numbers for the
// file names of the library, the CMake package and the pkg-config file.
//
// MAJOR rises when a program that was built against an older library would no longer run (it is
// the number in libnmos-instrument.so.1), MINOR with every addition, PATCH with every correction.

#ifndef NMOS_INSTRUMENT_VERSION_H
#define NMOS_INSTRUMENT_VERSION_H

#define NMOS_INSTRUMENT_VERSION_MAJOR 1
#define NMOS_INSTRUMENT_VERSION_MINOR 0
#define NMOS_INSTRUMENT_VERSION_PATCH 0

#ifdef __cplusplus

#include "nmos_instrument/export.h"

namespace nmos_instrument {

/// The version of the library that runs, "1.0.0". The numbers above are those of the headers that a
/// host was compiled with; the library may be newer.
NMOS_INSTRUMENT_EXPORT const char* version() noexcept;

} // namespace nmos_instrument

#endif

#endif

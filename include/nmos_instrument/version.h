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

#endif

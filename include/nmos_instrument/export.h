// SPDX-License-Identifier: Apache-2.0
//
// Marks what the shared library exports. Everything else in it is hidden.

#ifndef NMOS_INSTRUMENT_EXPORT_H
#define NMOS_INSTRUMENT_EXPORT_H

#if defined(__GNUC__)
#define NMOS_INSTRUMENT_EXPORT __attribute__((visibility("default")))
#else
#define NMOS_INSTRUMENT_EXPORT
#endif

#endif

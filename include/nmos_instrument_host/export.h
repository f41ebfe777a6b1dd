// SPDX-License-Identifier: Apache-2.0
//
// Marks what libnmos-instrument-host exports. Everything else in it is hidden.

#ifndef NMOS_INSTRUMENT_HOST_EXPORT_H
#define NMOS_INSTRUMENT_HOST_EXPORT_H

#if defined(__GNUC__)
#define NMOS_INSTRUMENT_HOST_EXPORT __attribute__((visibility("default")))
#else
#define NMOS_INSTRUMENT_HOST_EXPORT
#endif

#endif

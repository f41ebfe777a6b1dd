// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_PANEL_PANEL_H
#define NMOS_INSTRUMENT_PROGRAM_PANEL_PANEL_H

#include <vector>

#include <nmos_instrument_host/http.h>

namespace nmos_instrument::program {

/// The page that shows and operates the instrument, and its files at "/panel/". The build makes the
/// source of it, see embed_files.cmake.
std::vector<nmos_instrument_host::PageFile> panel();

} // namespace nmos_instrument::program

#endif

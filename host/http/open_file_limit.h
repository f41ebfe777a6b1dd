// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_OPEN_FILE_LIMIT_H
#define NMOS_INSTRUMENT_HOST_HTTP_OPEN_FILE_LIMIT_H

namespace nmos_instrument::host {

/// Raises the process's limit of open files, as far as needed and allowed, and returns how many of
/// the `wanted` connections it may then hold open. Some files are reserved for other uses. The
/// limit is never lowered.
unsigned make_room_for_connections(unsigned wanted);

} // namespace nmos_instrument::host

#endif

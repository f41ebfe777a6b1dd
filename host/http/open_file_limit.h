// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_OPEN_FILE_LIMIT_H
#define NMOS_INSTRUMENT_HOST_HTTP_OPEN_FILE_LIMIT_H

namespace nmos_instrument::host {

/// How many of `wanted` connections the process may hold open, after its limit of open files has been
/// raised as far as needed and allowed; some files are left to others. The limit is never lowered.
unsigned make_room_for_connections(unsigned wanted);

} // namespace nmos_instrument::host

#endif

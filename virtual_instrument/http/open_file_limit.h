// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_HTTP_OPEN_FILE_LIMIT_H
#define VIRTUAL_INSTRUMENT_HTTP_OPEN_FILE_LIMIT_H

namespace virtual_instrument {

/// How many of `wanted` connections the process may hold open, after its limit of open files has been
/// raised as far as needed and allowed; some files are left to others. The limit is never lowered.
unsigned make_room_for_connections(unsigned wanted);

} // namespace virtual_instrument

#endif

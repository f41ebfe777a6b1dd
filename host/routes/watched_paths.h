// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_WATCHED_PATHS_H
#define NMOS_INSTRUMENT_HOST_ROUTES_WATCHED_PATHS_H

#include <vector>

#include "events/event_feed.h"
#include "instrument/instrument.h"

namespace nmos_instrument::host {

/// What "/events" tells about: all that changes while the instrument runs, and what is needed to show
/// it.
std::vector<WatchedPath> watched_paths(const Instrument& instrument);

} // namespace nmos_instrument::host

#endif

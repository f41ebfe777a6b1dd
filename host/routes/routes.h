// SPDX-License-Identifier: Apache-2.0
//
// The URL space of the instrument, one table for each API.

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTES_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTES_H

#include <span>

#include "routes/route.h"
#include "routes/route_table.h"

namespace nmos_instrument::host {

/// "/", "/x-nmos", and the two listings of the Registration API, which has nothing else here.
std::span<const Route> root_routes();

/// IS-04 v1.2 Node API, "/x-nmos/node".
std::span<const Route> node_routes();

/// IS-05 v1.0 Connection API, "/x-nmos/connection".
std::span<const Route> connection_routes();

/// "/healthz" and "/status", for the people who operate the instrument.
std::span<const Route> status_routes();

/// "/events", for pages that show the instrument.
std::span<const Route> event_routes();

/// "/layout", for whoever shows the whole instrument.
std::span<const Route> layout_routes();

/// "/check-sdp", for whoever has an SDP file.
std::span<const Route> check_sdp_routes();

/// "/metrics", for the programs that watch it.
std::span<const Route> metrics_routes();

/// Those, and `more`, which must outlive the table.
RouteTable all_routes(std::span<const Route> more = {});

} // namespace nmos_instrument::host

#endif

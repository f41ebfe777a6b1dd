// SPDX-License-Identifier: Apache-2.0
//
// The URL space of the program. Every body that the library makes is served unchanged.

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTES_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTES_H

#include <nlohmann/json.hpp>

#include "routes/router.h"
#include "routes/services.h"

namespace nmos_instrument::host {

/// "/", "/x-nmos", and the Registration API, which this node only names.
void add_root_routes(Router& router);

/// IS-04 v1.2 Node API, "/x-nmos/node".
void add_node_routes(Router& router, const Services& services);

/// IS-05 v1.0 Connection API, "/x-nmos/connection".
void add_connection_routes(Router& router, const Services& services);

/// "/healthz" and "/status", for those who operate the instrument.
void add_status_routes(Router& router, const Services& services);

/// The handler of a request in JSON: parses the body, answers 400 with the position when it is no
/// JSON, and calls `handle`.
using JsonHandler = std::function<void(const HttpRequest& request, std::size_t index,
                                       const nlohmann::json& document, const HttpReply& reply)>;
RouteHandler with_json(JsonHandler handle);

} // namespace nmos_instrument::host

#endif

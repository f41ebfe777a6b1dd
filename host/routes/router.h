// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTER_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTER_H

#include "http/server.h"
#include "routes/route_table.h"
#include "routes/services.h"

namespace nmos_instrument::host {

/// Finds the route of a request and has it answered. The same for all paths:
///
/// - An unknown path or id is a 404, a method that the path has not is a 405 that names those it
///   has.
/// - GET and HEAD may have a slash at the end, other methods may not: that is a 404 (IS-04 v1.2,
///   APIs: the slash is left out in the primary path of every resource).
/// - OPTIONS is answered for browsers, which ask before they send what is not simple.
/// - A body of a media type that is not JSON is a 415; without a type it counts as JSON. One that
///   is not JSON is a 400 that says where.
class Router
{
public:
    explicit Router(const Services& services);

    void handle(const HttpRequest& request, const HttpReply& reply) const;

private:
    void answer(const Route& route, std::size_t index, const HttpRequest& request,
                const HttpReply& reply) const;

    Services services_;
    RouteTable routes_;
};

} // namespace nmos_instrument::host

#endif

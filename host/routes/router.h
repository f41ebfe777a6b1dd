// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTER_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTER_H

#include <cstddef>
#include <span>
#include <string>

#include "http/server.h"
#include "routes/route_table.h"
#include "routes/services.h"
#include "routes/static_file.h"

namespace nmos_instrument::host {

/// What a program shows to browsers.
struct BrowserPage
{
    std::span<const Route> files{};   ///< must outlive the router
    const StaticFile* root = nullptr; ///< at "/", in place of the listing; null: there is no page
};

/// Finds the route of a request and answers it. These rules hold for all paths:
///
/// - An unknown path or id is a 404. A method that the path does not have is a 405, which names the
///   methods that it has.
/// - With GET and HEAD the path may end with a slash. With other methods that is a 404 (IS-04 v1.2,
///   APIs: the primary path of every resource has no slash at its end).
/// - OPTIONS is answered because browsers ask before they send a request that is not simple.
/// - A change by a client that may not change anything is a 403, before its body is looked at.
/// - A body whose media type is not JSON is a 415; without a type it counts as JSON. A body that is
///   not JSON is a 400, which says where the error is.
/// - If there is a page, a client that names HTML in Accept gets it at "/".
class Router
{
public:
    explicit Router(const Services& services, const BrowserPage& page = {});

    void handle(HttpRequest& request, const HttpReply& reply) const;

private:
    void answer(const Route& route, std::size_t index, const HttpRequest& request,
                const HttpReply& reply) const;
    HttpResponse answer_at_root(const Route& listing, const HttpRequest& request) const;
    std::string text_of(const Route& route, MakeText make_text, std::size_t index) const;

    Services services_;
    const StaticFile* const page_;
    RouteTable routes_;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The URL space as a table: which paths there are, which methods each has, and what answers.

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTER_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTER_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "http/message.h"
#include "http/server.h"

namespace nmos_instrument::host {

/// Answers a request. `index` is the position that the id in the path stands for, 0 without one.
using RouteHandler =
    std::function<void(const HttpRequest& request, std::size_t index, HttpReply reply)>;

/// As RouteHandler, when the answer can be made at once.
using RouteAnswer = std::function<HttpResponse(const HttpRequest& request, std::size_t index)>;

/// An answer in JSON.
inline HttpResponse json_response(std::string body, int status = 200)
{
    HttpResponse response;
    response.status = status;
    response.body = std::move(body);
    return response;
}

/// A position for an id, nothing when there is no such resource.
using FindId = std::function<std::optional<std::size_t>(std::string_view id)>;

/// The same for all paths:
///
/// - An unknown path or id is a 404, a method that the path has not is a 405 that names those it
///   has.
/// - GET and HEAD may have a slash at the end, other methods may not: that is a 404 (IS-04 v1.2,
///   APIs: the slash is left out in the primary path of every resource).
/// - OPTIONS is answered for browsers, which ask before they send what is not simple.
/// - A body of a media type that is not JSON is a 415; without a type it counts as JSON.
class Router
{
public:
    /// Paths may hold `{name}`; `find` says which ids are there.
    void define_id(const std::string& name, FindId find);

    /// `path` without slash at its end.
    void add(const std::string& method, const std::string& path, RouteHandler handler);
    void get(const std::string& path, RouteAnswer answer);

    /// For a path below `prefix` that is in no table: why it is not there.
    void explain_missing(const std::string& prefix, const std::string& why);

    void handle(const HttpRequest& request, const HttpReply& reply) const;

private:
    struct Route
    {
        std::vector<std::string> segments;
        std::map<std::string, RouteHandler> methods;
    };

    struct Match
    {
        const Route* route = nullptr; ///< null: there is no such path
        std::size_t index = 0;
        bool id_found = true;
    };

    Route& route_at(const std::string& path);
    Match match(const std::vector<std::string_view>& segments) const;
    HttpResponse missing(const std::string& path) const;

    std::vector<Route> routes_;
    std::map<std::string, FindId, std::less<>> ids_;
    std::vector<std::pair<std::string, std::string>> explanations_;
};

} // namespace nmos_instrument::host

#endif

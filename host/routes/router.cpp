// SPDX-License-Identifier: Apache-2.0

#include "routes/router.h"

#include <algorithm>
#include <utility>

#include "http/error_response.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// "/a/b" is "a", "b"; "/" is nothing. An empty segment stays: "/a//b" is another path.
std::vector<std::string_view> segments_of(std::string_view path)
{
    std::vector<std::string_view> segments;
    while (path.starts_with('/')) {
        path.remove_prefix(1);
        if (path.empty() && segments.empty())
            break;
        const std::string_view segment = path.substr(0, path.find('/'));
        segments.push_back(segment);
        path.remove_prefix(segment.size());
    }
    return segments;
}

bool is_id(std::string_view segment)
{
    return segment.starts_with('{');
}

/// "GET, HEAD, OPTIONS"
std::string list_of(const std::map<std::string, RouteHandler>& methods, bool reading_only)
{
    std::string list;
    for (const auto& [method, handler] : methods) {
        if (method == "GET")
            list += "GET, HEAD, ";
        else if (!reading_only)
            list += method + ", ";
    }
    return list + "OPTIONS";
}

bool has_body(const std::string& method)
{
    return method == "PATCH" || method == "POST" || method == "PUT";
}

/// application/json, and whatever else calls itself JSON (RFC 6839 3.1), in any case.
bool is_json(const std::optional<std::string>& content_type)
{
    if (!content_type)
        return true;
    std::string type = content_type->substr(0, content_type->find(';'));
    type.erase(0, type.find_first_not_of(" \t"));
    type.erase(type.find_last_not_of(" \t") + 1);
    std::transform(type.begin(), type.end(), type.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
    return type.empty() || type.ends_with("/json") || type.ends_with("+json");
}

HttpResponse options_response(const std::string& methods)
{
    HttpResponse response;
    response.content_type.clear();
    response.headers = {{"Allow", methods},
                        {"Access-Control-Allow-Methods", methods},
                        {"Access-Control-Allow-Headers", "Content-Type, Accept"},
                        {"Access-Control-Max-Age", "3600"}};
    return response;
}

} // namespace

void Router::define_id(const std::string& name, FindId find)
{
    ids_['{' + name + '}'] = std::move(find);
}

Router::Route& Router::route_at(const std::string& path)
{
    std::vector<std::string> segments;
    for (const std::string_view segment : segments_of(path))
        segments.emplace_back(segment);
    for (Route& route : routes_) {
        if (route.segments == segments)
            return route;
    }
    routes_.push_back({std::move(segments), {}});
    return routes_.back();
}

void Router::add(const std::string& method, const std::string& path, RouteHandler handler)
{
    route_at(path).methods[method] = std::move(handler);
}

void Router::get(const std::string& path, RouteAnswer answer)
{
    add("GET", path,
        [answer = std::move(answer)](const HttpRequest& request, std::size_t index,
                                     const HttpReply& reply) { reply(answer(request, index)); });
}

void Router::explain_missing(const std::string& prefix, const std::string& why)
{
    explanations_.emplace_back(prefix, why);
}

Router::Match Router::match(const std::vector<std::string_view>& segments) const
{
    for (const Route& route : routes_) {
        Match match{&route};
        const bool fits =
            std::equal(route.segments.begin(), route.segments.end(), segments.begin(),
                       segments.end(), [](const std::string& ours, std::string_view theirs) {
                           return is_id(ours) ? !theirs.empty() : ours == theirs;
                       });
        if (!fits)
            continue;
        for (std::size_t i = 0; i < segments.size(); ++i) {
            if (!is_id(route.segments[i]))
                continue;
            const std::optional<std::size_t> index = ids_.at(route.segments[i])(segments[i]);
            match.id_found = index.has_value();
            match.index = index.value_or(0);
        }
        return match;
    }
    return {};
}

HttpResponse Router::missing(const std::string& path) const
{
    for (const auto& [prefix, why] : explanations_) {
        if (path.starts_with(prefix))
            return error_response(404, why, "there is nothing at " + in_quotes(path));
    }
    return error_response(404, "Not found", "there is nothing at " + in_quotes(path));
}

void Router::handle(const HttpRequest& request, const HttpReply& reply) const
{
    // "*" asks about the server as a whole (RFC 9110 9.3.7).
    if (request.method == "OPTIONS" && request.path == "*") {
        reply(options_response("GET, HEAD, PATCH, POST, PUT, OPTIONS"));
        return;
    }
    std::string_view path = request.path;
    const bool slash_at_end = path.size() > 1 && path.ends_with('/');
    if (slash_at_end)
        path.remove_suffix(1);
    const Match match = path.starts_with('/') ? this->match(segments_of(path)) : Match();
    if (match.route == nullptr || !match.id_found) {
        reply(missing(request.path));
        return;
    }
    const auto& methods = match.route->methods;
    if (request.method == "OPTIONS") {
        reply(options_response(list_of(methods, slash_at_end)));
        return;
    }
    if (slash_at_end && request.method != "GET") {
        reply(error_response(404, "Not found",
                             request.method +
                                 " needs the path without slash at its end: " + in_quotes(path)));
        return;
    }
    const auto handler = methods.find(request.method);
    if (handler == methods.end()) {
        const std::string allowed = list_of(methods, false);
        HttpResponse response =
            error_response(405, "Method not allowed",
                           "found " + in_quotes(request.method) + ", allowed: " + allowed);
        response.headers.emplace_back("Allow", allowed);
        reply(std::move(response));
        return;
    }
    if (has_body(request.method) && !is_json(request.content_type)) {
        reply(error_response(415, "Unsupported media type",
                             "Content-Type: found " + in_quotes(*request.content_type) +
                                 ", allowed: application/json"));
        return;
    }
    handler->second(request, match.index, reply);
}

} // namespace nmos_instrument::host

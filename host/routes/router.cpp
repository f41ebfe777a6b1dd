// SPDX-License-Identifier: Apache-2.0

#include "routes/router.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

#include "http/error_response.h"
#include "routes/asks_for_html.h"
#include "routes/change_response.h"
#include "routes/routes.h"
#include "text/ascii.h"
#include "text/json_input.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// "GET, HEAD, OPTIONS"
std::string list_of(const std::vector<const Route*>& routes, bool reading_only)
{
    std::string list;
    for (const Route* const route : routes) {
        if (route->method == "GET")
            list += "GET, HEAD, ";
        else if (!reading_only)
            list += std::string(route->method) + ", ";
    }
    return list + "OPTIONS";
}

/// application/json and all other types that are JSON (RFC 6839 3.1), in upper or lower case.
bool is_json(const std::optional<std::string>& content_type)
{
    if (!content_type)
        return true;
    std::string type = content_type->substr(0, content_type->find(';'));
    type.erase(0, type.find_first_not_of(" \t"));
    type.erase(type.find_last_not_of(" \t") + 1);
    std::transform(type.begin(), type.end(), type.begin(), to_lower);
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

HttpResponse not_found(const std::string& path)
{
    // The root listing names registration/, and its two listings exist; nothing else does.
    const bool registration = path.starts_with("/x-nmos/registration/");
    return error_response(404,
                          registration ? "Not found: this node is not a registry" : "Not found",
                          "there is nothing at " + in_quotes(path));
}

HttpResponse slash_too_many(const std::string& method, std::string_view path)
{
    return error_response(404, "Not found",
                          method +
                              " needs the path without the slash at its end: " + in_quotes(path));
}

HttpResponse not_allowed(const std::string& method, const std::string& allowed)
{
    HttpResponse response = error_response(405, "Method not allowed",
                                           "found " + in_quotes(method) + ", allowed: " + allowed);
    response.headers.emplace_back("Allow", allowed);
    return response;
}

} // namespace

Router::Router(const Services& services, const BrowserPage& page)
    : services_(services), page_(page.root), routes_(all_routes(page.files))
{}

void Router::handle(HttpRequest& request, const HttpReply& reply) const
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
    const auto match = routes_.find(path, services_.instrument.index());
    if (!match) {
        reply(not_found(request.path));
        return;
    }
    const RouteTable::Path& found = match->path;
    request.route = found.number;
    if (request.method == "OPTIONS") {
        reply(options_response(list_of(found.routes, slash_at_end)));
        return;
    }
    if (slash_at_end && request.method != "GET") {
        reply(slash_too_many(request.method, path));
        return;
    }
    const Route* const route = found.find(request.method);
    if (route == nullptr) {
        reply(not_allowed(request.method, list_of(found.routes, false)));
        return;
    }
    if (page_ != nullptr && route->path == "/")
        reply(answer_at_root(*route, request));
    else
        answer(*route, match->index, request, reply);
}

HttpResponse Router::answer_at_root(const Route& listing, const HttpRequest& request) const
{
    HttpResponse response =
        asks_for_html(request.accept)
            ? file_response(*page_, request.if_none_match)
            : json_response(text_of(listing, std::get<MakeText>(listing.function), 0));
    response.headers.emplace_back("Vary", "Accept"); // for caches, RFC 9110 12.5.5
    return response;
}

std::string Router::text_of(const Route& route, MakeText make_text, std::size_t index) const
{
    std::shared_ptr<const Conformance> conformance;
    std::string text =
        services_.instrument.read_with_conformance([&](Records& records, const auto& its) {
            conformance = its;
            return make_text(records, static_cast<int>(index));
        });
    if (route.correct == nullptr)
        return text;
    return (*conformance.*route.correct)(std::move(text));
}

void Router::answer(const Route& route, std::size_t index, const HttpRequest& request,
                    const HttpReply& reply) const
{
    if (const MakeText* const make_text = std::get_if<MakeText>(&route.function)) {
        reply(json_response(text_of(route, *make_text, index)));
        return;
    }
    if (const MakeResponse* const make_response = std::get_if<MakeResponse>(&route.function)) {
        reply((*make_response)(services_, index));
        return;
    }
    if (const AnswerRequest* const answer_request = std::get_if<AnswerRequest>(&route.function)) {
        reply((*answer_request)(services_, index, request));
        return;
    }
    if (const StaticFile* const* const file = std::get_if<const StaticFile*>(&route.function)) {
        reply(file_response(**file, request.if_none_match));
        return;
    }
    // All other routes change something.
    if (const std::string why = services_.permission.refusal_of(request.peer); !why.empty()) {
        refuse(services_, request, reply, {403, "Changes are not allowed", why});
        return;
    }
    if (const std::optional<Refusal> refusal = refusal_of_change(services_)) {
        services_.counts.refused_change(refusal->status);
        note_refusal(services_, request.peer, request.method + ' ' + request.path, *refusal);
        reply(response_of(*refusal));
        return;
    }
    if (!is_json(request.content_type)) {
        refuse(services_, request, reply,
               {415, "Unsupported media type",
                "Content-Type: found " + in_quotes(*request.content_type) +
                    ", allowed: application/json"});
        return;
    }
    std::optional<JsonDocument> document;
    try {
        document.emplace(parse_json(request.body, JsonComments::refused));
    } catch (const MalformedJson& error) {
        refuse(services_, request, reply, {400, "The body cannot be read as JSON", error.what()});
        return;
    }
    std::get<TakeJson>(route.function)(services_, {request, index, document->value()}, reply);
}

} // namespace nmos_instrument::host

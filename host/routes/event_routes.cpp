// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <string>
#include <utility>

#include "events/event_feed.h"
#include "http/client_address.h"
#include "http/error_response.h"
#include "routes/routes.h"

namespace nmos_instrument::host {
namespace {

HttpResponse too_many_watchers()
{
    return error_response(503, "Too many watchers",
                          "allowed: " + std::to_string(EventFeed::most_of_one_client) +
                              " at once for one client, " +
                              std::to_string(EventFeed::most_watchers) + " in all");
}

HttpResponse events(const Services& services, std::size_t, const HttpRequest& request)
{
    std::shared_ptr<HttpStream> stream =
        services.events == nullptr ? nullptr : services.events->watch(client_of(request.peer));
    if (!stream)
        return too_many_watchers();
    HttpResponse response;
    response.content_type = "text/event-stream";
    response.headers = {{"Cache-Control", "no-store"}};
    response.stream = std::move(stream);
    return response;
}

constexpr Route table[] = {
    {"GET", "/events", events},
};

} // namespace

std::span<const Route> event_routes()
{
    return table;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_REQUEST_COUNTS_H
#define NMOS_INSTRUMENT_HOST_ROUTES_REQUEST_COUNTS_H

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "http/server.h"
#include "routes/status_counts.h"

namespace nmos_instrument::host {

/// What clients asked for and how it was answered. There is a fixed number of counters, whatever
/// they send: an unknown path counts as the route "none", an unknown method as "other". For all
/// threads; none waits for another.
class RequestCounts
{
public:
    /// `paths` are those of the routes, which are numbered from 1 on.
    explicit RequestCounts(const std::vector<std::string_view>& paths);

    void answered(const HttpAccess& access) noexcept;

    /// Of a change that a client asked for; those of a bulk request count each.
    void refused_change(int status) noexcept { refusals_.count(status); }

    const StatusCounts& refusals() const { return refusals_; }

    /// Calls `visit(route, method, status, count)` for all that happened.
    template <class Visit>
    void visit_requests(const Visit& visit) const
    {
        for (const OfRoute& route : routes_)
            for (std::size_t method = 0; method < methods.size(); ++method)
                route.of_method[method].visit([&](std::string_view status, std::uint64_t count) {
                    visit(route.path, methods[method], status, count);
                });
    }

private:
    static constexpr std::array<std::string_view, 8> methods = {
        "GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "other"};

    struct OfRoute
    {
        std::string_view path;
        std::array<StatusCounts, methods.size()> of_method;
    };

    std::vector<OfRoute> routes_; ///< 0 is for what has none
    StatusCounts refusals_;
};

} // namespace nmos_instrument::host

#endif

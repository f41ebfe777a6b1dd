// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTE_TABLE_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTE_TABLE_H

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "records/resource_index.h"
#include "routes/route.h"

namespace nmos_instrument::host {

/// The routes by path.
class RouteTable
{
public:
    /// The tables must outlive it.
    RouteTable(std::initializer_list<std::span<const Route>> tables);

    /// The routes of one path, one for each method.
    struct Path
    {
        std::string_view path; ///< as in the tables
        std::size_t number;    ///< from 1 on
        std::vector<std::string_view> segments;
        std::vector<const Route*> routes;

        /// Null if the path does not have this method.
        const Route* find(std::string_view method) const;
    };

    struct Match
    {
        const Path& path;
        std::size_t index; ///< position of the resource whose id is in the path, or 0
    };

    /// In the order of their numbers.
    std::vector<std::string_view> paths() const;

    /// Nothing if there is no such path, or no resource with the id in it.
    std::optional<Match> find(std::string_view path, const ResourceIndex& resources) const;

private:
    void add(const Route& route);

    std::vector<Path> paths_;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#include "routes/route_table.h"

#include <algorithm>

namespace nmos_instrument::host {
namespace {

struct PathId
{
    std::string_view segment;
    ResourceKind kind;
};

constexpr PathId path_ids[] = {
    {"{source}", ResourceKind::source},     {"{flow}", ResourceKind::flow},
    {"{device}", ResourceKind::device},     {"{sender}", ResourceKind::sender},
    {"{receiver}", ResourceKind::receiver},
};

/// Null if the segment stands for itself.
const PathId* path_id(std::string_view segment)
{
    if (!segment.starts_with('{')) // most segments, for each route of each request
        return nullptr;
    const auto* const found = std::find_if(std::begin(path_ids), std::end(path_ids),
                                           [&](const PathId& id) { return id.segment == segment; });
    return found == std::end(path_ids) ? nullptr : found;
}

/// "/a/b" gives "a" and "b", "/" gives nothing. An empty segment stays: "/a//b" is another path.
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

bool fits(const std::vector<std::string_view>& ours, const std::vector<std::string_view>& theirs)
{
    return std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end(),
                      [](std::string_view our, std::string_view their) {
                          return path_id(our) != nullptr ? !their.empty() : our == their;
                      });
}

} // namespace

RouteTable::RouteTable(std::initializer_list<std::span<const Route>> tables)
{
    for (const std::span<const Route> table : tables) {
        for (const Route& route : table)
            add(route);
    }
}

void RouteTable::add(const Route& route)
{
    const std::vector<std::string_view> segments = segments_of(route.path);
    auto path = std::find_if(paths_.begin(), paths_.end(),
                             [&](const Path& known) { return known.segments == segments; });
    if (path == paths_.end())
        path = paths_.insert(path, {route.path, paths_.size() + 1, segments, {}});
    path->routes.push_back(&route);
}

std::vector<std::string_view> RouteTable::paths() const
{
    std::vector<std::string_view> all;
    for (const Path& path : paths_)
        all.push_back(path.path);
    return all;
}

const Route* RouteTable::Path::find(std::string_view method) const
{
    const auto found = std::find_if(routes.begin(), routes.end(),
                                    [&](const Route* route) { return route->method == method; });
    return found == routes.end() ? nullptr : *found;
}

std::optional<RouteTable::Match> RouteTable::find(std::string_view path,
                                                  const ResourceIndex& resources) const
{
    if (!path.starts_with('/'))
        return std::nullopt;
    const std::vector<std::string_view> segments = segments_of(path);
    const auto found = std::find_if(paths_.begin(), paths_.end(), [&](const Path& known) {
        return fits(known.segments, segments);
    });
    if (found == paths_.end())
        return std::nullopt;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const PathId* const id = path_id(found->segments[i]);
        if (id == nullptr)
            continue;
        const std::optional<std::size_t> index = resources.find(id->kind, segments[i]);
        if (!index)
            return std::nullopt;
        return Match{*found, *index};
    }
    return Match{*found, 0};
}

} // namespace nmos_instrument::host

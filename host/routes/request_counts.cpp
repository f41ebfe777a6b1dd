// SPDX-License-Identifier: Apache-2.0

#include "routes/request_counts.h"

#include <algorithm>

namespace nmos_instrument::host {

RequestCounts::RequestCounts(const std::vector<std::string_view>& paths) : routes_(paths.size() + 1)
{
    routes_.front().path = "none";
    for (std::size_t i = 0; i < paths.size(); ++i)
        routes_[i + 1].path = paths[i];
}

void RequestCounts::answered(const HttpAccess& access) noexcept
{
    const auto last = std::prev(methods.end());
    const auto method =
        static_cast<std::size_t>(std::find(methods.begin(), last, access.method) - methods.begin());
    routes_[access.route].of_method[method].count(access.status);
}

} // namespace nmos_instrument::host

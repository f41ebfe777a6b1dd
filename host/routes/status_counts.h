// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_STATUS_COUNTS_H
#define NMOS_INSTRUMENT_HOST_ROUTES_STATUS_COUNTS_H

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace nmos_instrument::host {

/// How often each HTTP status was the answer. For all threads; none waits for another.
class StatusCounts
{
public:
    /// 0 stands for no answer, as in HttpAccess.
    void count(int status) noexcept
    {
        const auto* const found = std::find(std::begin(statuses), std::end(statuses), status);
        counts_[static_cast<std::size_t>(found - std::begin(statuses))].fetch_add(
            1, std::memory_order_relaxed);
    }

    /// Calls `visit(text, count)` for each status that was counted.
    template <class Visit>
    void visit(const Visit& visit) const
    {
        for (std::size_t i = 0; i < counts_.size(); ++i) {
            const std::uint64_t count = counts_[i].load(std::memory_order_relaxed);
            if (count != 0)
                visit(text_of(i), count);
        }
    }

private:
    // All that this program answers with; another one would be counted as "other", at the end.
    static constexpr int statuses[] = {0,   200, 202, 304, 400, 403, 404,
                                       405, 413, 415, 423, 500, 501, 503};

    static std::string text_of(std::size_t position)
    {
        if (position == std::size(statuses))
            return "other";
        return statuses[position] == 0 ? "none" : std::to_string(statuses[position]);
    }

    std::array<std::atomic<std::uint64_t>, std::size(statuses) + 1> counts_{};
};

} // namespace nmos_instrument::host

#endif

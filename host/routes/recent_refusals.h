// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_RECENT_REFUSALS_H
#define NMOS_INSTRUMENT_HOST_ROUTES_RECENT_REFUSALS_H

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "routes/refusal.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

/// A change that a client asked for and did not get. The texts are visible ASCII.
struct RefusedChange
{
    TaiTime time;
    std::string client; ///< address and port
    std::string what;   ///< "receivers/<id>", or the request like "PATCH /x-nmos/..."
    Refusal refusal;

    bool operator==(const RefusedChange&) const = default;
};

/// The latest of them. For all threads.
class RecentRefusals
{
public:
    static constexpr std::size_t limit = 10;

    /// Texts with more bytes, as they are shown, are cut and end with " ...".
    static constexpr std::size_t longest_text = 1000;

    /// The texts may be any bytes and have several lines. Without memory this one is forgotten.
    void add(const TaiTime& time, std::string_view client, std::string_view what,
             const Refusal& refusal) noexcept;

    /// The newest first.
    std::vector<RefusedChange> all() const;

private:
    mutable std::mutex mutex_;
    std::deque<RefusedChange> refusals_; ///< the newest first
};

} // namespace nmos_instrument::host

#endif

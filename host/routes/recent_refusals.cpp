// SPDX-License-Identifier: Apache-2.0

#include "routes/recent_refusals.h"

#include <utility>

#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

std::string shortened(std::string_view text)
{
    std::string shown;
    for (const char byte : text) {
        const std::string piece = printable({&byte, 1});
        if (shown.size() + piece.size() > RecentRefusals::longest_text)
            return shown + " ...";
        shown += piece;
    }
    return shown;
}

} // namespace

void RecentRefusals::add(const TaiTime& time, std::string_view client, std::string_view what,
                         const Refusal& refusal) noexcept
{
    try {
        RefusedChange refused{
            time,
            std::string(client),
            shortened(what),
            {refusal.status, shortened(refusal.error), shortened(one_line(refusal.debug))}};
        const std::lock_guard lock(mutex_);
        refusals_.push_front(std::move(refused));
        if (refusals_.size() > limit)
            refusals_.pop_back();
    } catch (...) {
        return; // memory is short
    }
}

std::vector<RefusedChange> RecentRefusals::all() const
{
    const std::lock_guard lock(mutex_);
    return {refusals_.begin(), refusals_.end()};
}

} // namespace nmos_instrument::host

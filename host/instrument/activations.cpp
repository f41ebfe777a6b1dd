// SPDX-License-Identifier: Apache-2.0

#include "instrument/activations.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument::host {

void Activations::schedule(const ScheduledActivation& activation)
{
    scheduled_[activation.key] = activation;
}

bool Activations::cancel(const ConnectionKey& key)
{
    return scheduled_.erase(key) != 0;
}

const ScheduledActivation* Activations::find(const ConnectionKey& key) const
{
    const auto found = scheduled_.find(key);
    return found == scheduled_.end() ? nullptr : &found->second;
}

std::optional<TaiTime> Activations::next_due() const
{
    std::optional<TaiTime> next;
    for (const auto& [key, activation] : scheduled_) {
        if (!next || activation.due < *next)
            next = activation.due;
    }
    return next;
}

std::optional<ScheduledActivation> Activations::take_due(const TaiTime& now)
{
    const auto due = std::find_if(scheduled_.begin(), scheduled_.end(),
                                  [&](const auto& entry) { return entry.second.due <= now; });
    if (due == scheduled_.end())
        return std::nullopt;
    const ScheduledActivation taken = due->second;
    scheduled_.erase(due);
    return taken;
}

void Activations::remember(std::deque<ActivationReport>& list, ActivationReport report)
{
    constexpr std::size_t most = 20;
    list.push_front(std::move(report));
    if (list.size() > most)
        list.pop_back();
}

} // namespace nmos_instrument::host

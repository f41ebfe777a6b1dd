// SPDX-License-Identifier: Apache-2.0

#include "instrument/activations.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument::host {
namespace {

constexpr std::size_t most_reports = 20;

} // namespace

Activations::Activations()
{
    done_.reserve(most_reports);
    failed_.reserve(most_reports);
}

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

std::optional<ScheduledActivation> Activations::find_due(const TaiTime& now) const
{
    const auto due = std::find_if(scheduled_.begin(), scheduled_.end(),
                                  [&](const auto& entry) { return entry.second.due <= now; });
    if (due == scheduled_.end())
        return std::nullopt;
    return due->second;
}

void Activations::remember(std::vector<ActivationReport>& list, ActivationReport&& report)
{
    if (list.size() == most_reports)
        list.pop_back();
    list.insert(list.begin(), std::move(report));
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/activations.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument::host {
namespace {

constexpr std::size_t most_reports = 20;

template <class Time>
void keep_earlier(std::optional<Time>& earliest, const Time& time)
{
    if (!earliest || time < *earliest)
        earliest = time;
}

} // namespace

Activations::Activations()
{
    done_.reserve(most_reports);
    failed_.reserve(most_reports);
}

bool is_due(const ScheduledActivation& activation, const Instant& now)
{
    return activation.steady_due ? *activation.steady_due <= now.steady : activation.due <= now.tai;
}

std::chrono::nanoseconds lateness(const ScheduledActivation& activation, const Instant& now)
{
    return activation.steady_due ? now.steady - *activation.steady_due
                                 : span_between(activation.due, now.tai);
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

NextDue Activations::next_due() const
{
    NextDue next;
    for (const auto& [key, activation] : scheduled_) {
        if (activation.steady_due)
            keep_earlier(next.steady, *activation.steady_due);
        else
            keep_earlier(next.tai, activation.due);
    }
    return next;
}

std::optional<ScheduledActivation> Activations::find_due(const Instant& now) const
{
    const auto due = std::find_if(scheduled_.begin(), scheduled_.end(),
                                  [&](const auto& entry) { return is_due(entry.second, now); });
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

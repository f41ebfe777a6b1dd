// SPDX-License-Identifier: Apache-2.0

#include "registration/registry_choice.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace nmos_instrument::host {
namespace {

bool is_same(const Registry& one, const Registry& other)
{
    return one.url == other.url && one.address == other.address;
}

} // namespace

void RegistryChoice::update(std::vector<Registry> registries)
{
    std::vector<Candidate> candidates;
    for (Registry& registry : registries) {
        const auto known =
            std::find_if(candidates_.begin(), candidates_.end(),
                         [&](const Candidate& one) { return is_same(one.registry, registry); });
        if (known == candidates_.end())
            candidates.push_back({std::move(registry), random_()});
        else
            candidates.push_back({std::move(registry), known->place, known->tried});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& one, const Candidate& other) {
                         return std::tie(one.registry.priority, one.place) <
                                std::tie(other.registry.priority, other.place);
                     });
    candidates_ = std::move(candidates);
    // Whoever comes back may have been put right meanwhile; and the list does not grow for ever.
    std::erase_if(refused_, [this](const auto& one) { return !has(one.first); });
}

bool RegistryChoice::has(std::string_view url) const
{
    return std::any_of(candidates_.begin(), candidates_.end(),
                       [=](const Candidate& one) { return one.registry.url == url; });
}

void RegistryChoice::begin_round(const Registry& in_use)
{
    for (Candidate& candidate : candidates_)
        candidate.tried = is_same(candidate.registry, in_use);
}

std::optional<Registry> RegistryChoice::take(const std::string& node)
{
    for (Candidate& candidate : candidates_) {
        if (std::exchange(candidate.tried, true))
            continue;
        const auto refused = refused_.find(candidate.registry.url);
        if (refused == refused_.end() || refused->second != node)
            return candidate.registry;
    }
    return std::nullopt;
}

void RegistryChoice::note_refusal(const std::string& url, std::string node)
{
    refused_[url] = std::move(node);
}

} // namespace nmos_instrument::host

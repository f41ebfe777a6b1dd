// SPDX-License-Identifier: Apache-2.0

#include "http/client_places.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument::host {
namespace {

constexpr std::chrono::seconds longest_lookup{30};

} // namespace

bool ClientPlaces::take(const std::string& client)
{
    if (taken_ == for_all_)
        return false;
    std::size_t& of_client = taken_by_[client];
    if (of_client == for_one_)
        return false;
    ++of_client;
    ++taken_;
    return true;
}

void ClientPlaces::give_back(const std::string& client) noexcept
{
    const auto entry = taken_by_.find(client);
    if (--entry->second == 0)
        taken_by_.erase(entry);
    --taken_;
}

NameLookups::NameLookups(std::size_t for_one, std::size_t for_all) : places_(for_one, for_all)
{
    left_behind_.reserve(for_all); // never more than places: leave_behind needs no memory
}

bool NameLookups::begin(const std::string& client, TimePoint now)
{
    const auto end = std::find_if(left_behind_.begin(), left_behind_.end(),
                                  [now](const LeftBehind& one) { return one.until > now; });
    for (auto done = left_behind_.begin(); done != end; ++done)
        places_.give_back(done->client);
    left_behind_.erase(left_behind_.begin(), end);
    return places_.take(client);
}

void NameLookups::leave_behind(std::string&& client, TimePoint now) noexcept
{
    left_behind_.push_back({std::move(client), now + longest_lookup});
}

} // namespace nmos_instrument::host

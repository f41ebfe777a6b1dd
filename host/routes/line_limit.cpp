// SPDX-License-Identifier: Apache-2.0

#include "routes/line_limit.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument::host {
namespace {

constexpr std::chrono::milliseconds per_line{1000 / LineLimit::lines_per_second};

} // namespace

/// Every line moves the instant at which all are allowed again; it may be 50 lines away, no more.
bool LineLimit::has_room(const Count& count, Time now)
{
    return count.full_again + per_line <= now + burst * per_line;
}

bool LineLimit::allows(const std::string& client, Time now)
{
    const bool known = clients_.contains(client) || clients_.size() < most_clients;
    Count& count = clients_[known ? client : others];
    count.full_again = std::max(count.full_again, now);
    if (!has_room(count, now)) {
        ++count.left_out;
        return false;
    }
    count.full_again += per_line;
    return true;
}

std::vector<LineLimit::LeftOut> LineLimit::take_left_out(Time now)
{
    std::vector<LeftOut> taken;
    for (auto& [client, count] : clients_) {
        if (count.left_out != 0 && has_room(count, now)) {
            taken.push_back({client, count.left_out});
            count.left_out = 0;
        }
    }
    std::erase_if(clients_, [&](const auto& entry) { return entry.second.full_again <= now; });
    return taken;
}

std::vector<LineLimit::LeftOut> LineLimit::take_all_left_out()
{
    std::vector<LeftOut> taken;
    for (auto& [client, count] : clients_) {
        if (count.left_out != 0)
            taken.push_back({client, std::exchange(count.left_out, 0)});
    }
    return taken;
}

} // namespace nmos_instrument::host

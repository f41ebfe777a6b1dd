// SPDX-License-Identifier: Apache-2.0

#include "routes/client_log.h"

#include <chrono>

#include <spdlog/spdlog.h>

namespace nmos_instrument::host {

ClientLog::~ClientLog()
{
    try {
        info_.say_what_else_was_left_out();
        debug_.say_what_else_was_left_out();
    } catch (...) {
        return; // memory is short
    }
}

void ClientLog::info(const std::string& peer, std::string_view line) noexcept
{
    try {
        info_.write(peer, line);
    } catch (...) {
        return; // memory is short
    }
}

void ClientLog::debug(const std::string& peer, std::string_view line) noexcept
{
    try {
        debug_.write(peer, line);
    } catch (...) {
        return; // memory is short
    }
}

void ClientLog::Level::write(const std::string& peer, std::string_view line)
{
    if (spdlog::should_log(level_) && allows(peer))
        spdlog::log(level_, "{} {}", peer, line);
}

void ClientLog::Level::say_what_else_was_left_out()
{
    say_left_out(limit_.take_all_left_out());
}

bool ClientLog::Level::allows(const std::string& peer)
{
    const LineLimit::Time now = std::chrono::steady_clock::now();
    std::vector<LineLimit::LeftOut> left_out;
    bool allowed = false;
    {
        const std::lock_guard lock(mutex_);
        // Not at every line: it looks at all clients.
        if (now - last_look_ >= std::chrono::seconds(1)) {
            last_look_ = now;
            left_out = limit_.take_left_out(now);
        }
        allowed = limit_.allows(peer.substr(0, peer.rfind(':')), now);
    }
    say_left_out(left_out);
    return allowed;
}

void ClientLog::Level::say_left_out(const std::vector<LineLimit::LeftOut>& clients) const
{
    for (const LineLimit::LeftOut& client : clients)
        spdlog::log(level_, "{} lines of {} were left out", client.lines, client.client);
}

} // namespace nmos_instrument::host

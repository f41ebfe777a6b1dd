// SPDX-License-Identifier: Apache-2.0

#include "routes/client_log.h"

#include <chrono>

#include "http/client_address.h"

namespace nmos_instrument::host {

namespace {

/// Where a client's address and port would stand.
constexpr const char* http = "http:";

} // namespace

ClientLog::ClientLog(const Log& log)
    : error_(log, LogLevel::error), info_(log, LogLevel::info), debug_(log, LogLevel::debug)
{}

ClientLog::~ClientLog()
{
    try {
        for (Level* const level : {&error_, &info_, &debug_})
            level->say_what_else_was_left_out();
    } catch (...) {
        return; // memory is short
    }
}

void ClientLog::info(const std::string& peer, std::string_view line) noexcept
{
    info_.write(peer, line);
}

void ClientLog::debug(const std::string& peer, std::string_view line) noexcept
{
    debug_.write(peer, line);
}

void ClientLog::http_failure(std::string_view what) noexcept
{
    error_.write(http, what);
}

void ClientLog::http_remark(std::string_view what) noexcept
{
    debug_.write(http, what);
}

void ClientLog::Level::write(const std::string& peer, std::string_view line) noexcept
{
    try {
        write_if_allowed(peer, line);
    } catch (...) {
        return; // memory is short
    }
}

void ClientLog::Level::write_if_allowed(const std::string& peer, std::string_view line)
{
    if (log_.wants(level_) && allows(peer))
        log_.formatted(level_, "{} {}", peer, line);
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
        allowed = limit_.allows(client_of(peer), now);
    }
    say_left_out(left_out);
    return allowed;
}

void ClientLog::Level::say_left_out(const std::vector<LineLimit::LeftOut>& clients) const
{
    for (const LineLimit::LeftOut& client : clients)
        log_.formatted(level_, "{} lines of {} were left out", client.lines, client.client);
}

} // namespace nmos_instrument::host

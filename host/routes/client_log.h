// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_CLIENT_LOG_H
#define NMOS_INSTRUMENT_HOST_ROUTES_CLIENT_LOG_H

#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "log/log.h"
#include "routes/line_limit.h"

namespace nmos_instrument::host {

/// The log lines that clients cause, with the client in front: "192.0.2.1:50123 activated ...". A
/// client that causes too many loses some (see LineLimit), and the log says how many. All threads
/// may use it. Nothing throws: what a client asked for does not fail because a line is lost.
class ClientLog
{
public:
    explicit ClientLog(const Log& log);
    ~ClientLog();

    ClientLog(const ClientLog&) = delete;
    ClientLog& operator=(const ClientLog&) = delete;

    /// `peer` is the client's address and port.
    void info(const std::string& peer, std::string_view line) noexcept;
    void debug(const std::string& peer, std::string_view line) noexcept;

    /// What the HTTP server reports without naming a client. All of it counts as one client.
    void http_failure(std::string_view what) noexcept;
    void http_remark(std::string_view what) noexcept;

private:
    /// The lines of one level. Each has its own limit, so that the many debug lines do not cost
    /// those that an operator always wants.
    class Level
    {
    public:
        Level(Log log, LogLevel level) : log_(std::move(log)), level_(level) {}

        void write(const std::string& peer, std::string_view line) noexcept;
        void say_what_else_was_left_out();

    private:
        void write_if_allowed(const std::string& peer, std::string_view line);
        bool allows(const std::string& peer);
        void say_left_out(const std::vector<LineLimit::LeftOut>& clients) const;

        const Log log_;
        const LogLevel level_;
        std::mutex mutex_;
        LineLimit limit_;
        LineLimit::Time last_look_;
    };

    Level error_;
    Level info_;
    Level debug_;
};

} // namespace nmos_instrument::host

#endif

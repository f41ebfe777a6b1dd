// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_LOG_LOG_H
#define NMOS_INSTRUMENT_HOST_LOG_LOG_H

#include <functional>
#include <memory>
#include <string_view>
#include <utility>

#include <fmt/core.h>

namespace nmos_instrument::host {

enum class LogLevel
{
    debug,
    info,
    warning,
    error
};

/// Where the lines of one instrument go. Copies share one destination; any thread may use them, and
/// a thread that may be left behind has its own.
class Log
{
public:
    /// One call at a time, on whichever thread has something to say, which may hold locks: it must
    /// not wait for anything, nor call what it hears from. What it throws is swallowed, and what
    /// it logs itself is lost.
    using Write = std::function<void(LogLevel, std::string_view line)>;

    /// Nobody reads it.
    Log() = default;

    /// `least`: what is less important is not made at all.
    Log(LogLevel least, Write write);

    bool wants(LogLevel level) const noexcept;

    void line(LogLevel level, std::string_view text) const noexcept;

    // Lines with values. If there is no memory for one, another says that it is lost.

    template <class... Values>
    void formatted(LogLevel level, fmt::format_string<Values...> format,
                   Values&&... values) const noexcept
    {
        make_line(level, format, fmt::make_format_args(values...));
    }

    template <class... Values>
    void debug(fmt::format_string<Values...> format, Values&&... values) const noexcept
    {
        make_line(LogLevel::debug, format, fmt::make_format_args(values...));
    }

    template <class... Values>
    void info(fmt::format_string<Values...> format, Values&&... values) const noexcept
    {
        make_line(LogLevel::info, format, fmt::make_format_args(values...));
    }

    template <class... Values>
    void warning(fmt::format_string<Values...> format, Values&&... values) const noexcept
    {
        make_line(LogLevel::warning, format, fmt::make_format_args(values...));
    }

    template <class... Values>
    void error(fmt::format_string<Values...> format, Values&&... values) const noexcept
    {
        make_line(LogLevel::error, format, fmt::make_format_args(values...));
    }

    /// When it returns, no call of `write` is under way, unless it is that which has called this,
    /// and there is none any more, whoever has a copy.
    void end() noexcept;

private:
    struct Destination;

    void make_line(LogLevel level, fmt::string_view format, fmt::format_args values) const noexcept;

    std::shared_ptr<Destination> destination_;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_END_SIGNALS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_END_SIGNALS_H

#include <chrono>
#include <csignal>
#include <optional>
#include <set>
#include <string>

namespace nmos_instrument::program {

/// Keeps the signals of the program for the thread that waits for them. Only SIGTERM and SIGINT end
/// it; once they have, further ones change nothing. Make it before any thread starts: threads
/// inherit the blocked signals.
class EndSignals
{
public:
    EndSignals();

    /// Waits for SIGTERM or SIGINT and returns its name. What else arrives is logged.
    std::string wait();

    /// Waits at most this long; nothing if neither has come.
    std::optional<std::string> wait_for(std::chrono::milliseconds time);

private:
    void note_ignored(int signal) noexcept;
    void log_ignored(int signal);

    sigset_t signals_{};
    std::set<int> seen_; ///< of those that are ignored
};

} // namespace nmos_instrument::program

#endif

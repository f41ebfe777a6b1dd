// SPDX-License-Identifier: Apache-2.0

#include "commands/end_signals.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include <spdlog/spdlog.h>

namespace nmos_instrument::program {
namespace {

/// Besides the real-time signals: those that would end the program without anything being wrong
/// with it. SIGQUIT and the signals of faults still do.
constexpr int waited_for[] = {SIGTERM, SIGINT,    SIGHUP,  SIGUSR1, SIGUSR2, SIGALRM,
                              SIGIO,   SIGVTALRM, SIGPROF, SIGPWR,  SIGXCPU, SIGSTKFLT};

/// These come from a write that fails: to a client or a reader of the log who has gone away, or to
/// a file that reaches its size limit. Whoever writes handles the error.
constexpr int ignored[] = {SIGPIPE, SIGXFSZ};

std::string name_of(int signal)
{
    const char* const name = sigabbrev_np(signal);
    return name == nullptr ? "signal " + std::to_string(signal) : std::string("SIG") + name;
}

} // namespace

EndSignals::EndSignals()
{
    sigemptyset(&signals_);
    for (const int signal : waited_for)
        sigaddset(&signals_, signal);
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal)
        sigaddset(&signals_, signal);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    for (const int signal : ignored)
        static_cast<void>(std::signal(signal, SIG_IGN));
}

std::string EndSignals::wait()
{
    for (;;) {
        if (const std::optional<std::string> name = wait_for(std::chrono::hours(1)))
            return *name;
    }
}

std::optional<std::string> EndSignals::wait_for(std::chrono::milliseconds time)
{
    using std::chrono::duration_cast;
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto rest = std::max(end - std::chrono::steady_clock::now(),
                                   std::chrono::steady_clock::duration::zero());
        const auto seconds = duration_cast<std::chrono::seconds>(rest);
        const timespec limit = {seconds.count(), (rest - seconds).count()};
        const int signal = sigtimedwait(&signals_, nullptr, &limit);
        if (signal == SIGTERM || signal == SIGINT)
            return name_of(signal);
        if (signal > 0)
            note_ignored(signal);
        else if (errno == EAGAIN)
            return std::nullopt;
    }
}

void EndSignals::note_ignored(int signal) noexcept
{
    try {
        log_ignored(signal);
    } catch (...) {
        return; // memory is short
    }
}

void EndSignals::log_ignored(int signal)
{
    // Operators send this one after they have moved a log file, and look for an answer.
    if (signal == SIGHUP)
        spdlog::info("SIGHUP: nothing to reopen, the log goes to standard error");
    else if (seen_.insert(signal).second)
        spdlog::info("{} is ignored", name_of(signal));
}

} // namespace nmos_instrument::program

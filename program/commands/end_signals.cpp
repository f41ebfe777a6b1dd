// SPDX-License-Identifier: Apache-2.0

#include "commands/end_signals.h"

#include <cstring>
#include <set>

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

std::string EndSignals::wait() const
{
    std::set<int> seen;
    for (;;) {
        int signal = 0;
        if (sigwait(&signals_, &signal) != 0)
            continue;
        if (signal == SIGTERM || signal == SIGINT)
            return name_of(signal);
        // Operators send this one after they have moved a log file, and look for an answer.
        if (signal == SIGHUP)
            spdlog::info("SIGHUP: nothing to reopen, the log goes to standard error");
        else if (seen.insert(signal).second)
            spdlog::info("{} is ignored", name_of(signal));
    }
}

} // namespace nmos_instrument::program

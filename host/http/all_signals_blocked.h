// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_ALL_SIGNALS_BLOCKED_H
#define NMOS_INSTRUMENT_HOST_HTTP_ALL_SIGNALS_BLOCKED_H

#include <csignal>

namespace nmos_instrument::host {

/// Blocks all signals in the calling thread for as long as it lives. Threads that are started
/// meanwhile keep them blocked, so that SIGTERM and the like reach the thread that waits for them.
class AllSignalsBlocked
{
public:
    AllSignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }

    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

} // namespace nmos_instrument::host

#endif

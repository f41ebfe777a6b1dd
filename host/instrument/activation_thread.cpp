// SPDX-License-Identifier: Apache-2.0

#include "instrument/activation_thread.h"

#include <pthread.h>
#include <sched.h>

#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

/// On a busy machine an ordinary thread is some milliseconds late. This one runs for microseconds
/// at a time, so it may go before all others if the system allows it; otherwise it stays ordinary.
void become_punctual()
{
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_min(SCHED_FIFO);
    pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters);
}

} // namespace

ActivationThread::ActivationThread(Instrument& instrument)
    : instrument_(instrument), thread_([this] { run(); })
{}

ActivationThread::~ActivationThread()
{
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake_up_.notify_one();
    thread_.join();
}

void ActivationThread::look_again()
{
    {
        const std::lock_guard lock(mutex_);
        changed_ = true;
    }
    wake_up_.notify_one();
}

void ActivationThread::run()
{
    become_punctual();
    const auto woken = [this] { return changed_ || ends_; };
    for (;;) {
        // Any change from here on sets changed_ and ends the wait at once.
        const std::optional<TaiTime> due = instrument_.next_due();
        {
            std::unique_lock lock(mutex_);
            // This waits for a time of the system clock, not for a duration: if the clock is set
            // meanwhile, the kernel still wakes us at the right instant.
            if (due)
                wake_up_.wait_until(lock, system_time_of(*due), woken);
            else
                wake_up_.wait(lock, woken);
            if (ends_)
                return;
            changed_ = false;
        }
        instrument_.activate_due();
    }
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/activation_thread.h"

#include <chrono>
#include <exception>
#include <optional>
#include <utility>

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

/// What fails again and again, as when memory is short, takes neither the log nor a CPU.
constexpr std::chrono::milliseconds pause_after_failure{100};

} // namespace

ActivationThread::ActivationThread(Instrument& instrument, Log log)
    : instrument_(instrument), log_(std::move(log)), thread_([this] { run(); })
{}

ActivationThread::~ActivationThread()
{
    ends_ = true;
    alarm_.wake_up();
    thread_.join();
}

/// Whatever goes wrong with one activation, those after it must happen.
void ActivationThread::run()
{
    become_punctual();
    while (!ends_) {
        try {
            activate_next();
        } catch (const std::exception& error) {
            note_failure(error.what());
        } catch (...) {
            note_failure("unknown exception");
        }
    }
}

void ActivationThread::activate_next()
{
    // Any change from here on ends the wait at once.
    const NextDue due = instrument_.next_due();
    std::optional<Alarm::SystemTime> system;
    if (due.tai)
        system = system_time_of(*due.tai);
    alarm_.wait(system, due.steady);
    if (!ends_)
        instrument_.activate_due();
}

void ActivationThread::note_failure(const char* what) const noexcept
{
    log_.error("a scheduled activation has to be tried again: {}", what);
    std::this_thread::sleep_for(pause_after_failure);
}

} // namespace nmos_instrument::host

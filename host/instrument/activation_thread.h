// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_ACTIVATION_THREAD_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_ACTIVATION_THREAD_H

#include <atomic>
#include <thread>

#include "instrument/instrument.h"
#include "log/log.h"
#include "time/alarm.h"

namespace nmos_instrument::host {

/// Waits for the scheduled activations of an instrument and starts each one on time.
class ActivationThread
{
public:
    ActivationThread(Instrument& instrument, Log log);
    ~ActivationThread();

    ActivationThread(const ActivationThread&) = delete;
    ActivationThread& operator=(const ActivationThread&) = delete;

    /// Call it when the schedule may have changed.
    void look_again() noexcept { alarm_.wake_up(); }

private:
    void run();
    void activate_next();
    void note_failure(const char* what) const noexcept;

    Instrument& instrument_;
    const Log log_;
    Alarm alarm_;
    std::atomic<bool> ends_{false};
    std::thread thread_; ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif

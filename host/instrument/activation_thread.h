// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_ACTIVATION_THREAD_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_ACTIVATION_THREAD_H

#include <condition_variable>
#include <mutex>
#include <thread>

#include "instrument/instrument.h"

namespace nmos_instrument::host {

/// Waits for the scheduled activations of an instrument and starts each one on time.
class ActivationThread
{
public:
    explicit ActivationThread(Instrument& instrument);
    ~ActivationThread();

    ActivationThread(const ActivationThread&) = delete;
    ActivationThread& operator=(const ActivationThread&) = delete;

    /// Call it when the schedule may have changed.
    void look_again();

private:
    void run();

    Instrument& instrument_;
    std::mutex mutex_;
    std::condition_variable wake_up_;
    bool changed_ = false;
    bool ends_ = false;
    std::thread thread_; ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif

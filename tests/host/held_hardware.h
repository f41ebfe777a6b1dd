// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_HOST_HELD_HARDWARE_H
#define NMOS_INSTRUMENT_TESTS_HOST_HELD_HARDWARE_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "instrument/hardware.h"

namespace nmos_instrument::host {

/// A hardware whose calls all wait until the test answers them. It may be left behind.
class HeldHardware
{
public:
    struct Call
    {
        ConnectionKey key;
        bool master_enable;
        double destination_port; ///< of leg 1

        bool operator==(const Call&) const = default;
    };

    /// What a call says in the end. It may throw.
    using Answer = std::function<ApplyOutcome()>;

    HeldHardware();

    /// With a deadline that no test reaches unless it wants to.
    HardwareOptions options(std::chrono::milliseconds deadline = std::chrono::seconds(60)) const;

    /// Answers the oldest call that has no answer yet, or the next one.
    void answer(Answer answer);
    void apply();
    void refuse(const char* reason);

    /// False if there are fewer after 20 s.
    bool has_calls(std::size_t count) const;
    /// Likewise of those that have returned.
    bool has_returned(std::size_t count) const;

    std::vector<Call> calls() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace nmos_instrument::host

#endif

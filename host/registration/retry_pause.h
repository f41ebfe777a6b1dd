// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_RETRY_PAUSE_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_RETRY_PAUSE_H

#include <algorithm>
#include <chrono>

namespace nmos_instrument::host {

/// The pauses between attempts when no registry can be used: 1 s at first, twice as long each time,
/// up to 30 s. Each is shortened at random, so that the nodes that lost a registry together do not
/// all come back at the same moment.
class RetryPause
{
public:
    using Duration = std::chrono::milliseconds;

    /// `random`: from 0 to 1.
    Duration next(double random)
    {
        const double factor = 1.0 - random / 5;
        const auto pause =
            Duration(static_cast<Duration::rep>(static_cast<double>(longest_.count()) * factor));
        longest_ = std::min(2 * longest_, limit);
        return pause;
    }

    /// After a success.
    void reset() { longest_ = first; }

private:
    static constexpr Duration first{1'250};
    static constexpr Duration limit{30'000};

    Duration longest_ = first;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_STATUS_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_STATUS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace nmos_instrument::host {

/// How the registration of a node stands, for people and for counting.
struct RegistrationStatus
{
    using TimePoint = std::chrono::steady_clock::time_point;

    std::string state;                 ///< in words: "registered", "looking for a registry"
    bool registered = false;           ///< all resources are at the registry, as far as we know
    TimePoint since{};                 ///< of the state
    std::string registry;              ///< the URL of the one in use or being tried; empty: none
    std::string origin;                ///< where it is known from
    std::optional<TimePoint> next_try; ///< when there is no registry

    struct Heartbeat
    {
        TimePoint sent;
        std::chrono::microseconds round_trip; ///< until its answer
        std::chrono::microseconds late;       ///< sent after it was due
    };
    std::optional<Heartbeat> last_heartbeat; ///< the last one that the registry accepted

    // Since the start of the program.
    std::uint64_t posts = 0;      ///< of resources, whatever the answer
    std::uint64_t deletions = 0;  ///< likewise
    std::uint64_t heartbeats = 0; ///< likewise
    std::uint64_t refusals = 0;   ///< resources that a registry did not take
    std::uint64_t failures = 0;   ///< requests that a registry did not answer as a registry does
    std::uint64_t fail_overs = 0; ///< from one registry to another
    std::chrono::microseconds heartbeat_lateness{}; ///< of all heartbeats together
};

} // namespace nmos_instrument::host

#endif

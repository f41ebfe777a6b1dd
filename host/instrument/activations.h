// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_ACTIVATIONS_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_ACTIVATIONS_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "connection/connection_patch.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

using SteadyTime = std::chrono::steady_clock::time_point;

/// One instant on both clocks. TAI follows the system clock, which may be set; the steady clock
/// only counts.
struct Instant
{
    TaiTime tai;
    SteadyTime steady;
};

struct ScheduledActivation
{
    ConnectionKey key;
    ActivationMode mode = ActivationMode::none;
    TaiTime due; ///< as the controller was told

    /// Relative ones are due then, even if the system clock has been set since; absolute ones have
    /// none.
    std::optional<SteadyTime> steady_due{};
};

bool is_due(const ScheduledActivation& activation, const Instant& now);

/// How long after its due time `now` is, on the clock that counts for it.
std::chrono::nanoseconds lateness(const ScheduledActivation& activation, const Instant& now);

/// The next activation on each clock.
struct NextDue
{
    std::optional<TaiTime> tai;
    std::optional<SteadyTime> steady;

    bool operator==(const NextDue&) const = default;
};

/// An activation that took place, or failed.
struct ActivationReport
{
    std::string resource; ///< "receivers/<id>"
    std::string mode;
    TaiTime due;     ///< when it had to happen; without a schedule, when it was requested
    TaiTime done;    ///< when it happened
    std::string why; ///< failures only
    std::chrono::nanoseconds late{}; ///< from due to done, on the clock that counts
};

struct ActivationCounts
{
    std::uint64_t done = 0;
    std::uint64_t failed = 0;

    bool operator==(const ActivationCounts&) const = default;
};

/// The scheduled activations, at most one for each sender or receiver, those for which the hardware
/// takes its time, likewise, and reports on the latest ones that took place. The owner must lock.
class Activations
{
public:
    Activations();

    void schedule(const ScheduledActivation& activation);
    /// False if none was scheduled.
    bool cancel(const ConnectionKey& key);

    /// Null if none is scheduled.
    const ScheduledActivation* find(const ConnectionKey& key) const;
    const std::map<ConnectionKey, ScheduledActivation>& scheduled() const { return scheduled_; }

    void begin(const ConnectionKey& key) { under_way_.insert(key); }
    void end(const ConnectionKey& key) { under_way_.erase(key); }
    void end_all() { under_way_.clear(); }
    bool is_under_way(const ConnectionKey& key) const { return under_way_.count(key) != 0; }

    NextDue next_due() const;

    /// One that is due.
    std::optional<ScheduledActivation> find_due(const Instant& now) const;

    // They need no memory, so that what has been done is always reported.
    void report_done(ActivationReport&& report)
    {
        remember(done_, std::move(report));
        ++counts_.done;
    }

    void report_failed(ActivationReport&& report)
    {
        remember(failed_, std::move(report));
        ++counts_.failed;
    }

    /// The latest ones, newest first.
    const std::vector<ActivationReport>& done() const { return done_; }
    const std::vector<ActivationReport>& failed() const { return failed_; }

    /// Of all that were reported.
    const ActivationCounts& counts() const { return counts_; }

private:
    static void remember(std::vector<ActivationReport>& list, ActivationReport&& report);

    std::map<ConnectionKey, ScheduledActivation> scheduled_;
    std::set<ConnectionKey> under_way_;
    std::vector<ActivationReport> done_;
    std::vector<ActivationReport> failed_;
    ActivationCounts counts_;
};

} // namespace nmos_instrument::host

#endif

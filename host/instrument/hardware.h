// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_HARDWARE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_HARDWARE_H

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_patch.h"

namespace nmos_instrument::host {

struct ApplyOutcome
{
    bool applied = true;
    std::string reason{}; ///< why it was not
};

/// Sets up the hardware for the half that becomes active. It may take its time. What it throws is a
/// refusal.
using ApplyConnection =
    std::function<ApplyOutcome(const ConnectionKey&, const CONNECTION_HALF_IS05_ST& active)>;

struct HardwareOptions
{
    ApplyConnection apply{}; ///< empty: there is no hardware
    /// How long a call may take. What it touches must last as long as the call does, even if that is
    /// longer than the instrument.
    std::chrono::milliseconds deadline{5'000};
};

/// A half that the hardware is to be set up for, and what follows. All its functions are called by
/// Hardware, on its own thread, one at a time.
class HardwareRequest
{
public:
    HardwareRequest(const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& active)
        : key_(key), active_(active)
    {}
    virtual ~HardwareRequest() = default;

    HardwareRequest(const HardwareRequest&) = delete;
    HardwareRequest& operator=(const HardwareRequest&) = delete;

    const ConnectionKey& key() const { return key_; }
    const CONNECTION_HALF_IS05_ST& active() const { return active_; }

    /// The hardware has said so in time, or is not asked. True: that was all. False: it has applied
    /// the half, but that cannot become active, so the hardware must go back.
    virtual bool answered(const ApplyOutcome& outcome) noexcept = 0;

    /// The call has not ended in time, as the reason in `outcome` says.
    virtual void not_answered(const ApplyOutcome& outcome) noexcept = 0;

    /// What the hardware goes back to.
    virtual CONNECTION_HALF_IS05_ST in_force() noexcept = 0;

    /// The last of a request that was late, or after which the hardware had to go back: it is free
    /// for others. `outcome`: of the call by which it went back.
    virtual void settled(const ApplyOutcome& outcome) noexcept = 0;

private:
    const ConnectionKey key_;
    const CONNECTION_HALF_IS05_ST active_;
};

/// The hardware of the integrator, called on a thread of its own, once at a time and in the order
/// of the requests. A second thread waits for it, so that a call that hangs holds up nobody: then
/// those that wait for the hardware are refused, and new ones likewise until it has returned. If it
/// says then that it has applied its half, it is called again with the one that is in force.
class Hardware
{
public:
    explicit Hardware(const HardwareOptions& options);

    /// As end().
    ~Hardware();

    Hardware(const Hardware&) = delete;
    Hardware& operator=(const Hardware&) = delete;

    /// The deadline counts from the call, not from here. If it throws, for want of memory, nobody
    /// will be called. Not after end().
    void add(std::unique_ptr<HardwareRequest> request);

    /// Waits for the call that is under way, at most until its deadline; a call that is late already
    /// is left behind with its thread. All that wait are refused. Not from a HardwareRequest.
    void end() noexcept;

private:
    using Clock = std::chrono::steady_clock;
    using Queue = std::list<std::unique_ptr<HardwareRequest>>;

    struct Shared;

    static void make_calls(const std::shared_ptr<Shared>& shared) noexcept;
    void run() noexcept;
    void perform(HardwareRequest& request) noexcept;
    void go_back(HardwareRequest& request) noexcept;
    std::optional<ApplyOutcome> call(const ConnectionKey& key,
                                     const CONNECTION_HALF_IS05_ST& active) noexcept;
    std::optional<ApplyOutcome> wait_for_late_answer() noexcept;
    static void refuse(const Queue& requests, const ApplyOutcome& outcome) noexcept;

    const std::chrono::milliseconds deadline_;
    // Made at the start, because there may be no memory for them later.
    const ApplyOutcome no_answer_;
    const ApplyOutcome busy_;
    const ApplyOutcome ends_{false, "the instrument ends"};
    const std::shared_ptr<Shared> shared_; ///< with the thread that may be left behind
    std::thread caller_;                   ///< calls the hardware, and owns all that it touches
    std::thread thread_;                   ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif

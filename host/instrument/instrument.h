// SPDX-License-Identifier: Apache-2.0
//
// The instrument at run time: the one owner of the records, behind one lock. The lock is held while
// records are read or changed, never during input or output.

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_INSTRUMENT_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_INSTRUMENT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "configuration/configuration.h"
#include "conformance/conformance.h"
#include "connection/connection_facts.h"
#include "connection/connection_patch.h"
#include "connection/stage_patch.h"
#include "instrument/activations.h"
#include "instrument/adopt_records.h"
#include "instrument/change_outcome.h"
#include "instrument/hardware.h"
#include "instrument/node_resource.h"
#include "instrument/prepared_activation.h"
#include "instrument/saved_state.h"
#include "log/log.h"
#include "records/addresses.h"
#include "records/fill_records.h"
#include "records/record_findings.h"
#include "records/resource_index.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

struct InstrumentStatus
{
    struct Pending
    {
        std::string resource;
        std::string mode;
        TaiTime due;
    };

    std::vector<ActivationReport> activations; ///< the latest ones, newest first
    std::vector<ActivationReport> failures;    ///< likewise
    std::vector<Pending> pending;
    ActivationCounts counts; ///< since the start
};

class Instrument
{
public:
    using Clock = std::function<TaiTime()>;
    using SteadyClock = std::function<SteadyTime()>;

    /// `address`: where it is reached at first.
    Instrument(const Configuration& configuration, const NodeAddress& address, Clock clock, Log log,
               const HardwareOptions& hardware = {},
               SteadyClock steady_clock = std::chrono::steady_clock::now,
               Presentation presentation = Presentation::conforming);

    /// The same of records that fit their configuration already. `clock` has given their versions.
    Instrument(FilledRecords filled, const NodeAddress& address, Clock clock, Log log,
               const HardwareOptions& hardware = {},
               SteadyClock steady_clock = std::chrono::steady_clock::now,
               Presentation presentation = Presentation::conforming);

    /// As the records are now: change_records changes it.
    Configuration configuration() const;

    const ResourceIndex& index() const { return index_; }

    /// Which SDP files the receiver at this position takes now.
    SdpReceiver sdp_receiver(std::size_t receiver) const;

    /// Calls `reader` with the records, under the lock. It must not change them: the reference is
    /// not const only because the library's operations take pointers that are not.
    template <class Reader>
    auto read(Reader&& reader)
    {
        const std::lock_guard lock(mutex_);
        return reader(*records_);
    }

    /// The same with the corrections of the texts that are made of these records; they may be used
    /// without the lock.
    template <class Reader>
    auto read_with_conformance(Reader&& reader)
    {
        const std::lock_guard lock(mutex_);
        return reader(*records_, conformance_);
    }

    /// Calls `change` with the records, under the lock, and puts in force what it has written there:
    /// every resource that reads differently has a new version, its kind is counted once, and the
    /// SDP files that read differently have new session versions. So has a sender or receiver whose
    /// active half or SDP file reads differently. `change` must not call back.
    ///
    /// What belongs to the instrument stays as it is, whatever `change` writes there: versions, SDP
    /// sessions, subscriptions (which follow the active halves), and the "activation" of staged
    /// halves.
    ///
    /// Throws std::invalid_argument, with a line for each finding, when the records cannot be used
    /// (see configuration_of), or when something has changed that cannot while it runs: counts and
    /// ids of resources, what belongs to what, selectors, where it is reached, the staged half of a
    /// connection that is locked. Then, and when `change` throws, nothing has changed.
    void change_records(const std::function<void(Records&)>& change);

    /// Where the texts say that it is reached.
    NodeAddress address();

    /// The same before anybody has seen it: the versions stay.
    void begin_at(const NodeAddress& address);

    /// From now on all texts name another address; the resources that do have new versions. If it
    /// throws, for want of memory, nothing has changed.
    void move_to(const NodeAddress& address);

    /// Avahi's service file, which tells the neighbours how often each kind of resource has changed.
    std::string service_text();

    /// A sender's SDP file, as everybody sees it.
    std::string sdp_file(std::size_t sender);

    /// Called once, without the lock. Without memory for the answer it goes away uncalled.
    using Then = std::function<void(ChangeOutcome)>;

    /// Does all that a controller asks for, or refuses all of it. `then` is called before it returns;
    /// or, after an activation for which the hardware took its time, on the hardware's thread. If it
    /// throws, for want of memory, nothing has changed.
    void change(const ConnectionKey& key, const ConnectionPatch& patch, Then then);

    /// The same for an instrument without hardware.
    ChangeOutcome change(const ConnectionKey& key, const ConnectionPatch& patch);

    /// The refusal of every change (but a cancellation, if an activation is only scheduled).
    std::optional<ChangeOutcome> refusal_while_locked(const ConnectionKey& key);

    /// Has the hardware set up for all senders and receivers that are enabled, as at a start, when
    /// they may come from a saved state. After end_hardware() the hardware is called again. Each is locked until then. It does not wait; the log has
    /// what the hardware refuses.
    void set_up_hardware();

    /// The hardware is not called any more: see Hardware::end. When it returns, nobody who waited
    /// for the hardware is called any more, and an activation fails.
    void end_hardware() noexcept;

    /// "receivers/<id>"
    std::string resource_name(const ConnectionKey& key) const;

    /// All that the node shows, parents first: what a registry is told about. They never change, but
    /// for what they say of themselves.
    const std::vector<NodeResource>& shown_resources() const { return shown_; }

    /// What is posted to register the node. It may advance the versions of the node, its devices and
    /// its receivers, so it comes before their registrations.
    std::string registration_of_node();

    /// What is posted to register a resource, as it reads now; of the node too, without a new version.
    std::string registration_of(const NodeResource& resource);

    /// When the next scheduled activations are due.
    NextDue next_due();

    /// Performs the scheduled activations that are due, or hands them to the hardware; true if there
    /// were any. If it throws, the one at which it did has changed nothing and is still scheduled.
    bool activate_due();

    InstrumentStatus status();

    /// The state that survives a restart.
    SavedState saved_state();

    /// How many of the saved senders and receivers this configuration has.
    std::size_t count_known(const SavedState& saved) const;

    /// Restores the saved state of all resources that this configuration has. Returns one line for
    /// each thing that could not be restored as it was. Call it before any change but those of
    /// change_records: a resource that reads as it did when it was saved keeps its version.
    std::vector<std::string> restore(const SavedState& saved);

    /// Called without the lock, from the thread that made the change; that may be the one of the
    /// hardware until end_hardware(). Set them before any change.
    struct Listeners
    {
        std::function<void()> changed;   ///< after every change
        std::function<void()> scheduled; ///< after an activation was scheduled, before `changed`
    };
    void listen(Listeners listeners) { listeners_ = std::move(listeners); }

private:
    using LogLines = std::vector<std::string>; ///< written after the lock is released

    Instant now() const { return {clock_(), steady_clock_()}; }
    CONNECTION_IS05_ST& connection(const ConnectionKey& key);
    SUBSCRIPTION_IS04_ST& subscription(const ConnectionKey& key);
    std::string id_of(const ConnectionKey& key) const;
    std::string staged_body(const ConnectionKey& key);
    std::string sdp_text(std::size_t sender);

    // The ways in which a change can end, under the lock.
    std::optional<ChangeOutcome> refusal_if_locked(const ConnectionKey& key,
                                                   bool cancels = false) const;
    std::optional<ChangeOutcome> change_locked(const ConnectionKey& key,
                                               const ConnectionPatch& patch, ChangeLog& log,
                                               Then& then);
    std::optional<ChangeOutcome> change_to(const ConnectionKey& key, const ConnectionPatch& patch,
                                           ChangeLog& log, Then& then);
    ChangeOutcome stage(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged, ChangeLog& log);
    ChangeOutcome schedule(CONNECTION_HALF_IS05_ST staged, const ScheduledActivation& activation,
                           const ActivationRequest& request, ChangeLog& log);
    std::optional<ChangeOutcome> activate_now(PreparedActivation prepared, const TaiTime& now,
                                              ChangeLog& log, Then& then);

    // Activations, under the lock: without hardware from the first step to the last at once.
    struct Performed ///< of those that were scheduled
    {
        bool any = false;     ///< or handed to the hardware
        bool changed = false; ///< something, by their end
        LogLines done;
        LogLines failed;
    };
    PreparedActivation prepare_now(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                   const ActivationRequest& request, const TaiTime& now,
                                   const ChangeLog& log);
    PreparedActivation prepare_scheduled(const ScheduledActivation& activation);
    void complete(PreparedActivation& prepared) const;
    void activate_scheduled(const ScheduledActivation& activation, Performed& performed);
    std::string commit(PreparedActivation& prepared, const TaiTime& now, ChangeOutcome& outcome);
    ChangeOutcome make(PreparedActivation& prepared, const TaiTime& now);
    void report(PreparedActivation& prepared, std::string why);
    void end_scheduled(PreparedActivation& prepared, std::string why, Performed& performed);
    void tell(const Performed& performed);

    // Activations with hardware: what is between those steps.
    class HardwareWork;
    class Activating;
    class SettingUp;
    void call_hardware(const ConnectionKey& key, std::unique_ptr<HardwareRequest> request);
    enum class LockAfter
    {
        none,
        stays ///< until the hardware has settled
    };
    bool end_activation(PreparedActivation& prepared, const Then& then, const ApplyOutcome& said,
                        LockAfter lock_after) noexcept;
    CONNECTION_HALF_IS05_ST active_half(const ConnectionKey& key);
    void unlock(const ConnectionKey& key);

    // What an activation does to the records, under the lock.
    void follow_activation(const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& active,
                           const TaiTime& now);
    void raise_sdp_version(std::size_t sender, const TaiTime& now);
    bool stamp_versions();
    void move_locked(const NodeAddress& address);

    // What somebody else has changed in the records, under the lock.
    bool change_records_locked(const std::function<void(Records&)>& change);
    void check_locked_halves(const Records& next, RecordFindings& findings) const;

    // The parts of a saved state, put back into the records, under the lock.
    void restore_connections(const SavedState& saved, std::vector<std::string>& messages);
    void restore_side(Side side, const std::map<std::string, SavedConnection>& saved,
                      std::vector<std::string>& messages);
    void restore_counters(const SavedCounters& saved);
    void restore_versions(const std::map<std::string, SavedResource>& saved);
    void restore_sdp_versions(const std::map<std::string, SavedConnection>& saved);

    const Clock clock_;
    const Log log_;
    const SteadyClock steady_clock_;
    Listeners listeners_;

    const Presentation presentation_;

    mutable std::mutex mutex_;
    /// What the records say as they are, and what no record says.
    std::shared_ptr<const Configuration> configuration_;
    NodeAddress address_;
    const std::unique_ptr<Records> records_;
    const ResourceIndex index_;
    std::shared_ptr<const Conformance> conformance_; ///< of the records as they are
    const std::vector<NodeResource> shown_;
    const std::map<ConnectionKey, std::string> ids_; ///< of all that the node has
    std::map<ConnectionKey, ConnectionFacts> facts_; ///< of the same, as the records are
    Activations activations_;
    Nmos advertisement_; ///< its counters say how often each kind of resource has changed
    const HardwareOptions hardware_options_;
    bool hardware_ends_ = false;
    std::optional<Hardware> hardware_; ///< last: its thread uses the members above
};

} // namespace nmos_instrument::host

#endif

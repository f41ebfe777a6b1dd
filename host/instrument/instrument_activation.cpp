// SPDX-License-Identifier: Apache-2.0
//
// The part of an instrument that activates. An activation is prepared, which changes nothing; then
// the hardware is called, if there is one, without the lock; then all of it is made, or nothing.

#include "instrument/instrument.h"

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "connection/activate_staged.h"
#include "connection/activation_request.h"
#include "instrument/file_writer.h"
#include "instrument/unfinished_change.h"
#include "records/record_text.h"
#include "records/resource_version.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

constexpr ActivationTexts no_activation;
constexpr const char* hardware_has_ended = "the instrument ends";

/// `prepared` and `time` must outlive the result.
ActivationTexts texts_of(const PreparedActivation& prepared, std::string_view time)
{
    return {prepared.report.mode, prepared.requested_time, time};
}

/// Controllers were told when a scheduled one would happen; all others happen now.
std::string activation_time(const PreparedActivation& prepared, const TaiTime& now)
{
    return to_text(prepared.was_scheduled ? prepared.what.due : now);
}

ChangeOutcome failed(const std::string& why)
{
    return {ChangeResult::failed, "", "The activation failed, nothing has changed", why};
}

std::string line_of_done(const ActivationReport& report)
{
    return fmt::format("activated {}: {} at {}, {} us late", report.resource, report.mode,
                       to_text(report.due), report.late.count() / 1000);
}

std::string line_of_failed(const ActivationReport& report)
{
    return "activation of " + report.resource + " failed, nothing has changed: " + report.why;
}

/// What has happened has happened: without memory the log loses a line.
void add_line(std::vector<std::string>& lines, std::string (*make_line)(const ActivationReport&),
              const ActivationReport& report) noexcept
{
    try {
        lines.push_back(make_line(report));
    } catch (const std::bad_alloc&) {
        return;
    }
}

/// On the hardware's thread: what fails of one step keeps nobody from the next.
template <class Step>
void with_failure_logged(const Log& log, const Step& step) noexcept
{
    try {
        step();
    } catch (const std::exception& error) {
        log.line(LogLevel::error, error.what());
    } catch (...) {
        log.line(LogLevel::error, "an exception of unknown type after an activation");
    }
}

std::string copy_of(const std::string& reason) noexcept
{
    try {
        return reason;
    } catch (const std::bad_alloc&) {
        return "out of memory";
    }
}

} // namespace

/// What all requests for the hardware have in common.
class Instrument::HardwareWork : public HardwareRequest
{
public:
    HardwareWork(Instrument& instrument, const ConnectionKey& key,
                 const CONNECTION_HALF_IS05_ST& active)
        : HardwareRequest(key, active), instrument_(instrument)
    {}

    CONNECTION_HALF_IS05_ST in_force() noexcept override { return instrument_.active_half(key()); }

    void settled(const ApplyOutcome& outcome) noexcept override
    {
        if (!outcome.applied)
            complain("does not go back to what is active", outcome.reason);
        instrument_.unlock(key());
    }

protected:
    /// "receivers/<id>: the hardware ...: reason"
    void complain(std::string_view what, const std::string& reason) const noexcept
    {
        with_failure_logged(instrument_.log_, [&] {
            instrument_.log_.error("{}: the hardware {}: {}", instrument_.resource_name(key()),
                                   what, reason);
        });
    }

    Instrument& instrument_;
};

/// An activation that a controller asked for, now or for this time.
class Instrument::Activating final : public HardwareWork
{
public:
    Activating(Instrument& instrument, PreparedActivation prepared, Then then)
        : HardwareWork(instrument, prepared.what.key, prepared.active),
          prepared_(std::move(prepared)),
          then_(std::move(then))
    {}

    bool answered(const ApplyOutcome& outcome) noexcept override
    {
        return instrument_.end_activation(prepared_, then_, outcome, LockAfter::none);
    }

    void not_answered(const ApplyOutcome& outcome) noexcept override
    {
        instrument_.end_activation(prepared_, then_, outcome, LockAfter::stays);
    }

private:
    PreparedActivation prepared_;
    Then then_; ///< empty if it was scheduled
};

/// What is active at the start.
class Instrument::SettingUp final : public HardwareWork
{
public:
    using HardwareWork::HardwareWork;

    bool answered(const ApplyOutcome& outcome) noexcept override
    {
        if (!outcome.applied)
            complain(not_set_up, outcome.reason);
        instrument_.unlock(key());
        return true;
    }

    void not_answered(const ApplyOutcome& outcome) noexcept override
    {
        complain(not_set_up, outcome.reason);
    }

private:
    static constexpr const char* not_set_up = "was not set up for what is active at the start";
};

PreparedActivation Instrument::prepare_now(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                           const ActivationRequest& request, const TaiTime& now,
                                           const ChangeLog& log)
{
    set_activation(staged, no_activation);
    PreparedActivation prepared;
    prepared.what = {key, request.mode, now};
    prepared.requested_time = is_scheduled(request.mode)
                                  ? std::string_view(request.requested_time_text)
                                  : no_activation.requested_time;
    prepared.staged = staged;
    prepared.log = log;
    prepared.remark = lateness_of_request(request, now);
    complete(prepared);
    return prepared;
}

PreparedActivation Instrument::prepare_scheduled(const ScheduledActivation& activation)
{
    const CONNECTION_HALF_IS05_ST& staged = connection(activation.key).staged;
    PreparedActivation prepared;
    prepared.what = activation;
    prepared.was_scheduled = true;
    prepared.requested_time = text_of(staged.requested_time);
    prepared.staged = staged;
    set_activation(prepared.staged, no_activation);
    complete(prepared);
    return prepared;
}

/// What follows from the rest: its report and the active half.
void Instrument::complete(PreparedActivation& prepared) const
{
    const ConnectionKey& key = prepared.what.key;
    prepared.report.resource = resource_name(key);
    prepared.report.mode = text_of(prepared.what.mode);
    prepared.report.due = prepared.what.due;
    prepared.interface_addresses = facts_.at(key).interface_addresses;
    prepared.active = activate_staged(prepared.staged, facts_.at(key),
                                      texts_of(prepared, to_text(prepared.what.due)));
}

/// Nothing if the hardware has to be asked: then it has taken `then`.
std::optional<ChangeOutcome> Instrument::activate_now(PreparedActivation prepared,
                                                      const TaiTime& now, ChangeLog& log,
                                                      Then& then)
{
    if (hardware_ && !hardware_ends_) {
        const ConnectionKey key = prepared.what.key;
        call_hardware(key,
                      std::make_unique<Activating>(*this, std::move(prepared), std::move(then)));
        return std::nullopt;
    }
    ChangeOutcome outcome;
    std::string why = hardware_ ? std::string(hardware_has_ended) : commit(prepared, now, outcome);
    if (!why.empty())
        outcome = failed(why);
    report(prepared, std::move(why));
    log = std::move(prepared.log);
    return outcome;
}

bool Instrument::activate_due()
{
    Performed performed;
    std::exception_ptr trouble;
    {
        const std::lock_guard lock(mutex_);
        try {
            while (const auto activation = activations_.find_due(now()))
                activate_scheduled(*activation, performed);
        } catch (...) {
            trouble = std::current_exception(); // those before it have been performed
        }
    }
    tell(performed);
    if (trouble)
        std::rethrow_exception(trouble);
    return performed.any;
}

/// If it throws, the activation is still scheduled.
void Instrument::activate_scheduled(const ScheduledActivation& activation, Performed& performed)
{
    PreparedActivation prepared = prepare_scheduled(activation);
    if (hardware_ && !hardware_ends_) {
        call_hardware(activation.key,
                      std::make_unique<Activating>(*this, std::move(prepared), Then()));
        activations_.cancel(activation.key);
        performed.any = true;
        return;
    }
    ChangeOutcome outcome;
    std::string why =
        hardware_ ? std::string(hardware_has_ended) : commit(prepared, clock_(), outcome);
    end_scheduled(prepared, std::move(why), performed);
}

/// Makes all of a prepared activation. Why nothing has changed, empty if all of it is made.
std::string Instrument::commit(PreparedActivation& prepared, const TaiTime& now,
                               ChangeOutcome& outcome)
{
    try {
        outcome = make(prepared, now);
        return "";
    } catch (const std::exception&) {
        return reason_of_current_exception();
    }
}

/// Its result is what a controller hears that waits for it. If it throws, nothing has changed.
ChangeOutcome Instrument::make(PreparedActivation& prepared, const TaiTime& now)
{
    const ConnectionKey& key = prepared.what.key;
    if (prepared.interface_addresses != facts_.at(key).interface_addresses)
        throw std::runtime_error("its interfaces have got other addresses meanwhile");
    const std::string time = activation_time(prepared, now);
    const ActivationTexts texts = texts_of(prepared, time);
    UnfinishedChange change(*records_, advertisement_, key);
    CONNECTION_HALF_IS05_ST& staged = connection(key).staged;
    staged = prepared.staged;
    // The answer shows the activation; the staged parameters themselves never do.
    set_activation(staged, texts);
    ChangeOutcome outcome{is_scheduled(prepared.what.mode) ? ChangeResult::accepted
                                                           : ChangeResult::done,
                          staged_body(key), "", ""};
    set_activation(staged, no_activation);
    CONNECTION_HALF_IS05_ST active = prepared.active;
    set_activation(active, texts);
    follow_activation(key, active, now);
    if (!prepared.was_scheduled)
        prepared.log.done(fmt::format("activated {}: {} at {}{}", prepared.report.resource,
                                      prepared.report.mode, time, prepared.remark));
    change.finish();
    return outcome;
}

/// It needs no memory.
void Instrument::report(PreparedActivation& prepared, std::string why)
{
    const Instant end = now();
    ActivationReport& report = prepared.report;
    report.done = end.tai;
    report.late = lateness(prepared.what, end);
    if (why.empty()) {
        activations_.report_done(std::move(report));
        return;
    }
    report.why = std::move(why);
    activations_.report_failed(std::move(report));
}

void Instrument::end_scheduled(PreparedActivation& prepared, std::string why, Performed& performed)
{
    const bool done = why.empty();
    report(prepared, std::move(why));
    set_activation(connection(prepared.what.key).staged, no_activation);
    activations_.cancel(prepared.what.key);
    performed.any = true;
    performed.changed = true;
    if (done)
        add_line(performed.done, line_of_done, activations_.done().front());
    else
        add_line(performed.failed, line_of_failed, activations_.failed().front());
}

void Instrument::tell(const Performed& performed)
{
    if (performed.changed && listeners_.changed)
        listeners_.changed();
    for (const std::string& line : performed.done)
        log_.line(LogLevel::info, line);
    for (const std::string& line : performed.failed)
        log_.line(LogLevel::error, line);
}

void Instrument::follow_activation(const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& active,
                                   const TaiTime& now)
{
    NMOS_IS04_ST& node = records_->node;
    node.version_seconds = now.seconds;
    node.version_nanoseconds = now.nanoseconds;
    const auto advance = [&](auto& resource) {
        advance_version(resource, now);
        resource.subscription[0] = subscription_of(active, key.side);
    };
    if (key.side == Side::receiver) {
        connection(key).active = active;
        advance(node.receivers[key.index]);
        advertisement_.update_txt_ver_rcv();
        return;
    }
    const std::string sdp_before = sdp_text(key.index);
    connection(key).active = active;
    if (sdp_text(key.index) != sdp_before)
        raise_sdp_version(key.index, now);
    advance(node.senders[key.index]);
    advertisement_.update_txt_ver_snd();
}

void Instrument::raise_sdp_version(std::size_t sender, const TaiTime& now)
{
    raise_version(records_->sdp_sessions[sender], now);
}

/// The connection is locked from here on, until its request has ended. If it throws, nothing has
/// changed.
void Instrument::call_hardware(const ConnectionKey& key, std::unique_ptr<HardwareRequest> request)
{
    activations_.begin(key);
    try {
        hardware_->add(std::move(request));
    } catch (...) {
        activations_.end(key);
        throw;
    }
}

/// On the hardware's thread. True unless the hardware has applied what the records cannot follow.
bool Instrument::end_activation(PreparedActivation& prepared, const Then& then,
                                const ApplyOutcome& said, LockAfter lock_after) noexcept
{
    ChangeOutcome outcome;
    Performed performed;
    std::string why;
    {
        const std::lock_guard lock(mutex_);
        why = said.applied ? commit(prepared, clock_(), outcome) : copy_of(said.reason);
        if (prepared.was_scheduled)
            end_scheduled(prepared, copy_of(why), performed);
        else
            report(prepared, copy_of(why));
        // Before the answer: whoever has it may want the next change at once.
        if (lock_after == LockAfter::none && (!said.applied || why.empty()))
            activations_.end(prepared.what.key);
    }
    if (prepared.was_scheduled) {
        with_failure_logged(log_, [&] { tell(performed); });
        return !said.applied || why.empty();
    }
    with_failure_logged(log_, [&] {
        if (why.empty() && listeners_.changed)
            listeners_.changed();
    });
    with_failure_logged(log_, [&] {
        if (!why.empty())
            outcome = failed(why);
        outcome.log = std::move(prepared.log.lines);
        then(std::move(outcome));
    });
    return !said.applied || why.empty();
}

void Instrument::set_up_hardware()
{
    if (!hardware_options_.apply)
        return;
    const std::lock_guard lock(mutex_);
    if (!hardware_ || hardware_ends_) { // none: an earlier start found no memory for its threads
        hardware_.emplace(hardware_options_);
        hardware_ends_ = false;
        activations_.end_all();
    }
    for (const auto& [key, facts] : facts_) {
        const CONNECTION_HALF_IS05_ST& active = connection(key).active;
        if (active.master_enable != 0 && !activations_.is_under_way(key))
            call_hardware(key, std::make_unique<SettingUp>(*this, key, active));
    }
}

void Instrument::end_hardware() noexcept
{
    if (!hardware_)
        return;
    {
        const std::lock_guard lock(mutex_);
        hardware_ends_ = true;
    }
    hardware_->end();
}

CONNECTION_HALF_IS05_ST Instrument::active_half(const ConnectionKey& key)
{
    const std::lock_guard lock(mutex_);
    return connection(key).active;
}

void Instrument::unlock(const ConnectionKey& key)
{
    const std::lock_guard lock(mutex_);
    activations_.end(key);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/instrument.h"

#include <exception>
#include <new>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <spdlog/spdlog.h>

#include "connection/activate_staged.h"
#include "connection/activation_request.h"
#include "connection/validate_patch.h"
#include "instrument/resource_texts.h"
#include "instrument/unfinished_change.h"
#include "records/record_text.h"
#include "records/resource_version.h"
#include "text/quoted_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

constexpr ActivationTexts no_activation;

/// IS-05 v1.0: "mode": null cancels what is scheduled.
bool cancels(const ConnectionPatch& patch)
{
    return patch.activation && patch.activation->mode == ActivationMode::none;
}

ChangeOutcome locked_until(const std::string& name, const TaiTime& due)
{
    return {ChangeResult::locked, "", "The resource is locked: an activation is scheduled",
            name + " activates at " + to_text(due) +
                "; set /activation/mode to null to cancel that"};
}

ChangeOutcome beyond_tai(const ActivationRequest& request)
{
    return invalid_parameters("/activation/requested_time: found " +
                              in_quotes(request.requested_time_text) +
                              ", counted from now that is later than a TAI clock can show");
}

ChangeResult success_of(const ActivationRequest& request)
{
    return is_scheduled(request.mode) ? ChangeResult::accepted : ChangeResult::done;
}

/// `activation_time` and `request` must outlive the result.
ActivationTexts texts_of(const ActivationRequest& request, std::string_view activation_time)
{
    return {text_of(request.mode),
            is_scheduled(request.mode) ? std::string_view(request.requested_time_text) : null_text,
            activation_time};
}

/// The record has one port: if a controller sends a different source port, the log says so.
void log_source_ports(const std::string& name, const ConnectionPatch& patch,
                      const CONNECTION_HALF_IS05_ST& staged, std::vector<std::string>& log)
{
    for (std::size_t i = 0; i < leg_count; ++i) {
        const std::optional<int>& port = patch.legs[i].source_port;
        if (port && *port != staged.transport_params[i].destination_port)
            log.push_back(name + ": source_port " + std::to_string(*port) + " of leg " +
                          std::to_string(i + 1) +
                          " is not kept: it is always the destination port");
    }
}

ScheduledActivation activation_of(const ConnectionKey& key, ActivationMode mode, const TaiTime& due,
                                  const Instant& requested)
{
    ScheduledActivation activation{key, mode, due};
    // The span is limited to 100 years, so that the steady clock can count it.
    if (mode == ActivationMode::scheduled_relative)
        activation.steady_due = requested.steady + span_between(requested.tai, due);
    return activation;
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

void log_all(const std::vector<std::string>& lines)
{
    for (const std::string& line : lines)
        spdlog::info("{}", line);
}

} // namespace

Instrument::Instrument(const Configuration& configuration, const NodeAddress& address, Clock clock,
                       ApplyToMedia apply_to_media, SteadyClock steady_clock,
                       Presentation presentation)
    : Instrument(filled_records(configuration, address, clock()), address, clock,
                 std::move(apply_to_media), std::move(steady_clock), presentation)
{}

Instrument::Instrument(FilledRecords filled, const NodeAddress& address, Clock clock,
                       ApplyToMedia apply_to_media, SteadyClock steady_clock,
                       Presentation presentation)
    : clock_(std::move(clock)),
      apply_to_media_(std::move(apply_to_media)),
      steady_clock_(std::move(steady_clock)),
      presentation_(presentation),
      configuration_(std::make_shared<const Configuration>(std::move(filled.configuration))),
      address_(address),
      records_(std::move(filled.records)),
      index_(*records_),
      conformance_(
          std::make_shared<const Conformance>(presentation, *configuration_, records_->node)),
      shown_(host::shown_resources(*records_)),
      ids_(connection_ids(records_->node)),
      facts_(facts_about_all(*configuration_, records_->node))
{}

Configuration Instrument::configuration() const
{
    const auto now = [this] {
        const std::lock_guard lock(mutex_);
        return configuration_;
    }();
    return *now;
}

SdpReceiver Instrument::sdp_receiver(std::size_t receiver) const
{
    const std::lock_guard lock(mutex_);
    return facts_.at({Side::receiver, receiver}).sdp;
}

std::string Instrument::sdp_file(std::size_t sender)
{
    const std::lock_guard lock(mutex_);
    return sdp_text(sender);
}

std::optional<ChangeOutcome> Instrument::refusal_while_scheduled(const ConnectionKey& key)
{
    const std::lock_guard lock(mutex_);
    return refusal_if_scheduled(key);
}

std::optional<ChangeOutcome> Instrument::refusal_if_scheduled(const ConnectionKey& key) const
{
    const ScheduledActivation* const scheduled = activations_.find(key);
    if (scheduled == nullptr)
        return std::nullopt;
    return locked_until(resource_name(key), scheduled->due);
}

ChangeOutcome Instrument::change(const ConnectionKey& key, const ConnectionPatch& patch)
{
    LogLines log;
    ChangeOutcome outcome;
    bool scheduled = false;
    {
        const std::lock_guard lock(mutex_);
        outcome = change_locked(key, patch, log);
        scheduled = activations_.find(key) != nullptr;
    }
    if (!outcome.is_refusal() && scheduled && listeners_.scheduled)
        listeners_.scheduled();
    if (!outcome.is_refusal() && listeners_.changed)
        listeners_.changed();
    outcome.log = std::move(log);
    return outcome;
}

ChangeOutcome Instrument::change_locked(const ConnectionKey& key, const ConnectionPatch& patch,
                                        LogLines& log)
{
    if (!cancels(patch)) {
        if (std::optional<ChangeOutcome> locked = refusal_if_scheduled(key))
            return *std::move(locked);
    }

    Findings findings;
    const ConnectionPatch valid =
        validate_patch(patch, facts_.at(key), connection(key).staged, findings);
    if (!findings.empty())
        return invalid_parameters(findings.text());
    ChangeOutcome outcome = change_to(key, valid, log);
    // On the same line: a client can only cause so many.
    if (!findings.warnings().empty() && !log.empty())
        log.back() += "; warning: " + findings.warnings();
    return outcome;
}

ChangeOutcome Instrument::change_to(const ConnectionKey& key, const ConnectionPatch& patch,
                                    LogLines& log)
{
    const CONNECTION_HALF_IS05_ST staged = stage_patch(connection(key).staged, patch);
    log_source_ports(resource_name(key), patch, staged, log);
    if (!patch.activation || cancels(patch))
        return stage(key, staged, log);

    const Instant requested = now();
    const std::optional<TaiTime> due = due_time(*patch.activation, requested.tai);
    if (!due)
        return beyond_tai(*patch.activation);
    if (*due > requested.tai)
        return schedule(staged, activation_of(key, patch.activation->mode, *due, requested),
                        *patch.activation, log);
    return activate_now(key, staged, *patch.activation, requested.tai, log);
}

ChangeOutcome Instrument::stage(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                LogLines& log)
{
    set_activation(staged, no_activation);
    UnfinishedChange change(*records_, advertisement_, key);
    connection(key).staged = staged;
    ChangeOutcome outcome{ChangeResult::done, staged_body(records_->connections, key), "", ""};
    const bool cancelled = activations_.find(key) != nullptr;
    log.push_back((cancelled ? "cancelled the activation of " : "staged parameters of ") +
                  resource_name(key));
    activations_.cancel(key);
    change.finish();
    return outcome;
}

ChangeOutcome Instrument::schedule(CONNECTION_HALF_IS05_ST staged,
                                   const ScheduledActivation& activation,
                                   const ActivationRequest& request, LogLines& log)
{
    const ConnectionKey& key = activation.key;
    const std::string due_text = to_text(activation.due);
    set_activation(staged, texts_of(request, due_text));
    UnfinishedChange change(*records_, advertisement_, key);
    connection(key).staged = staged;
    ChangeOutcome outcome{success_of(request), staged_body(records_->connections, key), "", ""};
    log.push_back(
        fmt::format("scheduled {}: {} at {}", resource_name(key), text_of(request.mode), due_text));
    activations_.schedule(activation);
    change.finish();
    return outcome;
}

ChangeOutcome Instrument::activate_now(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                       const ActivationRequest& request, const TaiTime& now,
                                       LogLines& log)
{
    const std::string now_text = to_text(now);
    ActivationReport report{resource_name(key), std::string(text_of(request.mode)), now, {}, ""};
    // The answer shows the activation; the staged parameters themselves never do.
    set_activation(staged, texts_of(request, now_text));
    ChangeOutcome outcome{success_of(request), staged_body_with(key, staged), "", ""};
    set_activation(staged, no_activation);
    std::string line = fmt::format("activated {}: {} at {}{}", report.resource, report.mode,
                                   now_text, lateness_of_request(request, now));
    log.reserve(log.size() + 1); // after the activation nothing may fail any more
    try {
        UnfinishedChange change(*records_, advertisement_, key);
        connection(key).staged = staged;
        activate(key, texts_of(request, now_text), now);
        change.finish();
    } catch (const std::exception& error) {
        report.why = error.what();
        report.done = clock_();
        report.late = span_between(now, report.done);
        outcome = {ChangeResult::failed, "", "The activation failed, nothing has changed",
                   report.why};
        activations_.report_failed(std::move(report));
        return outcome;
    }
    report.done = clock_();
    report.late = span_between(now, report.done);
    activations_.report_done(std::move(report));
    log.push_back(std::move(line));
    return outcome;
}

/// Activates what is staged. If it throws, it may have changed only a part: see UnfinishedChange.
void Instrument::activate(const ConnectionKey& key, const ActivationTexts& texts,
                          const TaiTime& now)
{
    const CONNECTION_HALF_IS05_ST active =
        activate_staged(connection(key).staged, facts_.at(key), texts);
    follow_activation(key, active, now);
    // Last, because it cannot be taken back.
    if (apply_to_media_)
        apply_to_media_(key, active);
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

NextDue Instrument::next_due()
{
    const std::lock_guard lock(mutex_);
    return activations_.next_due();
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
    if (performed.any && listeners_.changed)
        listeners_.changed();
    log_all(performed.done);
    for (const std::string& line : performed.failed)
        spdlog::error("{}", line);
    if (trouble)
        std::rethrow_exception(trouble);
    return performed.any;
}

/// If it throws, the activation is still scheduled.
void Instrument::activate_scheduled(const ScheduledActivation& activation, Performed& performed)
{
    CONNECTION_HALF_IS05_ST& staged = connection(activation.key).staged;
    const std::string requested(text_of(staged.requested_time));
    const std::string due = to_text(activation.due);
    ActivationReport report{resource_name(activation.key),
                            std::string(text_of(activation.mode)),
                            activation.due,
                            {},
                            ""};
    bool done = false;
    try {
        UnfinishedChange change(*records_, advertisement_, activation.key);
        activate(activation.key, {report.mode, requested, due}, clock_());
        change.finish();
        done = true;
    } catch (const std::exception& error) {
        report.why = error.what();
    } catch (...) {
        report.why = "unknown reason";
    }
    const Instant end = now();
    report.done = end.tai;
    report.late = lateness(activation, end);
    set_activation(staged, no_activation);
    activations_.cancel(activation.key);
    performed.any = true;
    if (done) {
        activations_.report_done(std::move(report));
        add_line(performed.done, line_of_done, activations_.done().front());
    } else {
        activations_.report_failed(std::move(report));
        add_line(performed.failed, line_of_failed, activations_.failed().front());
    }
}

InstrumentStatus Instrument::status()
{
    const std::lock_guard lock(mutex_);
    InstrumentStatus status;
    status.activations.assign(activations_.done().begin(), activations_.done().end());
    status.counts = activations_.counts();
    status.failures.assign(activations_.failed().begin(), activations_.failed().end());
    for (const auto& [key, activation] : activations_.scheduled())
        status.pending.push_back(
            {resource_name(key), std::string(text_of(activation.mode)), activation.due});
    return status;
}

CONNECTION_IS05_ST& Instrument::connection(const ConnectionKey& key)
{
    NMOS_IS05_ST& connections = records_->connections;
    return key.side == Side::sender ? connections.senders[key.index]
                                    : connections.receivers[key.index];
}

/// Ids never change: no lock is needed.
std::string Instrument::id_of(const ConnectionKey& key) const
{
    return ids_.at(key);
}

std::string Instrument::resource_name(const ConnectionKey& key) const
{
    return (key.side == Side::sender ? "senders/" : "receivers/") + id_of(key);
}

SUBSCRIPTION_IS04_ST& Instrument::subscription(const ConnectionKey& key)
{
    NMOS_IS04_ST& node = records_->node;
    return key.side == Side::sender ? node.senders[key.index].subscription[0]
                                    : node.receivers[key.index].subscription[0];
}

std::string Instrument::staged_body(NMOS_IS05_ST& connections, const ConnectionKey& key) const
{
    const int index = static_cast<int>(key.index);
    return key.side == Side::sender
               ? ConnectionApi().make_single_senderid_staged(&connections, index)
               : ConnectionApi().make_single_receiverid_staged(&connections, index);
}

std::string Instrument::staged_body_with(const ConnectionKey& key,
                                         const CONNECTION_HALF_IS05_ST& staged)
{
    const auto copy = std::make_unique<NMOS_IS05_ST>(records_->connections);
    if (key.side == Side::sender)
        copy->senders[key.index].staged = staged;
    else
        copy->receivers[key.index].staged = staged;
    return staged_body(*copy, key);
}

std::string Instrument::sdp_text(std::size_t sender)
{
    return host::sdp_text(*records_, *conformance_, sender);
}

} // namespace nmos_instrument::host

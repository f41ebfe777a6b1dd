// SPDX-License-Identifier: Apache-2.0

#include "instrument/instrument.h"

#include <exception>
#include <new>
#include <utility>

#include <fmt/format.h>

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

ChangeOutcome locked_by_hardware(const std::string& name)
{
    return {ChangeResult::locked, "", "The resource is locked: an activation is under way",
            name + " is being activated; try again when that has ended"};
}

ChangeOutcome beyond_tai(const ActivationRequest& request)
{
    return invalid_parameters("/activation/requested_time: found " +
                              in_quotes(request.requested_time_text) +
                              ", counted from now that is later than a TAI clock can show");
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

} // namespace

Instrument::Instrument(const Configuration& configuration, const NodeAddress& address, Clock clock,
                       Log log, const HardwareOptions& hardware, SteadyClock steady_clock,
                       Presentation presentation)
    : Instrument(filled_records(configuration, address, clock()), address, clock, std::move(log),
                 hardware, std::move(steady_clock), presentation)
{}

Instrument::Instrument(FilledRecords filled, const NodeAddress& address, Clock clock, Log log,
                       const HardwareOptions& hardware, SteadyClock steady_clock,
                       Presentation presentation)
    : clock_(std::move(clock)),
      log_(std::move(log)),
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
      facts_(facts_about_all(*configuration_, records_->node)),
      hardware_options_(hardware)
{
    if (hardware.apply)
        hardware_.emplace(hardware);
}

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

std::optional<ChangeOutcome> Instrument::refusal_while_locked(const ConnectionKey& key)
{
    const std::lock_guard lock(mutex_);
    return refusal_if_locked(key);
}

std::optional<ChangeOutcome> Instrument::refusal_if_locked(const ConnectionKey& key,
                                                           bool cancels) const
{
    if (activations_.is_under_way(key))
        return locked_by_hardware(resource_name(key));
    const ScheduledActivation* const scheduled = activations_.find(key);
    if (scheduled == nullptr || cancels)
        return std::nullopt;
    return locked_until(resource_name(key), scheduled->due);
}

ChangeOutcome Instrument::change(const ConnectionKey& key, const ConnectionPatch& patch)
{
    if (hardware_)
        throw std::logic_error("the outcome of a change is known when the hardware has answered");
    ChangeOutcome outcome;
    change(key, patch, [&outcome](ChangeOutcome ended) { outcome = std::move(ended); });
    return outcome;
}

void Instrument::change(const ConnectionKey& key, const ConnectionPatch& patch, Then then)
{
    ChangeLog log;
    std::optional<ChangeOutcome> outcome;
    bool scheduled = false;
    {
        const std::lock_guard lock(mutex_);
        outcome = change_locked(key, patch, log, then);
        scheduled = activations_.find(key) != nullptr;
    }
    if (!outcome)
        return;
    if (!outcome->is_refusal() && scheduled && listeners_.scheduled)
        listeners_.scheduled();
    if (!outcome->is_refusal() && listeners_.changed)
        listeners_.changed();
    outcome->log = std::move(log.lines);
    then(*std::move(outcome));
}

/// Nothing if the hardware has to be asked: then it has taken `then`.
std::optional<ChangeOutcome> Instrument::change_locked(const ConnectionKey& key,
                                                       const ConnectionPatch& patch, ChangeLog& log,
                                                       Then& then)
{
    if (std::optional<ChangeOutcome> locked = refusal_if_locked(key, cancels(patch)))
        return locked;

    Findings findings;
    const ConnectionPatch valid =
        validate_patch(patch, facts_.at(key), connection(key).staged, findings);
    if (!findings.empty())
        return invalid_parameters(findings.text());
    log.warnings = findings.warnings();
    return change_to(key, valid, log, then);
}

std::optional<ChangeOutcome> Instrument::change_to(const ConnectionKey& key,
                                                   const ConnectionPatch& patch, ChangeLog& log,
                                                   Then& then)
{
    const CONNECTION_HALF_IS05_ST staged = stage_patch(connection(key).staged, patch);
    log_source_ports(resource_name(key), patch, staged, log.lines);
    if (!patch.activation || cancels(patch))
        return stage(key, staged, log);

    const Instant requested = now();
    const std::optional<TaiTime> due = due_time(*patch.activation, requested.tai);
    if (!due)
        return beyond_tai(*patch.activation);
    if (*due > requested.tai)
        return schedule(staged, activation_of(key, patch.activation->mode, *due, requested),
                        *patch.activation, log);
    return activate_now(prepare_now(key, staged, *patch.activation, requested.tai, log),
                        requested.tai, log, then);
}

ChangeOutcome Instrument::stage(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                ChangeLog& log)
{
    set_activation(staged, no_activation);
    UnfinishedChange change(*records_, advertisement_, key);
    connection(key).staged = staged;
    ChangeOutcome outcome{ChangeResult::done, staged_body(key), "", ""};
    const bool cancelled = activations_.find(key) != nullptr;
    log.done((cancelled ? "cancelled the activation of " : "staged parameters of ") +
             resource_name(key));
    activations_.cancel(key);
    change.finish();
    return outcome;
}

ChangeOutcome Instrument::schedule(CONNECTION_HALF_IS05_ST staged,
                                   const ScheduledActivation& activation,
                                   const ActivationRequest& request, ChangeLog& log)
{
    const ConnectionKey& key = activation.key;
    const std::string due_text = to_text(activation.due);
    set_activation(staged, {text_of(request.mode), request.requested_time_text, due_text});
    UnfinishedChange change(*records_, advertisement_, key);
    connection(key).staged = staged;
    ChangeOutcome outcome{ChangeResult::accepted, staged_body(key), "", ""};
    log.done(
        fmt::format("scheduled {}: {} at {}", resource_name(key), text_of(request.mode), due_text));
    activations_.schedule(activation);
    change.finish();
    return outcome;
}

NextDue Instrument::next_due()
{
    const std::lock_guard lock(mutex_);
    return activations_.next_due();
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

std::string Instrument::staged_body(const ConnectionKey& key)
{
    NMOS_IS05_ST& connections = records_->connections;
    const int index = static_cast<int>(key.index);
    return key.side == Side::sender
               ? ConnectionApi().make_single_senderid_staged(&connections, index)
               : ConnectionApi().make_single_receiverid_staged(&connections, index);
}

std::string Instrument::sdp_text(std::size_t sender)
{
    return host::sdp_text(*records_, *conformance_, sender);
}

} // namespace nmos_instrument::host

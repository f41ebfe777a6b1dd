// SPDX-License-Identifier: Apache-2.0

#include "instrument/instrument.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <spdlog/spdlog.h>

#include "connection/activate_staged.h"
#include "connection/activation_request.h"
#include "connection/validate_patch.h"
#include "records/record_text.h"
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

void log_all(const std::vector<std::string>& lines)
{
    for (const std::string& line : lines)
        spdlog::info("{}", line);
}

} // namespace

Instrument::Instrument(const Configuration& configuration, Clock clock, ApplyToMedia apply_to_media)
    : configuration_(configuration),
      clock_(std::move(clock)),
      apply_to_media_(std::move(apply_to_media)),
      records_(make_records(configuration, clock_())),
      index_(*records_)
{
    const auto add_facts = [this](Side side, std::int32_t count) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const ConnectionKey key{side, i};
            facts_[key] = facts_about(configuration_, records_->node, key);
        }
    };
    add_facts(Side::sender, records_->node.senders_count);
    add_facts(Side::receiver, records_->node.receivers_count);
}

std::string Instrument::sdp_file(std::size_t sender)
{
    const std::lock_guard lock(mutex_);
    return sdp_text(sender);
}

std::optional<ChangeOutcome> Instrument::refusal_while_scheduled(const ConnectionKey& key)
{
    const std::lock_guard lock(mutex_);
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
    log_all(log);
    if (outcome.is_refusal())
        return outcome;
    if (scheduled && listeners_.scheduled)
        listeners_.scheduled();
    if (listeners_.changed)
        listeners_.changed();
    return outcome;
}

ChangeOutcome Instrument::change_locked(const ConnectionKey& key, const ConnectionPatch& patch,
                                        LogLines& log)
{
    const ScheduledActivation* const scheduled = activations_.find(key);
    if (scheduled != nullptr && !cancels(patch))
        return locked_until(resource_name(key), scheduled->due);

    Findings findings;
    const CONNECTION_HALF_IS05_ST& before = connection(key).staged;
    const ConnectionPatch valid = validate_patch(patch, facts_.at(key), before, findings);
    if (!findings.empty())
        return invalid_parameters(findings.text());

    const CONNECTION_HALF_IS05_ST staged = stage_patch(before, valid);
    log_source_ports(resource_name(key), valid, staged, log);
    if (!patch.activation || cancels(patch))
        return stage(key, staged, log);

    const TaiTime now = clock_();
    const std::optional<TaiTime> due = due_time(*patch.activation, now);
    if (!due)
        return beyond_tai(*patch.activation);
    if (*due > now)
        return schedule(key, staged, *patch.activation, *due, log);
    return activate_now(key, staged, *patch.activation, now, log);
}

ChangeOutcome Instrument::stage(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                LogLines& log)
{
    set_activation(staged, no_activation);
    connection(key).staged = staged;
    const bool cancelled = activations_.cancel(key);
    log.push_back((cancelled ? "cancelled the activation of " : "staged parameters of ") +
                  resource_name(key));
    return {ChangeResult::done, staged_body(records_->connections, key), "", ""};
}

ChangeOutcome Instrument::schedule(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                   const ActivationRequest& request, const TaiTime& due,
                                   LogLines& log)
{
    const std::string due_text = to_text(due);
    set_activation(staged, texts_of(request, due_text));
    connection(key).staged = staged;
    activations_.schedule({key, request.mode, due});
    log.push_back(
        fmt::format("scheduled {}: {} at {}", resource_name(key), text_of(request.mode), due_text));
    return {success_of(request), staged_body(records_->connections, key), "", ""};
}

ChangeOutcome Instrument::activate_now(const ConnectionKey& key, CONNECTION_HALF_IS05_ST staged,
                                       const ActivationRequest& request, const TaiTime& now,
                                       LogLines& log)
{
    const std::string name = resource_name(key);
    const std::string mode(text_of(request.mode));
    const std::string now_text = to_text(now);
    // The answer shows the activation; the staged parameters themselves never do.
    set_activation(staged, texts_of(request, now_text));
    const std::string shown = staged_body_with(key, staged);
    set_activation(staged, no_activation);
    try {
        activate(key, staged, texts_of(request, now_text), now);
    } catch (const std::exception& error) {
        activations_.report_failed({name, mode, now, clock_(), error.what()});
        return {ChangeResult::failed, "", "The activation failed, nothing has changed",
                error.what()};
    }
    connection(key).staged = staged;
    activations_.report_done({name, mode, now, clock_(), ""});
    log.push_back(fmt::format("activated {}: {} at {}{}", name, mode, now_text,
                              lateness_of_request(request, now)));
    return {success_of(request), shown, "", ""};
}

void Instrument::activate(const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& staged,
                          const ActivationTexts& texts, const TaiTime& now)
{
    const CONNECTION_HALF_IS05_ST active = activate_staged(staged, facts_.at(key), texts);
    if (apply_to_media_)
        apply_to_media_(key, active);
    follow_activation(key, active, now);
}

void Instrument::follow_activation(const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& active,
                                   const TaiTime& now)
{
    NMOS_IS04_ST& node = records_->node;
    node.version_seconds = now.seconds;
    node.version_nanoseconds = now.nanoseconds;
    const auto advance = [&](auto& resource) {
        const TaiTime previous = parse_tai_time(text_of(resource.version)).value_or(TaiTime());
        set_text(resource.version, to_text(later_than(previous, now)));
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

/// RFC 4566 5.2 recommends a time and requires that the number increases.
void Instrument::raise_sdp_version(std::size_t sender, const TaiTime& now)
{
    std::uint64_t& version = records_->sdp_sessions[sender].version;
    version = std::max(version + 1, now.seconds);
}

std::optional<TaiTime> Instrument::next_due()
{
    const std::lock_guard lock(mutex_);
    return activations_.next_due();
}

bool Instrument::activate_due()
{
    LogLines done;
    LogLines failed;
    {
        const std::lock_guard lock(mutex_);
        while (const auto activation = activations_.take_due(clock_()))
            activate_scheduled(*activation, done, failed);
    }
    log_all(done);
    for (const std::string& line : failed)
        spdlog::error("{}", line);
    const bool any = !done.empty() || !failed.empty();
    if (any && listeners_.changed)
        listeners_.changed();
    return any;
}

void Instrument::activate_scheduled(const ScheduledActivation& activation, LogLines& done,
                                    LogLines& failed)
{
    CONNECTION_HALF_IS05_ST& staged = connection(activation.key).staged;
    const std::string name = resource_name(activation.key);
    const std::string mode(text_of(activation.mode));
    const std::string requested(text_of(staged.requested_time));
    const std::string due = to_text(activation.due);
    set_activation(staged, no_activation);
    try {
        activate(activation.key, staged, {mode, requested, due}, clock_());
        const TaiTime end = clock_();
        activations_.report_done({name, mode, activation.due, end, ""});
        done.push_back(fmt::format("activated {}: {} at {}, {} us late", name, mode, due,
                                   span_between(activation.due, end).count() / 1000));
    } catch (const std::exception& error) {
        activations_.report_failed({name, mode, activation.due, clock_(), error.what()});
        failed.push_back("activation of " + name + " failed, nothing has changed: " + error.what());
    }
}

InstrumentStatus Instrument::status()
{
    const std::lock_guard lock(mutex_);
    InstrumentStatus status;
    status.activations.assign(activations_.done().begin(), activations_.done().end());
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
    const NMOS_IS04_ST& node = records_->node;
    return std::string(text_of(key.side == Side::sender ? node.senders[key.index].id
                                                        : node.receivers[key.index].id));
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
    set_sdp_session(*records_, sender);
    return ConnectionApi().make_single_senderid_sdp(&records_->connections,
                                                    static_cast<int>(sender), &records_->settings);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "instrument/instrument.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <spdlog/spdlog.h>

#include "connection/activate_staged.h"
#include "connection/validate_patch.h"
#include "records/record_text.h"
#include "text/quoted_text.h"
#include "time/activation_time.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

constexpr ActivationTexts no_activation;

bool is_scheduled(ActivationMode mode)
{
    return mode == ActivationMode::scheduled_absolute || mode == ActivationMode::scheduled_relative;
}

std::string first_line_of(const std::string& text)
{
    const std::size_t end = text.find('\n');
    return end == std::string::npos ? text : text.substr(0, end) + " ...";
}

void log_all(const std::vector<std::string>& lines)
{
    for (const std::string& line : lines)
        spdlog::info("{}", line);
}

} // namespace

void log_refusal(const std::string& resource, const ChangeOutcome& outcome)
{
    spdlog::info("refused a change of {}: {} {}: {}", resource, outcome.status, outcome.error,
                 in_quotes(first_line_of(outcome.debug)));
}

Instrument::Instrument(const Configuration& configuration, Clock clock, ApplyToMedia apply_to_media)
    : configuration_(configuration),
      clock_(std::move(clock)),
      apply_to_media_(std::move(apply_to_media)),
      records_(make_records(configuration, clock_())),
      index_(*records_)
{
    for (std::size_t i = 0; i < sender_count; ++i) {
        const ConnectionKey key{Side::sender, i};
        facts_[key] = facts_about(configuration_, records_->node, key);
    }
    for (std::size_t i = 0; i < receiver_count; ++i) {
        const ConnectionKey key{Side::receiver, i};
        facts_[key] = facts_about(configuration_, records_->node, key);
    }
}

std::string Instrument::sdp_file(std::size_t sender)
{
    const std::lock_guard lock(mutex_);
    return sdp_text(sender);
}

ChangeOutcome Instrument::change(const ConnectionKey& key, const ConnectionPatch& patch)
{
    std::vector<std::string> log;
    ChangeOutcome outcome;
    bool scheduled = false;
    {
        const std::lock_guard lock(mutex_);
        outcome = change_locked(key, patch, log);
        scheduled = pending_.contains(key);
    }
    log_all(log);
    if (outcome.status >= 400) {
        log_refusal(resource_name(key), outcome);
        return outcome;
    }
    if (scheduled && listeners_.scheduled)
        listeners_.scheduled();
    if (listeners_.changed)
        listeners_.changed();
    return outcome;
}

ChangeOutcome Instrument::change_locked(const ConnectionKey& key, const ConnectionPatch& patch,
                                        std::vector<std::string>& log)
{
    CONNECTION_IS05_ST& target = connection(key);
    const std::string name = resource_name(key);
    const std::optional<ActivationRequest>& request = patch.activation;
    const bool cancels = request && request->mode == ActivationMode::none;
    const auto pending = pending_.find(key);
    if (pending != pending_.end() && !cancels)
        return {423, "", "The resource is locked: an activation is scheduled",
                name + " activates at " + to_text(pending->second.due) +
                    "; /activation/mode null cancels that"};

    Findings findings;
    const ConnectionPatch valid = validate_patch(patch, facts_.at(key), target.staged, findings);
    if (!findings.empty())
        return {400, "", "The parameters cannot be taken", findings.text()};

    const TaiTime now = clock_();
    CONNECTION_HALF_IS05_ST staged = stage_patch(target.staged, valid);
    for (std::size_t i = 0; i < leg_count; ++i) {
        if (valid.legs[i].source_port &&
            *valid.legs[i].source_port != staged.transport_params[i].destination_port)
            log.push_back(name + ": source_port " + std::to_string(*valid.legs[i].source_port) +
                          " of leg " + std::to_string(i + 1) +
                          " is not kept, it is always the destination port");
    }

    if (!request || cancels) {
        set_activation(staged, no_activation);
        target.staged = staged;
        if (pending != pending_.end()) {
            pending_.erase(pending);
            log.push_back("cancelled the activation of " + name);
        } else {
            log.push_back("staged parameters of " + name);
        }
        return {200, staged_body(records_->connections, key), "", ""};
    }

    TaiTime due = now;
    if (request->mode == ActivationMode::scheduled_absolute) {
        due = request->requested_time;
    } else if (request->mode == ActivationMode::scheduled_relative) {
        const auto sum = sum_of(now, request->requested_time);
        if (!sum)
            return {400, "", "The parameters cannot be taken",
                    "/activation/requested_time: found " + in_quotes(request->requested_time_text) +
                        ", from now on that is beyond what a TAI clock can show"};
        due = *sum;
    }
    const bool at_once = due <= now;
    const std::string time_text = to_text(at_once ? now : due);
    const ActivationTexts texts{
        text_of(request->mode),
        is_scheduled(request->mode) ? std::string_view(request->requested_time_text) : null_text,
        time_text};
    const int status = is_scheduled(request->mode) ? 202 : 200;

    if (!at_once) {
        set_activation(staged, texts);
        target.staged = staged;
        pending_[key] = {due, request->mode};
        log.push_back("scheduled " + name + ": " + std::string(texts.mode) + " at " + time_text);
        return {status, staged_body(records_->connections, key), "", ""};
    }

    // The answer shows the activation, the staged parameters themselves never do.
    CONNECTION_HALF_IS05_ST shown = staged;
    set_activation(shown, texts);
    ChangeOutcome outcome{status, staged_body_with(key, shown), "", ""};
    set_activation(staged, no_activation);
    try {
        activate(key, staged, texts, now);
    } catch (const std::exception& error) {
        remember(failures_, {name, std::string(texts.mode), due, clock_(), error.what()});
        return {500, "", "The activation failed, nothing has changed", error.what()};
    }
    target.staged = staged;
    remember(activations_, {name, std::string(texts.mode), now, clock_(), ""});
    log.push_back("activated " + name + ": " + std::string(texts.mode) + " at " + time_text);
    return outcome;
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

/// RFC 4566 5.2 recommends a time, and demands that the number rises.
void Instrument::raise_sdp_version(std::size_t sender, const TaiTime& now)
{
    std::uint64_t& version = records_->sdp_sessions[sender].version;
    version = std::max(version + 1, now.seconds);
}

std::optional<TaiTime> Instrument::next_due()
{
    const std::lock_guard lock(mutex_);
    std::optional<TaiTime> next;
    for (const auto& [key, pending] : pending_) {
        if (!next || pending.due < *next)
            next = pending.due;
    }
    return next;
}

bool Instrument::activate_due()
{
    std::vector<std::string> done;
    std::vector<std::string> failed;
    {
        const std::lock_guard lock(mutex_);
        for (auto entry = pending_.begin(); entry != pending_.end();) {
            const auto [key, pending] = *entry;
            const TaiTime now = clock_();
            if (pending.due > now) {
                ++entry;
                continue;
            }
            entry = pending_.erase(entry);
            CONNECTION_HALF_IS05_ST& staged = connection(key).staged;
            const std::string mode(text_of(pending.mode));
            const std::string requested(text_of(staged.requested_time));
            const std::string due(to_text(pending.due));
            const std::string name = resource_name(key);
            set_activation(staged, no_activation);
            try {
                activate(key, staged, {mode, requested, due}, now);
                const TaiTime end = clock_();
                remember(activations_, {name, mode, pending.due, end, ""});
                const auto late = span_between(pending.due, end);
                done.push_back(fmt::format("activated {}: {} at {}, {} us late", name, mode, due,
                                           late.count() / 1000));
            } catch (const std::exception& error) {
                remember(failures_, {name, mode, pending.due, clock_(), error.what()});
                failed.push_back("activation of " + name +
                                 " failed, nothing has changed: " + error.what());
            }
        }
    }
    log_all(done);
    for (const std::string& line : failed)
        spdlog::error("{}", line);
    const bool any = !done.empty() || !failed.empty();
    if (any && listeners_.changed)
        listeners_.changed();
    return any;
}

InstrumentStatus Instrument::status()
{
    const std::lock_guard lock(mutex_);
    InstrumentStatus status;
    status.activations.assign(activations_.begin(), activations_.end());
    status.failures.assign(failures_.begin(), failures_.end());
    for (const auto& [key, pending] : pending_)
        status.pending.push_back(
            {resource_name(key), std::string(text_of(pending.mode)), pending.due});
    return status;
}

void Instrument::remember(std::deque<ActivationReport>& list, ActivationReport report)
{
    constexpr std::size_t most = 20;
    list.push_front(std::move(report));
    if (list.size() > most)
        list.pop_back();
}

CONNECTION_IS05_ST& Instrument::connection(const ConnectionKey& key)
{
    NMOS_IS05_ST& connections = records_->connections;
    return key.side == Side::sender ? connections.senders[key.index]
                                    : connections.receivers[key.index];
}

/// Ids never change: no lock is needed.
std::string Instrument::resource_name(const ConnectionKey& key) const
{
    if (key.side == Side::sender)
        return "senders/" + std::string(text_of(records_->node.senders[key.index].id));
    return "receivers/" + std::string(text_of(records_->node.receivers[key.index].id));
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

// SPDX-License-Identifier: Apache-2.0
//
// The part of an instrument that survives a restart: read from the records, and restored to them.

#include "instrument/instrument.h"

#include "connection/activate_staged.h"
#include "instrument/resource_texts.h"
#include "records/record_text.h"
#include "text/quoted_text.h"
#include "time/tai_clock.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

namespace {

/// Makes saved parameters fit the interfaces in the current configuration. Adds every change to
/// `messages`.
void fit_to_interfaces(CONNECTION_HALF_IS05_ST& half, const ConnectionFacts& facts,
                       const std::string& name, std::vector<std::string>& messages)
{
    for (std::size_t i = 0; i < leg_count; ++i) {
        CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
        auto& field = facts.side == Side::sender ? leg.source_ip : leg.interface_ip;
        if (text_of(field) == auto_text || text_of(field) == facts.interface_addresses[i])
            continue;
        messages.push_back(name + ": saved address " + in_quotes(text_of(field)) + " of leg " +
                           std::to_string(i + 1) + " is now " + facts.interface_addresses[i]);
        set_text(field, facts.interface_addresses[i]);
    }
}

} // namespace

SavedState Instrument::saved_state()
{
    const std::lock_guard lock(mutex_);
    SavedState state;
    const Nmos& counters = advertisement_;
    state.counters = {counters.ver_slf, counters.ver_src, counters.ver_flw,
                      counters.ver_dvc, counters.ver_snd, counters.ver_rcv};
    visit_resources(*records_, *conformance_,
                    [&](auto, const auto& id, auto& version, auto&& make_body) {
                        state.resources[std::string(text_of(id))] = {
                            parse_tai_time(text_of(version)).value_or(TaiTime()),
                            body_hash(version, make_body)};
                    });
    for (const auto& [key, facts] : facts_) {
        const CONNECTION_IS05_ST& from = connection(key);
        if (key.side == Side::sender)
            state.senders[id_of(key)] = {from.staged, from.active,
                                         records_->sdp_sessions[key.index].version,
                                         sdp_hash(*records_, *conformance_, key.index)};
        else
            state.receivers[id_of(key)] = {from.staged, from.active, 0, 0};
    }
    return state;
}

std::size_t Instrument::count_known(const SavedState& saved) const
{
    std::size_t known = 0;
    for (const auto& [key, id] : ids_)
        known += (key.side == Side::sender ? saved.senders : saved.receivers).count(id);
    return known;
}

std::vector<std::string> Instrument::restore(const SavedState& saved)
{
    const std::lock_guard lock(mutex_);
    const auto before = std::make_unique<Records>(*records_);
    std::vector<std::string> messages;
    restore_connections(saved, messages);
    const std::vector<std::string> wrong = nmos_instrument::check_record(records_->connections);
    if (!wrong.empty()) {
        *records_ = *before;
        throw DamagedState(wrong.front());
    }
    // These follow the connections, because a version depends on what its resource shows.
    restore_counters(saved.counters);
    restore_versions(saved.resources);
    restore_sdp_versions(saved.senders);
    return messages;
}

void Instrument::restore_connections(const SavedState& saved, std::vector<std::string>& messages)
{
    restore_side(Side::sender, saved.senders, messages);
    restore_side(Side::receiver, saved.receivers, messages);
    const std::size_t dropped = saved.connections() - count_known(saved);
    if (dropped != 0)
        messages.push_back("dropped the saved parameters of " + std::to_string(dropped) +
                           " senders and receivers that the configuration no longer has");
}

void Instrument::restore_side(Side side, const std::map<std::string, SavedConnection>& saved,
                              std::vector<std::string>& messages)
{
    for (const auto& [key, facts] : facts_) {
        if (key.side != side)
            continue;
        const auto connection_of = saved.find(id_of(key));
        if (connection_of == saved.end())
            continue;
        CONNECTION_IS05_ST& target = connection(key);
        target.staged = connection_of->second.staged;
        target.active = connection_of->second.active;
        set_activation(target.staged, ActivationTexts()); // scheduled activations do not survive
        fit_to_interfaces(target.staged, facts, resource_name(key), messages);
        fit_to_interfaces(target.active, facts, resource_name(key), messages);
        subscription(key) = subscription_of(target.active, side);
    }
}

void Instrument::restore_counters(const SavedCounters& saved)
{
    advertisement_.ver_slf = saved.self;
    advertisement_.ver_src = saved.sources;
    advertisement_.ver_flw = saved.flows;
    advertisement_.ver_dvc = saved.devices;
    advertisement_.ver_snd = saved.senders;
    advertisement_.ver_rcv = saved.receivers;
}

/// A resource keeps its version if it still reads as it did when it was saved.
void Instrument::restore_versions(const std::map<std::string, SavedResource>& saved)
{
    const TaiTime now = clock_();
    visit_resources(*records_, *conformance_,
                    [&](auto count_change, const auto& id, auto& version, auto&& make_body) {
                        const auto found = saved.find(std::string(text_of(id)));
                        const bool same = found != saved.end() &&
                                          found->second.body_hash == body_hash(version, make_body);
                        if (found != saved.end())
                            set_text(version,
                                     to_text(same ? found->second.version
                                                  : later_than(found->second.version, now)));
                        if (!same)
                            (advertisement_.*count_change)();
                    });
}

void Instrument::restore_sdp_versions(const std::map<std::string, SavedConnection>& saved)
{
    const TaiTime now = clock_();
    for (const auto& [key, facts] : facts_) {
        const auto found = saved.find(id_of(key));
        if (key.side != Side::sender || found == saved.end())
            continue;
        const bool same = sdp_hash(*records_, *conformance_, key.index) == found->second.sdp_hash;
        records_->sdp_sessions[key.index].version = found->second.sdp_version;
        if (!same)
            raise_sdp_version(key.index, now);
    }
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// What of an instrument survives a restart: taken from the records, and put back into them.

#include "instrument/instrument.h"

#include "connection/activate_staged.h"
#include "records/record_text.h"
#include "text/quoted_text.h"
#include "time/activation_time.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {

/// Calls `visit` with kind counter, id, version field and body of every resource.
template <class Visit>
void Instrument::visit_resources(Visit&& visit)
{
    NodeApi api;
    NMOS_IS04_ST& node = records_->node;
    const StreamSelection& selection = records_->selection;
    visit(&Nmos::update_txt_ver_slf, node.id, node.version, [&] { return api.make_self(&node); });
    for (int i = 0; i < node.sources_count; ++i)
        visit(&Nmos::update_txt_ver_src, node.sources[i].id, node.sources[i].version,
              [&, i] { return api.make_sourceid(&node, i); });
    for (int i = 0; i < node.flows_count; ++i)
        visit(&Nmos::update_txt_ver_flw, node.flows[i].id, node.flows[i].version,
              [&, i] { return api.make_flowid(&node, i); });
    for (int i = 0; i < node.devices_count; ++i)
        visit(&Nmos::update_txt_ver_dvc, node.devices[i].id, node.devices[i].version, [&, i] {
            return api.make_deviceid(&node, i, selection.receiver_filter,
                                     selection.audio_group_filter, selection.sender_filter);
        });
    for (int i = 0; i < node.senders_count; ++i)
        visit(&Nmos::update_txt_ver_snd, node.senders[i].id, node.senders[i].version,
              [&, i] { return api.make_senderid(&node, i); });
    for (int i = 0; i < node.receivers_count; ++i)
        visit(&Nmos::update_txt_ver_rcv, node.receivers[i].id, node.receivers[i].version,
              [&, i] { return api.make_receiverid(&node, i); });
}

namespace {

/// The hash of a body without its version.
template <std::size_t N, class MakeBody>
std::uint64_t body_hash(char (&version)[N], MakeBody&& make_body)
{
    const std::string kept(text_of(version));
    set_text(version, "0:0"); // any constant will do
    const std::uint64_t hash = stable_hash(make_body());
    set_text(version, kept);
    return hash;
}

/// Saved parameters, made to fit the interfaces that the configuration names now. What was changed
/// is added to `messages`.
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
    visit_resources([&](auto, auto& id, auto& version, auto&& make_body) {
        state.resources[std::string(text_of(id))] = {
            parse_tai_time(text_of(version)).value_or(TaiTime()), body_hash(version, make_body)};
    });
    NMOS_IS04_ST& node = records_->node;
    for (std::size_t i = 0; i < static_cast<std::size_t>(node.senders_count); ++i) {
        SavedConnection& saved = state.senders[std::string(text_of(node.senders[i].id))];
        const CONNECTION_IS05_ST& from = records_->connections.senders[i];
        SdpSession& session = records_->sdp_sessions[i];
        saved = {from.staged, from.active, session.version, 0};
        session.version = 0;
        saved.sdp_hash = stable_hash(sdp_text(i));
        session.version = saved.sdp_version;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(node.receivers_count); ++i) {
        const CONNECTION_IS05_ST& from = records_->connections.receivers[i];
        state.receivers[std::string(text_of(node.receivers[i].id))] = {from.staged, from.active, 0,
                                                                       0};
    }
    return state;
}

std::vector<std::string> Instrument::restore(const SavedState& saved)
{
    const std::lock_guard lock(mutex_);
    const auto before = std::make_unique<Records>(*records_);
    const TaiTime now = clock_();
    std::vector<std::string> messages;
    NMOS_IS04_ST& node = records_->node;

    const auto take_over = [&](Side side, auto& resources, std::int32_t count,
                               const std::map<std::string, SavedConnection>& connections) {
        std::size_t known = 0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const auto found = connections.find(std::string(text_of(resources[i].id)));
            if (found == connections.end())
                continue;
            ++known;
            const ConnectionKey key{side, i};
            CONNECTION_IS05_ST& target = connection(key);
            target.staged = found->second.staged;
            target.active = found->second.active;
            set_activation(target.staged, ActivationTexts()); // pending ones do not survive
            fit_to_interfaces(target.staged, facts_.at(key), resource_name(key), messages);
            fit_to_interfaces(target.active, facts_.at(key), resource_name(key), messages);
            resources[i].subscription[0] = subscription_of(target.active, side);
        }
        return known;
    };
    std::size_t dropped = saved.senders.size() + saved.receivers.size();
    dropped -= take_over(Side::sender, node.senders, node.senders_count, saved.senders);
    dropped -= take_over(Side::receiver, node.receivers, node.receivers_count, saved.receivers);
    if (dropped != 0)
        messages.push_back("dropped the saved parameters of " + std::to_string(dropped) +
                           " senders and receivers that the configuration no longer has");

    const std::vector<std::string> wrong = nmos_instrument::check_record(records_->connections);
    if (!wrong.empty()) {
        *records_ = *before;
        throw DamagedState(wrong.front());
    }

    const SavedCounters& counters = saved.counters;
    advertisement_.ver_slf = counters.self;
    advertisement_.ver_src = counters.sources;
    advertisement_.ver_flw = counters.flows;
    advertisement_.ver_dvc = counters.devices;
    advertisement_.ver_snd = counters.senders;
    advertisement_.ver_rcv = counters.receivers;
    visit_resources([&](auto count_change, auto& id, auto& version, auto&& make_body) {
        const auto found = saved.resources.find(std::string(text_of(id)));
        const bool same = found != saved.resources.end() &&
                          found->second.body_hash == body_hash(version, make_body);
        if (found != saved.resources.end())
            set_text(version, to_text(same ? found->second.version
                                           : later_than(found->second.version, now)));
        if (!same)
            (advertisement_.*count_change)();
    });
    for (std::size_t i = 0; i < static_cast<std::size_t>(node.senders_count); ++i) {
        const auto found = saved.senders.find(std::string(text_of(node.senders[i].id)));
        if (found == saved.senders.end())
            continue;
        std::uint64_t& version = records_->sdp_sessions[i].version;
        version = 0;
        const bool same = stable_hash(sdp_text(i)) == found->second.sdp_hash;
        version = found->second.sdp_version;
        if (!same)
            raise_sdp_version(i, now);
    }
    return messages;
}

} // namespace nmos_instrument::host

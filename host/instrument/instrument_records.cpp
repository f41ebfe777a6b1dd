// SPDX-License-Identifier: Apache-2.0
//
// The part of an instrument that lets somebody else change its records.

#include "instrument/instrument.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "instrument/fixed_in_records.h"
#include "instrument/resource_texts.h"
#include "records/read_back.h"
#include "records/record_text.h"
#include "records/resource_version.h"

namespace nmos_instrument::host {
namespace {

/// Also true if bytes differ that nobody reads; that costs time and nothing else.
bool may_differ(const Records& one, const Records& other)
{
    return std::memcmp(&one.node, &other.node, sizeof one.node) != 0 ||
           std::memcmp(&one.connections, &other.connections, sizeof one.connections) != 0 ||
           std::memcmp(&one.settings, &other.settings, sizeof one.settings) != 0 ||
           one.selection != other.selection;
}

const CONNECTION_IS05_ST& connection_in(const Records& records, const ConnectionKey& key)
{
    return key.side == Side::sender ? records.connections.senders[key.index]
                                    : records.connections.receivers[key.index];
}

std::string active_body(Records& records, const ConnectionKey& key)
{
    const int index = static_cast<int>(key.index);
    ConnectionApi api;
    return key.side == Side::sender
               ? api.make_single_senderid_active(&records.connections, index)
               : api.make_single_receiverid_active(&records.connections, index);
}

/// Records, and what puts the texts right that are made of them.
struct Texts
{
    Records& records;
    const Conformance& conformance;
};

/// Brings the versions in `after` forward where it reads differently than `before`.
class Comparison
{
public:
    Comparison(const Texts& before, const Texts& after, const TaiTime& now)
        : before_(before), after_(after), now_(now)
    {}

    void compare_bodies()
    {
        std::vector<std::uint64_t> hashes;
        visit_resources(before_.records, before_.conformance,
                        [&](auto, auto&, auto& version, auto&& make_body) {
                            hashes.push_back(body_hash(version, make_body));
                        });
        std::size_t i = 0;
        visit_resources(after_.records, after_.conformance,
                        [&](CountChange count, auto&, auto& version, auto&& make_body) {
                            if (body_hash(version, make_body) != hashes.at(i))
                                advance(count, version);
                            ++i;
                        });
    }

    /// Controllers learn from the version of a sender or receiver that its connection or its SDP file
    /// reads differently, though its own body does not.
    void compare_connection(const ConnectionKey& key)
    {
        bool differs = active_differs(key);
        if (key.side == Side::sender && sdp_differs(key.index)) {
            raise_version(after_.records.sdp_sessions.at(key.index), now_);
            differs = true;
        }
        if (!differs)
            return;
        NMOS_IS04_ST& node = after_.records.node;
        if (key.side == Side::sender)
            advance_once(&Nmos::update_txt_ver_snd, before_.records.node.senders[key.index].version,
                         node.senders[key.index].version);
        else
            advance_once(&Nmos::update_txt_ver_rcv,
                         before_.records.node.receivers[key.index].version,
                         node.receivers[key.index].version);
    }

    /// The counters of the kinds of which something has a new version.
    const std::vector<CountChange>& kinds() const { return kinds_; }

private:
    using Version = std::remove_reference_t<decltype(NMOS_IS04_ST::version)>;

    bool active_differs(const ConnectionKey& key) const
    {
        const CONNECTION_HALF_IS05_ST& before = connection_in(before_.records, key).active;
        const CONNECTION_HALF_IS05_ST& after = connection_in(after_.records, key).active;
        return std::memcmp(&before, &after, sizeof before) != 0 &&
               active_body(before_.records, key) != active_body(after_.records, key);
    }

    bool sdp_differs(std::size_t sender) const
    {
        return sdp_hash(before_.records, before_.conformance, sender) !=
               sdp_hash(after_.records, after_.conformance, sender);
    }

    void advance(CountChange count, Version& version)
    {
        set_text(version,
                 to_text(later_than(parse_tai_time(text_of(version)).value_or(TaiTime()), now_)));
        if (std::find(kinds_.begin(), kinds_.end(), count) == kinds_.end())
            kinds_.push_back(count);
    }

    void advance_once(CountChange count, const Version& before, Version& after)
    {
        if (text_of(before) == text_of(after))
            advance(count, after);
    }

    const Texts before_;
    const Texts after_;
    const TaiTime now_;
    std::vector<CountChange> kinds_;
};

} // namespace

void Instrument::change_records(const std::function<void(Records&)>& change)
{
    bool changed = false;
    {
        const std::lock_guard lock(mutex_);
        changed = change_records_locked(change);
    }
    if (changed && listeners_.changed)
        listeners_.changed();
}

/// All that may fail happens to copies.
bool Instrument::change_records_locked(const std::function<void(Records&)>& change)
{
    const auto next = std::make_unique<Records>(*records_);
    change(*next);
    put_back_own(*records_, *next);
    follow_connections(*next);
    if (!may_differ(*records_, *next))
        return false;

    RecordFindings findings;
    check_fixed(*records_, *next, findings);
    check_locked_halves(*next, findings);
    findings.expect_none();
    auto configuration = std::make_shared<Configuration>(configuration_of(*next, *configuration_));
    // Where senders send to at first, whatever controllers have made of it.
    configuration->destinations = configuration_->destinations;

    auto facts = facts_about_all(*configuration, next->node);
    auto conformance =
        std::make_shared<const Conformance>(presentation_, *configuration, next->node);
    const TaiTime now = clock_();
    Comparison comparison({*records_, *conformance_}, {*next, *conformance}, now);
    comparison.compare_bodies();
    for (const auto& [key, id] : ids_)
        comparison.compare_connection(key);
    if (!comparison.kinds().empty()) {
        next->node.version_seconds = now.seconds;
        next->node.version_nanoseconds = now.nanoseconds;
    }

    // Nothing fails any more.
    *records_ = *next;
    configuration_ = std::move(configuration);
    conformance_ = std::move(conformance);
    facts_.swap(facts);
    for (const CountChange count : comparison.kinds())
        (advertisement_.*count)();
    return true;
}

/// A scheduled activation performs what its controller was shown.
void Instrument::check_locked_halves(const Records& next, RecordFindings& findings) const
{
    for (const auto& [key, id] : ids_) {
        const CONNECTION_HALF_IS05_ST& before = connection_in(*records_, key).staged;
        const CONNECTION_HALF_IS05_ST& after = connection_in(next, key).staged;
        if (std::memcmp(&before, &after, sizeof before) == 0)
            continue;
        if (const auto locked = refusal_if_locked(key))
            findings.refuse(
                path_of(key.side == Side::sender ? "connections.senders" : "connections.receivers",
                        key.index, ".staged"),
                "changed", "is no change: " + locked->debug);
    }
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// The steps that look for a registry, keep the node there and take it out again.

#include "registration/registration.h"

#include <algorithm>
#include <utility>

#include <nmos_instrument/nmos_instrument.h>

#include "registration/registry_answer.h"

namespace nmos_instrument::host {
namespace {

using State = RegistrationState;
using Event = RegistrationEvent;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

/// A search that does not end is begun again.
constexpr seconds search_limit{20};

std::string shown_count(std::size_t resources)
{
    return std::to_string(resources) + (resources == 1 ? " resource" : " resources");
}

/// The library's is empty; then there is no body at all.
std::optional<std::string> heartbeat_body()
{
    std::string body = RegistrationApi().make_health(nullptr);
    if (body.empty())
        return std::nullopt;
    return body;
}

} // namespace

void Registration::search()
{
    awaits_search_ = true;
    pause_until_ = now() + search_limit;
    surroundings_.search();
}

void Registration::next_registry()
{
    forget_requests();
    if (!try_next())
        happen(Event::no_registry);
}

/// False if there is none that has not been tried.
bool Registration::try_next()
{
    std::optional<Registry> next =
        choice_.take(instrument_.registration_of(resources_[node_position]));
    if (!next)
        return false;
    registry_ = *std::move(next);
    happen(Event::registry_found);
    return true;
}

void Registration::pause()
{
    registry_ = {};
    const milliseconds pause = retry_pause_.next(surroundings_.random());
    pause_until_ = now() + pause;
    if (!std::exchange(told_of_no_registry_, true))
        log_.info("no registry can be used; looking again in {} ms, later at least every 30 s",
                  pause.count());
    surroundings_.has_registry(false);
}

void Registration::settle()
{
    const auto took = duration_cast<milliseconds>(now() - began_);
    const std::string left_out =
        book_.left_out() == 0 ? "" : ", " + std::to_string(book_.left_out()) + " left out";
    if (lost_since_)
        log_.info("back at registry {} after {} ms: {}{}", registry_.url,
                  duration_cast<milliseconds>(now() - *lost_since_).count(),
                  shown_count(book_.size()), left_out);
    else
        log_.info("registered at {}: {} in {} ms{}", registry_.url, shown_count(book_.size()),
                  took.count(), left_out);
    if (!last_registry_.empty() && last_registry_ != registry_.url)
        ++status_.fail_overs;
    last_registry_ = registry_.url;
    lost_since_.reset();
    told_.clear();
    told_of_no_registry_ = false;
    retry_pause_.reset();
    choice_.begin_round(registry_);
    surroundings_.has_registry(true);
}

void Registration::check()
{
    pause_until_.reset();
    if (told_.count(registry_.url) == 0)
        log_.info("asking registry {} ({}, priority {}) whether it knows this node", registry_.url,
                  registry_.origin, registry_.priority);
    heartbeat();
}

void Registration::heartbeat()
{
    const TimePoint sent = now();
    if (heart_beating_) {
        heartbeat_due_ = sent + milliseconds(100);
        return;
    }
    // The next one is due 5 s after this one was due: what makes one late does not add up.
    const TimePoint due = std::exchange(heartbeat_was_due_, std::nullopt).value_or(sent);
    const auto late = duration_cast<microseconds>(sent - due);
    heartbeat_due_ = (late < heartbeat_interval ? due : sent) + heartbeat_interval;
    heart_beating_ = true;
    last_heartbeat_ = sent;
    ++status_.heartbeats;
    status_.heartbeat_lateness += late;
    send("POST", "/health/nodes/" + resources_[node_position].id, heartbeat_body(),
         [this, sent, late](const ClientAnswer& answer) {
             heart_beating_ = false;
             heartbeat_answered({sent, answer.duration, late}, answer);
         });
}

void Registration::heartbeat_answered(const RegistrationStatus::Heartbeat& beat,
                                      const ClientAnswer& answer)
{
    switch (heartbeat_answer(answer)) {
    case HeartbeatAnswer::accepted:
        status_.last_heartbeat = beat;
        happen(Event::heartbeat_accepted);
        return;
    case HeartbeatAnswer::unknown:
        if (state_ == State::registered || state_ == State::registering)
            log_.warning("registry {} does not know this node any more", registry_.url);
        happen(Event::node_unknown);
        return;
    case HeartbeatAnswer::failed:
        registry_failed("heartbeat", answer);
        return;
    }
}

void Registration::registry_failed(const std::string& what, const ClientAnswer& answer)
{
    ++status_.failures;
    std::string news = what + ": " + reason_of_failure(answer);
    if (told_.size() >= most_remembered)
        told_.clear();
    std::string& told = told_[registry_.url];
    if (told != news)
        log_.warning("registry {} {}: {}: {}", registry_.url,
                     state_ == State::registered ? "is lost" : "cannot be used", what,
                     shown_answer(answer));
    told = std::move(news);
    if (state_ == State::registered)
        lost_since_ = now();
    happen(Event::registry_failed);
}

void Registration::leave()
{
    // What may be there: the answer to its POST may still be on its way.
    book_.assume_node();
    heartbeat_due_.reset();
    changes_due_.reset();
    delete_next();
}

void Registration::delete_next()
{
    if (posting_)
        return; // its answer comes first, or the registry might get both in the wrong order
    const std::optional<std::size_t> position = book_.next_to_delete();
    if (!position) {
        happen(Event::all_deleted);
        return;
    }
    exchange("DELETE", path_of(*position), {},
             [this, position = *position](const ClientAnswer& answer) {
                 if (delete_answer(answer) == DeleteAnswer::failed) {
                     registry_failed("DELETE of " + name_of(position), answer);
                     return;
                 }
                 book_.note_deleted(position);
                 happen(Event::delete_answered);
             });
}

/// IS-04 v1.2, Behaviour: Registration, Controlled Unregistration: the registry cleans up what
/// belongs to it.
void Registration::delete_node()
{
    forget_requests();
    book_.note_all_deleted();
    book_.assume_node();
    delete_next();
}

void Registration::finish()
{
    const bool left = end_at_ && book_.size() == 0 && !registry_.url.empty();
    if (left)
        log_.info("left registry {}", registry_.url);
    forget_requests();
    book_.note_all_deleted();
    registry_ = {};
    for (auto* due : {&heartbeat_due_, &changes_due_, &pause_until_, &hurry_at_, &end_at_})
        due->reset();
}

} // namespace nmos_instrument::host

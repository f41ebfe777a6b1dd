// SPDX-License-Identifier: Apache-2.0

#include "registration/registration.h"

#include <algorithm>
#include <array>
#include <utility>

#include <nmos_instrument/nmos_instrument.h>
#include <spdlog/spdlog.h>

#include "records/addresses.h"
#include "registration/registry_answer.h"
#include "text/ipv4_address.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

using State = RegistrationState;
using Event = RegistrationEvent;
using Action = RegistrationAction;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

/// IS-04 v1.2, Behaviour: Registration, Heartbeating. It is the time limit of a heartbeat too, so
/// that the next registry hears from the node before it forgets it.
constexpr seconds heartbeat_interval{5};

/// How long a change waits for others of the same resource: they are one POST then.
constexpr milliseconds gathering{750};

/// A search that does not end is begun again.
constexpr seconds search_limit{20};

/// When leaving goes this slowly, the registry has to delete the node's resources by itself.
constexpr milliseconds patience_at_end{1'300};

/// Of registries: DNS-SD may find new ones for ever. More than it finds at once, so that those of one
/// round are remembered in the next.
constexpr std::size_t most_remembered = 1'024;

constexpr std::size_t node_position = 0;
constexpr const char* resource_path = "/resource";

std::string shown_count(std::size_t resources)
{
    return std::to_string(resources) + (resources == 1 ? " resource" : " resources");
}

bool is_loopback(const std::string& address)
{
    const auto ipv4 = ipv4_from_dotted_quad(address);
    return ipv4 ? host::is_loopback(*ipv4) : address == "::1";
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

Registration::Registration(Instrument& instrument, Surroundings surroundings)
    : instrument_(instrument),
      surroundings_(std::move(surroundings)),
      resources_(instrument.shown_resources()),
      choice_(surroundings_.random),
      book_(resources_)
{
    status_.since = now();
}

void Registration::happen(Event event)
{
    const RegistrationStep step = registration_step(state_, event);
    enter(step.next);
    act(step.action);
}

void Registration::enter(State next)
{
    if (text_of(next) != text_of(state_))
        status_.since = now();
    state_ = next;
}

void Registration::act(Action action)
{
    switch (action) {
    case Action::nothing:
        return;
    case Action::search:
        return search();
    case Action::next_registry:
        return next_registry();
    case Action::pause:
        return pause();
    case Action::post_node:
        return post_node();
    case Action::clear:
        return clear();
    case Action::register_resources:
        return register_resources();
    case Action::resume:
        return resume();
    case Action::post_next:
        return post_next();
    case Action::note_changes:
        return note_changes();
    case Action::settle:
        return settle();
    case Action::check:
        return check();
    case Action::heartbeat:
        return heartbeat();
    case Action::leave:
        return leave();
    case Action::delete_next:
        return delete_next();
    case Action::delete_node:
        return delete_node();
    case Action::finish:
        return finish();
    }
}

// What happens from outside.

void Registration::stop()
{
    hurry_at_ = now() + patience_at_end;
    end_at_ = now() + stop_limit;
    happen(Event::stop);
}

void Registration::found(std::vector<Registry> registries)
{
    const bool had_ours = choice_.has(registry_.url);
    choice_.update(std::move(registries));
    if (had_ours && !choice_.has(registry_.url) && state_ == State::registered)
        spdlog::info("registry {} is not announced any more; it is used as long as it answers",
                     registry_.url);
    if (state_ != State::searching && state_ != State::lost)
        return;
    if (std::exchange(awaits_search_, false)) {
        choice_.begin_round();
        next_registry();
        return;
    }
    // In a pause: one that has not been tried yet is welcome at once.
    if (std::optional<Registry> other = choice_.take(instrument_.registration_of(resources_[0]))) {
        registry_ = *std::move(other);
        happen(Event::registry_found);
    }
}

void Registration::changed()
{
    if (!changes_due_)
        changes_due_ = now() + gathering;
}

void Registration::look()
{
    struct Due
    {
        std::optional<TimePoint>& at;
        Event event;
    };
    const std::array all = {
        Due{heartbeat_due_, Event::heartbeat_due},
        Due{changes_due_, Event::resources_changed},
        Due{pause_until_, Event::pause_over},
        Due{hurry_at_, Event::hurry},
        Due{end_at_, Event::time_over},
    };
    for (const Due& one : all) {
        if (!one.at || now() < *one.at)
            continue;
        if (one.event == Event::heartbeat_due)
            heartbeat_was_due_ = one.at;
        one.at.reset();
        happen(one.event);
    }
}

std::optional<Registration::TimePoint> Registration::next_due() const
{
    std::optional<TimePoint> first;
    for (const auto* due : {&heartbeat_due_, &changes_due_, &pause_until_, &hurry_at_, &end_at_}) {
        if (*due && (!first || **due < *first))
            first = *due;
    }
    return first;
}

void Registration::begin_again() noexcept
{
    forget_requests();
    if (state_ == State::stopped)
        return;
    if (state_ == State::leaving) {
        enter(State::stopped);
        return;
    }
    const bool was_there = state_ != State::searching && state_ != State::registering_node;
    enter(was_there ? State::lost : State::searching);
    awaits_search_ = false;
    pause_until_ = now() + seconds(1);
}

// The actions.

void Registration::search()
{
    awaits_search_ = true;
    pause_until_ = now() + search_limit;
    surroundings_.search();
}

void Registration::next_registry()
{
    forget_requests();
    std::optional<Registry> next = choice_.take(instrument_.registration_of(resources_[0]));
    if (!next) {
        happen(Event::no_registry);
        return;
    }
    registry_ = *std::move(next);
    happen(Event::registry_found);
}

void Registration::pause()
{
    registry_ = {};
    const milliseconds pause = retry_pause_.next(surroundings_.random());
    pause_until_ = now() + pause;
    if (!std::exchange(told_of_no_registry_, true))
        spdlog::info("no registry can be used; looking again in {} ms, later at least every 30 s",
                     pause.count());
    surroundings_.has_registry(false);
}

void Registration::post_node()
{
    forget_requests();
    pause_until_.reset();
    if (state_ == State::registering_node)
        began_ = now();
    if (state_ == State::registering_node && told_.count(registry_.url) == 0)
        spdlog::info("registering at {} ({}, priority {})", registry_.url, registry_.origin,
                     registry_.priority);
    warn_of_loopback();
    // Its answer may be lost, and the node be there.
    note_used();
    // It stamps versions, so no other registration is made before it.
    std::string text = instrument_.registration_of_node();
    exchange("POST", resource_path, text,
             [this, text](const ClientAnswer& answer) { node_posted(answer, text); });
}

/// Of a registry that is named, the settings alone tell; whoever reads them warns. What discovery
/// finds is known here only.
void Registration::warn_of_loopback()
{
    const NodeAddress own = instrument_.address();
    if (told_of_loopback_ || registry_.address.empty() || is_loopback(registry_.address) ||
        !is_loopback(own.host))
        return;
    told_of_loopback_ = true;
    spdlog::warn("others hear of {} from {}, but for each of them that is their own machine: "
                 "--listen or --address names another address",
                 base_url(own), registry_.url);
}

void Registration::node_posted(const ClientAnswer& answer, const std::string& text)
{
    const PostAnswer result = post_answer(answer);
    if (result == PostAnswer::failed) {
        registry_failed("POST of the node", answer);
    } else if (result == PostAnswer::refused) {
        ++status_.refusals;
        spdlog::warn("registry {} refuses the node, which is not posted there again unchanged: {}; "
                     "the body was {}",
                     registry_.url, shown_answer(answer), printable(text));
        choice_.note_refusal(registry_.url, text);
        happen(Event::node_refused);
    } else {
        book_.begin(text);
        book_is_of_registry();
        if (state_ == State::registering_node_again && result == PostAnswer::updated)
            spdlog::warn("registry {} has this node again: does another one have the same id?",
                         registry_.url);
        happen(result == PostAnswer::created ? Event::node_created : Event::node_existed);
    }
}

void Registration::clear()
{
    spdlog::info("registry {} still knows this node: what it knows is deleted first",
                 registry_.url);
    exchange("DELETE", path_of(node_position), {},
             [this](const ClientAnswer& answer) { node_deleted(answer); });
}

void Registration::node_deleted(const ClientAnswer& answer)
{
    switch (delete_answer(answer)) {
    case DeleteAnswer::deleted:
        happen(Event::cleared);
        return;
    case DeleteAnswer::failed:
        registry_failed("DELETE of the node", answer);
        return;
    case DeleteAnswer::refused:
        spdlog::warn("registry {} does not delete this node: {}", registry_.url,
                     shown_answer(answer));
        happen(Event::not_cleared);
        return;
    }
}

void Registration::register_resources()
{
    heartbeat_due_ = now() + heartbeat_interval;
    // The node may have changed while its POST was on its way.
    note_changes();
}

void Registration::resume()
{
    began_ = now();
    pause_until_.reset();
    if (!heartbeat_due_)
        heartbeat_due_ = now();
    // Registries of one installation share what they know; but one that was left earlier may still
    // have the node as it was then.
    if (registry_.url != book_of_ && used_.count(registry_.url) != 0)
        book_.post_everything();
    book_is_of_registry();
    look_for_changes();
    book_.begin_round();
    post_next();
}

void Registration::book_is_of_registry()
{
    note_used();
    book_of_ = registry_.url;
}

void Registration::note_used()
{
    if (used_.size() >= most_remembered)
        used_.clear();
    used_.insert(registry_.url);
}

void Registration::note_changes()
{
    look_for_changes();
    post_next();
}

void Registration::look_for_changes()
{
    book_.note_changes(
        [this](const NodeResource& resource) { return instrument_.registration_of(resource); });
}

void Registration::post_next()
{
    if (posting_)
        return;
    if (book_.round_is_over())
        happen(Event::all_posted);
    const std::optional<std::size_t> position = book_.next();
    if (!position)
        return;
    std::string text = *position == node_position
                           ? instrument_.registration_of_node()
                           : instrument_.registration_of(resources_[*position]);
    book_.note_sent(*position, text);
    exchange("POST", resource_path, text,
             [this, position = *position, text](const ClientAnswer& answer) {
                 resource_posted(position, text, answer);
             });
}

void Registration::resource_posted(std::size_t position, const std::string& text,
                                   const ClientAnswer& answer)
{
    const PostAnswer result = post_answer(answer);
    if (result == PostAnswer::failed) {
        registry_failed("POST of " + name_of(position), answer);
        return;
    }
    if (result == PostAnswer::refused) {
        resource_refused(position, text, answer);
        return;
    }
    if (position == node_position && result == PostAnswer::created) {
        book_.begin(text); // the registry had forgotten it, and all that belongs to it
        happen(Event::node_created);
        return;
    }
    book_.note_taken(position);
    happen(Event::post_answered);
}

void Registration::resource_refused(std::size_t position, const std::string& text,
                                    const ClientAnswer& answer)
{
    ++status_.refusals;
    spdlog::warn("registry {} refuses {}, which is not posted again unchanged: {}; the body was {}",
                 registry_.url, name_of(position), shown_answer(answer), printable(text));
    book_.note_refused(position);
    // A registry that has lost the node refuses all that belongs to it; a heartbeat tells. One that
    // never knows it, whatever it answers to POSTs, is not asked without a pause.
    if (!heart_beating_ && (!last_heartbeat_ || now() - *last_heartbeat_ > seconds(1)))
        happen(Event::heartbeat_due);
    happen(Event::post_answered);
}

void Registration::settle()
{
    const auto took = duration_cast<milliseconds>(now() - began_);
    const std::string left_out =
        book_.left_out() == 0 ? "" : ", " + std::to_string(book_.left_out()) + " left out";
    if (lost_since_)
        spdlog::info("back at registry {} after {} ms: {}{}", registry_.url,
                     duration_cast<milliseconds>(now() - *lost_since_).count(),
                     shown_count(book_.size()), left_out);
    else
        spdlog::info("registered at {}: {} in {} ms{}", registry_.url, shown_count(book_.size()),
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
        spdlog::info("asking registry {} ({}, priority {}) whether it knows this node",
                     registry_.url, registry_.origin, registry_.priority);
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
            spdlog::warn("registry {} does not know this node any more", registry_.url);
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
        spdlog::warn("registry {} {}: {}: {}", registry_.url,
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
        spdlog::info("left registry {}", registry_.url);
    forget_requests();
    book_.note_all_deleted();
    registry_ = {};
    for (auto* due : {&heartbeat_due_, &changes_due_, &pause_until_, &hurry_at_, &end_at_})
        due->reset();
}

// Requests.

/// One at a time; heartbeats go beside it.
void Registration::exchange(const char* method, const std::string& path,
                            std::optional<std::string> body, Use use)
{
    posting_ = true;
    ++(body ? status_.posts : status_.deletions);
    const bool deletes = !body;
    send(method, path, std::move(body), [this, deletes, use](const ClientAnswer& answer) {
        posting_ = false;
        if (state_ == State::leaving && !deletes)
            happen(Event::delete_answered);
        else
            use(answer);
    });
}

void Registration::send(const char* method, const std::string& path,
                        std::optional<std::string> body, const Use& use)
{
    ClientRequest request;
    request.method = method;
    request.url = registry_.url + path;
    request.address = registry_.address;
    request.json = std::move(body);
    request.ca_file = surroundings_.ca_file;
    request.time_limit = heartbeat_interval;
    surroundings_.send(std::move(request),
                       [this, use, conversation = conversation_](const ClientAnswer& answer) {
                           if (conversation == conversation_)
                               use(answer);
                       });
}

/// Their answers come too late from now on.
void Registration::forget_requests() noexcept
{
    ++conversation_;
    posting_ = false;
    heart_beating_ = false;
    heartbeat_due_.reset();
    heartbeat_was_due_.reset();
    book_.forget_sent();
}

std::string Registration::path_of(std::size_t position) const
{
    return resource_path + ('/' + name_of(position));
}

/// "receivers/<id>"
std::string Registration::name_of(std::size_t position) const
{
    const NodeResource& resource = resources_[position];
    return std::string(plural_of(resource.type)) + '/' + resource.id;
}

RegistrationStatus Registration::status() const
{
    RegistrationStatus status = status_;
    status.state = text_of(state_);
    status.registered = state_ == State::registered;
    status.registry = registry_.url;
    status.origin = registry_.origin;
    status.next_try = pause_until_;
    return status;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// What happens, what the table says about it, and requests. What is done is in registration_steps.cpp
// and registration_resources.cpp.

#include "registration/registration.h"

#include <array>
#include <utility>

namespace nmos_instrument::host {
namespace {

using State = RegistrationState;
using Event = RegistrationEvent;
using Action = RegistrationAction;
using std::chrono::milliseconds;
using std::chrono::seconds;

/// How long a change waits for others of the same resource: they are one POST then.
constexpr milliseconds gathering{750};

/// When leaving goes this slowly, the registry has to delete the node's resources by itself.
constexpr milliseconds patience_at_end{1'300};

} // namespace

Registration::Registration(Instrument& instrument, Surroundings surroundings, Log log)
    : instrument_(instrument),
      surroundings_(std::move(surroundings)),
      log_(std::move(log)),
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
        log_.info("registry {} is not announced any more; it is used as long as it answers",
                  registry_.url);
    if (state_ != State::searching && state_ != State::lost)
        return;
    if (std::exchange(awaits_search_, false)) {
        choice_.begin_round();
        next_registry();
        return;
    }
    try_next(); // in a pause: one that has not been tried yet is welcome at once
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

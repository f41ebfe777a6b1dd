// SPDX-License-Identifier: Apache-2.0
//
// The steps that tell a registry of the node and of its resources.

#include "registration/registration.h"

#include <utility>

#include "records/addresses.h"
#include "registration/registry_answer.h"
#include "text/ipv4_address.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

using State = RegistrationState;
using Event = RegistrationEvent;
using std::chrono::seconds;
} // namespace

void Registration::post_node()
{
    forget_requests();
    pause_until_.reset();
    if (state_ == State::registering_node)
        began_ = now();
    if (state_ == State::registering_node && told_.count(registry_.url) == 0)
        log_.info("registering at {} ({}, priority {})", registry_.url, registry_.origin,
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
    log_.warning("{}", loopback_warning(own, registry_.url));
}

void Registration::node_posted(const ClientAnswer& answer, const std::string& text)
{
    const PostAnswer result = post_answer(answer);
    if (result == PostAnswer::failed) {
        registry_failed("POST of the node", answer);
    } else if (result == PostAnswer::refused) {
        ++status_.refusals;
        log_.warning("registry {} refuses the node, which is not posted there again unchanged: {}; "
                     "the body was {}",
                     registry_.url, shown_answer(answer), printable(text));
        choice_.note_refusal(registry_.url, text);
        happen(Event::node_refused);
    } else {
        book_.begin(text);
        book_is_of_registry();
        if (state_ == State::registering_node_again && result == PostAnswer::updated)
            log_.warning("registry {} has this node again: does another one have the same id?",
                         registry_.url);
        happen(result == PostAnswer::created ? Event::node_created : Event::node_existed);
    }
}

void Registration::clear()
{
    log_.info("registry {} still knows this node: what it knows is deleted first", registry_.url);
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
        log_.warning("registry {} does not delete this node: {}", registry_.url,
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
    log_.warning("registry {} refuses {}, which is not posted again unchanged: {}; the body was {}",
                 registry_.url, name_of(position), shown_answer(answer), printable(text));
    book_.note_refused(position);
    // A registry that has lost the node refuses all that belongs to it; a heartbeat tells. One that
    // never knows it, whatever it answers to POSTs, is not asked without a pause.
    if (!heart_beating_ && (!last_heartbeat_ || now() - *last_heartbeat_ > seconds(1)))
        happen(Event::heartbeat_due);
    happen(Event::post_answered);
}

} // namespace nmos_instrument::host

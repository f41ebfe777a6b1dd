// SPDX-License-Identifier: Apache-2.0

#include "registration/registration_table.h"

#include <algorithm>
#include <iterator>

namespace nmos_instrument::host {
namespace {

using State = RegistrationState;
using Event = RegistrationEvent;
using Action = RegistrationAction;

struct Row
{
    State state;
    Event event;
    Action action;
    State next;
};

// The clauses are sections of IS-04 v1.2, "Behaviour: Registration".
// clang-format off
constexpr Row table[] = {
    {State::stopped,   Event::start,          Action::search,    State::searching},

    {State::searching, Event::registry_found, Action::post_node, State::registering_node},
    {State::searching, Event::no_registry,    Action::pause,     State::searching},
    {State::searching, Event::pause_over,     Action::search,    State::searching},
    {State::searching, Event::stop,           Action::finish,    State::stopped},

    // "Node Encounters HTTP 200 On First Registration": what is there is deleted first.
    {State::registering_node, Event::node_created,    Action::register_resources, State::registering},
    {State::registering_node, Event::node_existed,    Action::clear,              State::clearing},
    {State::registering_node, Event::node_refused,    Action::next_registry,      State::searching},
    {State::registering_node, Event::registry_failed, Action::next_registry,      State::searching},
    {State::registering_node, Event::stop,            Action::leave,              State::leaving},

    {State::clearing, Event::cleared,         Action::post_node,          State::registering_node_again},
    {State::clearing, Event::not_cleared,     Action::register_resources, State::registering},
    {State::clearing, Event::registry_failed, Action::next_registry,      State::searching},
    {State::clearing, Event::stop,            Action::leave,              State::leaving},

    // It may exist again if another node has the same id; to delete it again would never end.
    {State::registering_node_again, Event::node_created,    Action::register_resources, State::registering},
    {State::registering_node_again, Event::node_existed,    Action::register_resources, State::registering},
    {State::registering_node_again, Event::node_refused,    Action::next_registry,      State::searching},
    {State::registering_node_again, Event::registry_failed, Action::next_registry,      State::searching},
    {State::registering_node_again, Event::stop,            Action::leave,              State::leaving},

    // "Heartbeating" begins with the node's registration. "Node Encounters HTTP 404 On Heartbeat":
    // everything is registered again; likewise if an update of the node turns out to create it.
    {State::registering, Event::post_answered,     Action::post_next,          State::registering},
    {State::registering, Event::all_posted,        Action::settle,             State::registered},
    {State::registering, Event::resources_changed, Action::note_changes,       State::registering},
    {State::registering, Event::heartbeat_due,     Action::heartbeat,          State::registering},
    {State::registering, Event::node_unknown,      Action::post_node,          State::registering_node},
    {State::registering, Event::node_created,      Action::register_resources, State::registering},
    {State::registering, Event::registry_failed,   Action::next_registry,      State::lost},
    {State::registering, Event::stop,              Action::leave,              State::leaving},

    {State::registered, Event::post_answered,     Action::post_next,          State::registered},
    {State::registered, Event::resources_changed, Action::note_changes,       State::registered},
    {State::registered, Event::heartbeat_due,     Action::heartbeat,          State::registered},
    {State::registered, Event::node_unknown,      Action::post_node,          State::registering_node},
    {State::registered, Event::node_created,      Action::register_resources, State::registering},
    {State::registered, Event::registry_failed,   Action::next_registry,      State::lost},
    {State::registered, Event::stop,              Action::leave,              State::leaving},

    // "Node Encounters HTTP 500 (or other 5xx), Inability To Connect, Or A Timeout": the first
    // request to the next registry is a heartbeat.
    {State::lost, Event::registry_found, Action::check,  State::checking},
    {State::lost, Event::no_registry,    Action::pause,  State::lost},
    {State::lost, Event::pause_over,     Action::search, State::lost},
    {State::lost, Event::stop,           Action::finish, State::stopped},

    {State::checking, Event::heartbeat_accepted, Action::resume,        State::registering},
    {State::checking, Event::node_unknown,       Action::post_node,     State::registering_node},
    {State::checking, Event::registry_failed,    Action::next_registry, State::lost},
    {State::checking, Event::stop,               Action::leave,         State::leaving},

    // "Controlled Unregistration"
    {State::leaving, Event::delete_answered, Action::delete_next, State::leaving},
    {State::leaving, Event::all_deleted,     Action::finish,      State::stopped},
    {State::leaving, Event::registry_failed, Action::finish,      State::stopped},
    {State::leaving, Event::hurry,           Action::delete_node, State::leaving},
    {State::leaving, Event::time_over,       Action::finish,      State::stopped},
};
// clang-format on

} // namespace

RegistrationStep registration_step(RegistrationState state, RegistrationEvent event)
{
    const Row* const row = std::find_if(std::begin(table), std::end(table), [=](const Row& one) {
        return one.state == state && one.event == event;
    });
    if (row == std::end(table))
        return {Action::nothing, state};
    return {row->action, row->next};
}

std::string_view text_of(RegistrationState state)
{
    switch (state) {
    case State::stopped:
        return "off";
    case State::searching:
        return "looking for a registry";
    case State::registering_node:
    case State::clearing:
    case State::registering_node_again:
    case State::registering:
        return "registering";
    case State::registered:
        return "registered";
    case State::lost:
        return "lost its registry, looking for one";
    case State::checking:
        return "asking another registry whether it knows the node";
    case State::leaving:
        return "leaving";
    }
    return "";
}

} // namespace nmos_instrument::host

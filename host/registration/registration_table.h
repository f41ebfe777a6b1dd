// SPDX-License-Identifier: Apache-2.0
//
// The rules of registration (IS-04 v1.2, Behaviour: Registration) as a table: what happens in which
// state, what is done about it, and which state follows. No socket, no thread, no clock.

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_TABLE_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_TABLE_H

#include <string_view>

namespace nmos_instrument::host {

enum class RegistrationState
{
    stopped,
    searching,              ///< for a registry; no registry knows this node, as far as we know
    registering_node,       ///< its first POST
    clearing,               ///< what an earlier run left at the registry
    registering_node_again, ///< after that
    registering,            ///< the node is there; its resources follow
    registered,
    lost,     ///< searching again, after the node was at a registry
    checking, ///< by a heartbeat, whether another registry knows the node
    leaving,
};

enum class RegistrationEvent
{
    start,
    registry_found, ///< one that has not been tried in this round
    no_registry,    ///< all have been tried, or there is none
    pause_over,
    node_created,      ///< POST of the node: 201
    node_existed,      ///< POST of the node: 200
    node_refused,      ///< POST of the node: 4xx
    cleared,           ///< DELETE of the node: done, or it was not there
    not_cleared,       ///< DELETE of the node: 4xx
    post_answered,     ///< POST of another resource: taken or refused
    all_posted,        ///< once; what changes all the time may already wait again
    resources_changed, ///< a while ago, so that several changes are one POST
    heartbeat_due,
    heartbeat_accepted,
    node_unknown,    ///< heartbeat: 404
    registry_failed, ///< any request: 5xx, no connection, no answer in time, or not one of a registry
    stop,
    delete_answered,
    all_deleted,
    hurry, ///< leaving takes too long
    time_over,
};

enum class RegistrationAction
{
    nothing,
    search,
    next_registry, ///< ends as registry_found or no_registry
    pause,
    post_node,
    clear,
    register_resources, ///< all of them, with heartbeats from now on
    resume,             ///< with what differs from what was posted before
    post_next,          ///< and all_posted, if everything has been posted once
    note_changes,       ///< and post them
    settle,
    check, ///< heartbeat at once
    heartbeat,
    leave,
    delete_next, ///< ends as all_deleted if there is nothing left
    delete_node, ///< the registry then deletes the rest
    finish,
};

struct RegistrationStep
{
    RegistrationAction action;
    RegistrationState next;

    bool operator==(const RegistrationStep&) const = default;
};

/// What the table says. An event that is not in its row does nothing and changes nothing.
RegistrationStep registration_step(RegistrationState state, RegistrationEvent event);

/// For people: "looking for a registry".
std::string_view text_of(RegistrationState state);

} // namespace nmos_instrument::host

#endif

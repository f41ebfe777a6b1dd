// SPDX-License-Identifier: Apache-2.0
//
// Every state with every event, as IS-04 v1.2 (Behaviour: Registration) wants it.

#include "registration/registration_table.h"

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using State = RegistrationState;
using Event = RegistrationEvent;
using Action = RegistrationAction;

constexpr int event_count = static_cast<int>(Event::time_over) + 1;

struct StateTest
{
    const char* name;
    State state;
    std::map<Event, RegistrationStep> steps;
    std::vector<Event> ignored;
};

std::ostream& operator<<(std::ostream& out, const StateTest& test)
{
    return out << test.name;
}

class RegistrationTable : public testing::TestWithParam<StateTest>
{};

TEST_P(RegistrationTable, HasAStepForEachEvent)
{
    const StateTest& test = GetParam();
    std::set<Event> named;
    for (const auto& [event, step] : test.steps) {
        named.insert(event);
        const RegistrationStep found = registration_step(test.state, event);
        EXPECT_EQ(found.action, step.action) << "event " << static_cast<int>(event);
        EXPECT_EQ(found.next, step.next) << "event " << static_cast<int>(event);
    }
    for (const Event event : test.ignored) {
        EXPECT_TRUE(named.insert(event).second) << "event " << static_cast<int>(event);
        const RegistrationStep found = registration_step(test.state, event);
        EXPECT_EQ(found.action, Action::nothing) << "event " << static_cast<int>(event);
        EXPECT_EQ(found.next, test.state) << "event " << static_cast<int>(event);
    }
    EXPECT_EQ(named.size(), event_count);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(All, RegistrationTable, testing::Values(
    StateTest{"stopped", State::stopped,
        {{Event::start, {Action::search, State::searching}}},
        {Event::registry_found, Event::no_registry, Event::pause_over, Event::node_created, Event::node_existed,
         Event::node_refused, Event::cleared, Event::not_cleared, Event::post_answered, Event::all_posted,
         Event::resources_changed, Event::heartbeat_due, Event::heartbeat_accepted, Event::node_unknown,
         Event::registry_failed, Event::stop, Event::delete_answered, Event::all_deleted, Event::hurry,
         Event::time_over}},
    StateTest{"searching", State::searching,
        {{Event::registry_found, {Action::post_node, State::registering_node}},
         {Event::no_registry, {Action::pause, State::searching}},
         {Event::pause_over, {Action::search, State::searching}},
         {Event::stop, {Action::finish, State::stopped}}},
        {Event::start, Event::node_created, Event::node_existed, Event::node_refused, Event::cleared,
         Event::not_cleared, Event::post_answered, Event::all_posted, Event::resources_changed, Event::heartbeat_due,
         Event::heartbeat_accepted, Event::node_unknown, Event::registry_failed, Event::delete_answered,
         Event::all_deleted, Event::hurry, Event::time_over}},
    StateTest{"registering_node", State::registering_node,
        {{Event::node_created, {Action::register_resources, State::registering}},
         {Event::node_existed, {Action::clear, State::clearing}},
         {Event::node_refused, {Action::next_registry, State::searching}},
         {Event::registry_failed, {Action::next_registry, State::searching}},
         {Event::stop, {Action::leave, State::leaving}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::cleared,
         Event::not_cleared, Event::post_answered, Event::all_posted, Event::resources_changed, Event::heartbeat_due,
         Event::heartbeat_accepted, Event::node_unknown, Event::delete_answered, Event::all_deleted, Event::hurry,
         Event::time_over}},
    StateTest{"clearing", State::clearing,
        {{Event::cleared, {Action::post_node, State::registering_node_again}},
         {Event::not_cleared, {Action::register_resources, State::registering}},
         {Event::registry_failed, {Action::next_registry, State::searching}},
         {Event::stop, {Action::leave, State::leaving}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::node_created,
         Event::node_existed, Event::node_refused, Event::post_answered, Event::all_posted, Event::resources_changed,
         Event::heartbeat_due, Event::heartbeat_accepted, Event::node_unknown, Event::delete_answered,
         Event::all_deleted, Event::hurry, Event::time_over}},
    StateTest{"registering_node_again", State::registering_node_again,
        {{Event::node_created, {Action::register_resources, State::registering}},
         {Event::node_existed, {Action::register_resources, State::registering}},
         {Event::node_refused, {Action::next_registry, State::searching}},
         {Event::registry_failed, {Action::next_registry, State::searching}},
         {Event::stop, {Action::leave, State::leaving}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::cleared,
         Event::not_cleared, Event::post_answered, Event::all_posted, Event::resources_changed, Event::heartbeat_due,
         Event::heartbeat_accepted, Event::node_unknown, Event::delete_answered, Event::all_deleted, Event::hurry,
         Event::time_over}},
    StateTest{"registering", State::registering,
        {{Event::post_answered, {Action::post_next, State::registering}},
         {Event::all_posted, {Action::settle, State::registered}},
         {Event::resources_changed, {Action::note_changes, State::registering}},
         {Event::heartbeat_due, {Action::heartbeat, State::registering}},
         {Event::node_unknown, {Action::post_node, State::registering_node}},
         {Event::node_created, {Action::register_resources, State::registering}},
         {Event::registry_failed, {Action::next_registry, State::lost}},
         {Event::stop, {Action::leave, State::leaving}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::node_existed,
         Event::node_refused, Event::cleared, Event::not_cleared, Event::heartbeat_accepted, Event::delete_answered,
         Event::all_deleted, Event::hurry, Event::time_over}},
    StateTest{"registered", State::registered,
        {{Event::post_answered, {Action::post_next, State::registered}},
         {Event::resources_changed, {Action::note_changes, State::registered}},
         {Event::heartbeat_due, {Action::heartbeat, State::registered}},
         {Event::node_unknown, {Action::post_node, State::registering_node}},
         {Event::node_created, {Action::register_resources, State::registering}},
         {Event::registry_failed, {Action::next_registry, State::lost}},
         {Event::stop, {Action::leave, State::leaving}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::node_existed,
         Event::node_refused, Event::cleared, Event::not_cleared, Event::all_posted, Event::heartbeat_accepted,
         Event::delete_answered, Event::all_deleted, Event::hurry, Event::time_over}},
    StateTest{"lost", State::lost,
        {{Event::registry_found, {Action::check, State::checking}},
         {Event::no_registry, {Action::pause, State::lost}},
         {Event::pause_over, {Action::search, State::lost}},
         {Event::stop, {Action::finish, State::stopped}}},
        {Event::start, Event::node_created, Event::node_existed, Event::node_refused, Event::cleared,
         Event::not_cleared, Event::post_answered, Event::all_posted, Event::resources_changed, Event::heartbeat_due,
         Event::heartbeat_accepted, Event::node_unknown, Event::registry_failed, Event::delete_answered,
         Event::all_deleted, Event::hurry, Event::time_over}},
    StateTest{"checking", State::checking,
        {{Event::heartbeat_accepted, {Action::resume, State::registering}},
         {Event::node_unknown, {Action::post_node, State::registering_node}},
         {Event::registry_failed, {Action::next_registry, State::lost}},
         {Event::stop, {Action::leave, State::leaving}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::node_created,
         Event::node_existed, Event::node_refused, Event::cleared, Event::not_cleared, Event::post_answered,
         Event::all_posted, Event::resources_changed, Event::heartbeat_due, Event::delete_answered,
         Event::all_deleted, Event::hurry, Event::time_over}},
    StateTest{"leaving", State::leaving,
        {{Event::delete_answered, {Action::delete_next, State::leaving}},
         {Event::all_deleted, {Action::finish, State::stopped}},
         {Event::registry_failed, {Action::finish, State::stopped}},
         {Event::hurry, {Action::delete_node, State::leaving}},
         {Event::time_over, {Action::finish, State::stopped}}},
        {Event::start, Event::registry_found, Event::no_registry, Event::pause_over, Event::node_created,
         Event::node_existed, Event::node_refused, Event::cleared, Event::not_cleared, Event::post_answered,
         Event::all_posted, Event::resources_changed, Event::heartbeat_due, Event::heartbeat_accepted,
         Event::node_unknown, Event::stop}}),
    [](const auto& test) { return test.param.name; });
// clang-format on

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// Counts and indexes that a record or a caller has wrong.

#include "nmos_instrument/NodeApi.h"

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/all_node_bodies.h"
#include "support/body_parts.h"
#include "support/example_node.h"
#include "support/example_node_texts.h"
#include "support/node_operations.h"

namespace {

using ::testing::ElementsAre;

// --- Counts --------------------------------------------------------------------------------------

TEST(NodeApiCounts, OfZeroOrLessAreNoEntriesInLists)
{
    for (const int count : no_entries) {
        SCOPED_TRACE(count);
        const auto rec = example_node();
        rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
            rec->receivers_count = count;
        EXPECT_EQ(NodeApi().make_sources(rec.get()), "[]");
        EXPECT_EQ(NodeApi().make_flows(rec.get()), "[]");
        EXPECT_EQ(NodeApi().make_devices(rec.get(), 0, 2, 1), "[]");
        EXPECT_EQ(NodeApi().make_senders(rec.get(), 1), "[]");
        EXPECT_EQ(NodeApi().make_receivers(rec.get(), 0, 2), "[]");
    }
}

TEST(NodeApiCounts, OfZeroOrLessAreNoEntriesInTheNode)
{
    for (const int count : no_entries) {
        SCOPED_TRACE(count);
        const auto rec = example_node();
        rec->versions_count = rec->endpoints_count = rec->clocks_count = rec->interfaces_count =
            count;
        EXPECT_EQ(NodeApi().make_self(rec.get()),
                  R"({"api":{"versions":[]},"caps":{},"clocks":[],)"
                  R"("description":"node/description","hostname":"node/hostname",)"
                  R"("href":"http://192.0.2.10:3212/","id":"node/id","interfaces":[],)"
                  R"("label":"node/label","services":[],"tags":{},"version":"node/version"})");
    }
}

TEST(NodeApiCounts, OfZeroOrLessAreNoEntriesInResources)
{
    for (const int count : no_entries) {
        SCOPED_TRACE(count);
        const auto rec = example_node();
        rec->devices[0].receiver_ids_count = rec->devices[0].sender_ids_count =
            rec->devices[0].controls_count = count;
        EXPECT_EQ(NodeApi().make_deviceid(rec.get(), 0, 0, 2, 1),
                  R"({"controls":[],"description":"device/0/description","id":"device/0/id",)"
                  R"("label":"device/0/label","node_id":"device/0/node","receivers":[],)"
                  R"("senders":[],"tags":{},"type":"device/0/type",)"
                  R"("version":"device/0/version"})");
        rec->senders[0].interface_bindings_count = rec->senders[0].subscription_count = count;
        EXPECT_EQ(NodeApi().make_senderid(rec.get(), 0),
                  R"({"description":"sender/0/description","device_id":"sender/0/device",)"
                  R"("flow_id":"sender/0/flow","id":"sender/0/id","interface_bindings":[],)"
                  R"("label":"sender/0/label","manifest_href":"http://192.0.2.10/sender/0/sdp",)"
                  R"("subscription":{},"tags":{},"transport":"sender/0/transport",)"
                  R"("version":"sender/0/version"})");
        EXPECT_EQ(NodeApi().make_receiverid_target(&rec->senders[0]),
                  R"({"caps":{},"description":"sender/0/description",)"
                  R"("device_id":"sender/0/device","flow_id":"sender/0/flow","id":"sender/0/id",)"
                  R"("interface_bindings":[],"label":"sender/0/label",)"
                  R"("manifest_href":"http://192.0.2.10/sender/0/sdp","subscription":{},)"
                  R"("tags":{},"transport":"sender/0/transport","version":"sender/0/version"})");
        rec->receivers[0].interface_bindings_count = rec->receivers[0].subscription_count =
            rec->receivers[0].media_types_count = count;
        EXPECT_EQ(NodeApi().make_receiverid(rec.get(), 0),
                  R"({"caps":{"media_types":[]},"description":"receiver/0/description",)"
                  R"("device_id":"receiver/0/device","format":"receiver/0/format",)"
                  R"("id":"receiver/0/id","interface_bindings":[],"label":"receiver/0/label",)"
                  R"("subscription":{},"tags":{},"transport":"receiver/0/transport",)"
                  R"("version":"receiver/0/version"})");
    }
}

/// A count field with the capacity of its array.
struct CountField
{
    const char* name;
    int capacity;
    bool last_entry_shows; ///< of endpoints and subscriptions only the first does
    std::int32_t& (*field)(NMOS_IS04_ST& rec);
};

const CountField count_fields[] = {
    {"versions", 16, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.versions_count; }},
    {"endpoints", 26, false, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.endpoints_count; }},
    {"clocks", 6, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.clocks_count; }},
    {"interfaces", 12, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.interfaces_count; }},
    {"sources", 4, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.sources_count; }},
    {"flows", 4, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.flows_count; }},
    {"devices", 4, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices_count; }},
    {"device receivers", 24, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices[3].receiver_ids_count; }},
    {"device senders", 6, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices[3].sender_ids_count; }},
    {"device controls", 8, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices[3].controls_count; }},
    {"senders", 6, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.senders_count; }},
    {"sender bindings", 10, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.senders[5].interface_bindings_count; }},
    {"sender subscriptions", 9, false,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.senders[5].subscription_count; }},
    {"receivers", 24, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers_count; }},
    {"receiver bindings", 10, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers[23].interface_bindings_count; }},
    {"receiver subscriptions", 10, false,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers[23].subscription_count; }},
    {"receiver media types", 12, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers[23].media_types_count; }},
};

TEST(NodeApiCounts, AboveTheCapacityAreTheCapacity)
{
    for (const auto& [name, capacity, last_entry_shows, field] : count_fields) {
        const auto rec = example_node(0x2F);
        // The background is not a number of entries.
        for (const CountField& other : count_fields)
            other.field(*rec) = 0;
        rec->devices_count = 4;
        rec->senders_count = 6;
        rec->receivers_count = 24;

        field(*rec) = capacity;
        const std::vector<std::string> full = all_node_bodies(rec.get());
        field(*rec) = capacity - 1;
        EXPECT_EQ(all_node_bodies(rec.get()) != full, last_entry_shows) << name;
        for (const int count : {capacity + 1, 1000, INT_MAX}) {
            field(*rec) = count;
            EXPECT_EQ(all_node_bodies(rec.get()), full) << name << " " << count;
        }
    }
}

TEST(NodeApiCounts, AboveTheCapacityShowEveryEntryOnce)
{
    const auto rec = example_node();
    rec->sources_count = 5;
    EXPECT_THAT(ids_in(NodeApi().make_sources(rec.get())),
                ElementsAre("source/0/id", "source/1/id", "source/2/id", "source/3/id"));
    rec->flows_count = INT_MAX;
    EXPECT_THAT(ids_in(NodeApi().make_flows(rec.get())),
                ElementsAre("flow/0/id", "flow/1/id", "flow/2/id", "flow/3/id"));
    rec->devices_count = 5;
    EXPECT_THAT(ids_in(NodeApi().make_devices(rec.get(), 0, 0, 0)),
                ElementsAre("device/0/id", "device/1/id", "", ""));
    rec->senders_count = 7;
    EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), 1)),
                ElementsAre("sender/0/id", "sender/1/id", "sender/2/id", "null", "sender/4/id",
                            "sender/5/id"));
    rec->receivers_count = 25;
    EXPECT_EQ(ids_in(NodeApi().make_receivers(rec.get(), 0, 2)).size(), 24u);
}

// --- Indexes -------------------------------------------------------------------------------------

const IndexedOperation indexed_operations[] = {
    {"make_sourceid", 3, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_sourceid(r, i); }},
    {"make_flowid", 3, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_flowid(r, i); }},
    {"make_deviceid", 3,
     [](NMOS_IS04_ST* r, int i) { return NodeApi().make_deviceid(r, i, 0, 0, 0); }},
    {"make_senderid", 5, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_senderid(r, i); }},
    {"make_receiverid", 23, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_receiverid(r, i); }},
};

TEST(NodeApiIndexes, OutsideTheArrayThrowWithOperationIndexAndRange)
{
    expect_indexes_outside_throw(indexed_operations);
}

TEST(NodeApiIndexes, ThatEndTheArrayAreFine)
{
    expect_first_and_last_index(indexed_operations, "{");
}

TEST(NodeApiIndexes, AreNotComparedWithTheCount)
{
    const auto rec = example_node();
    rec->sources_count = rec->flows_count = rec->senders_count = 1;
    rec->devices_count = rec->receivers_count = 0;
    EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 3), example_texts::source_3_escaped);
    EXPECT_EQ(NodeApi().make_flowid(rec.get(), 3), example_texts::flow_3_plain);
    EXPECT_EQ(NodeApi().make_senderid(rec.get(), 5), example_texts::sender_5);
    EXPECT_EQ(NodeApi().make_deviceid(rec.get(), 1, 0, 2, 1), example_texts::device_1);
    EXPECT_EQ(NodeApi().make_receiverid(rec.get(), 23), example_texts::receiver_23);
}

TEST(NodeApiIndexes, DoNotMatterToSourceFlowAndSenderWhenThereIsNone)
{
    const auto rec = example_node();
    rec->sources_count = rec->flows_count = rec->senders_count = 0;
    for (const int index : {INT_MIN, -1, 0, 1, 4, 6, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(NodeApi().make_sourceid(rec.get(), index), "{}");
        EXPECT_EQ(NodeApi().make_flowid(rec.get(), index), "{}");
        EXPECT_EQ(NodeApi().make_senderid(rec.get(), index), "{}");
    }
}

TEST(NodeApiIndexes, GetTheirBodyWhenTheCountIsNegative)
{
    const auto rec = example_node();
    for (const int count : {-1, INT_MIN}) {
        SCOPED_TRACE(count);
        rec->sources_count = rec->flows_count = rec->senders_count = count;
        EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 1), example_texts::source_1_escaped);
        EXPECT_EQ(NodeApi().make_flowid(rec.get(), 1), example_texts::flow_1_plain);
        EXPECT_EQ(NodeApi().make_senderid(rec.get(), 1), example_texts::sender_1);
        EXPECT_THROW(NodeApi().make_sourceid(rec.get(), 4), std::out_of_range);
        EXPECT_THROW(NodeApi().make_flowid(rec.get(), 4), std::out_of_range);
        EXPECT_THROW(NodeApi().make_senderid(rec.get(), 6), std::out_of_range);
    }
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// The bodies of the Node API on random records: the library against picojson trees.

#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/calls.h"
#include "oracle/json_oracle.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/run.h"

namespace {

constexpr NodeOperation node_api[] = {
    {"make_self", 1, [](auto& record, auto&) { return NodeApi().make_self(&record); },
     [](auto& record, auto&) { return oracle::make_self(record); }},
    {"make_sources", 1, [](auto& record, auto&) { return NodeApi().make_sources(&record); },
     [](auto& record, auto&) { return oracle::make_sources(record); }},
    {"make_sourceid", 4,
     [](auto& record, auto& with) { return NodeApi().make_sourceid(&record, with.index); },
     [](auto& record, auto& with) { return oracle::make_sourceid(record, with.index); }},
    {"make_flows", 1, [](auto& record, auto&) { return NodeApi().make_flows(&record); },
     [](auto& record, auto&) { return oracle::make_flows(record); }},
    {"make_flowid", 4,
     [](auto& record, auto& with) { return NodeApi().make_flowid(&record, with.index); },
     [](auto& record, auto& with) { return oracle::make_flowid(record, with.index); }},
    {"make_devices", 1,
     [](auto& record, auto& with) {
         return NodeApi().make_devices(&record, with.receiver_filter, with.audio_group_filter,
                                       with.sender_filter);
     },
     [](auto& record, auto& with) {
         return oracle::make_devices(record, with.receiver_filter, with.audio_group_filter,
                                     with.sender_filter);
     }},
    {"make_deviceid", 4,
     [](auto& record, auto& with) {
         return NodeApi().make_deviceid(&record, with.index, with.receiver_filter,
                                        with.audio_group_filter, with.sender_filter);
     },
     [](auto& record, auto& with) {
         return oracle::make_deviceid(record, with.index, with.receiver_filter,
                                      with.audio_group_filter, with.sender_filter);
     }},
    {"make_senders", 1,
     [](auto& record, auto& with) { return NodeApi().make_senders(&record, with.sender_filter); },
     [](auto& record, auto& with) { return oracle::make_senders(record, with.sender_filter); }},
    {"make_senderid", 6,
     [](auto& record, auto& with) { return NodeApi().make_senderid(&record, with.index); },
     [](auto& record, auto& with) { return oracle::make_senderid(record, with.index); }},
    {"make_receivers", 1,
     [](auto& record, auto& with) {
         return NodeApi().make_receivers(&record, with.receiver_filter, with.audio_group_filter);
     },
     [](auto& record, auto& with) {
         return oracle::make_receivers(record, with.receiver_filter, with.audio_group_filter);
     }},
    {"make_receiverid", 24,
     [](auto& record, auto& with) { return NodeApi().make_receiverid(&record, with.index); },
     [](auto& record, auto& with) { return oracle::make_receiverid(record, with.index); }},
    {"make_receiverid_target", 1,
     [](auto& record, auto&) {
         SENDER_IS04_ST alone = record.senders[0]; // so that a memory checker sees its end
         return NodeApi().make_receiverid_target(&alone);
     },
     [](auto& record, auto&) { return oracle::make_receiverid_target(record.senders[0]); }},
};

TEST(JsonOracle, NodeApi)
{
    compare_node_operations(30, node_api);
}

} // namespace

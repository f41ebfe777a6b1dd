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
    NODE_OPERATION(NodeApi, make_self, 1),
    NODE_OPERATION(NodeApi, make_sources, 1),
    NODE_OPERATION(NodeApi, make_sourceid, 4, with.index),
    NODE_OPERATION(NodeApi, make_flows, 1),
    NODE_OPERATION(NodeApi, make_flowid, 4, with.index),
    NODE_OPERATION(NodeApi, make_devices, 1, with.receiver_filter, with.audio_group_filter,
                   with.sender_filter),
    NODE_OPERATION(NodeApi, make_deviceid, 4, with.index, with.receiver_filter,
                   with.audio_group_filter, with.sender_filter),
    NODE_OPERATION(NodeApi, make_senders, 1, with.sender_filter),
    NODE_OPERATION(NodeApi, make_senderid, 6, with.index),
    NODE_OPERATION(NodeApi, make_receivers, 1, with.receiver_filter, with.audio_group_filter),
    NODE_OPERATION(NodeApi, make_receiverid, 24, with.index),
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

// SPDX-License-Identifier: Apache-2.0
//
// The JSON bodies of the Connection API on random records, and its listings of ids.

#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/calls.h"
#include "oracle/json_oracle.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/run.h"

namespace {

struct ConnectionOperation
{
    const char* name;
    bool of_receivers;
    std::string (*of_library)(NMOS_IS05_ST&, int);
    std::string (*of_oracle)(NMOS_IS05_ST&, int);
};

// clang-format takes the # for a directive.
// clang-format off
#define CONNECTION_OPERATION(operation, of_receivers)                                              \
    {                                                                                              \
        #operation, of_receivers,                                                                  \
        [](auto& state, int index) { return ConnectionApi().operation(&state, index); },           \
        [](auto& state, int index) { return oracle::operation(state, index); }                     \
    }
// clang-format on

constexpr ConnectionOperation connection_api[] = {
    CONNECTION_OPERATION(make_single_senderid_staged, false),
    CONNECTION_OPERATION(make_single_senderid_active, false),
    CONNECTION_OPERATION(make_single_receiverid_staged, true),
    CONNECTION_OPERATION(make_single_receiverid_active, true),
};

#undef CONNECTION_OPERATION

TEST(JsonOracle, ConnectionApi)
{
    for_each_record(25, [&](Random& random) {
        ConnectionState state(random);
        const ConnectionState before = state;
        for (int calls = 0; calls < 6; ++calls) {
            const ConnectionOperation& operation = random.pick(connection_api);
            int index = random_index(random, operation.of_receivers ? state.receivers() : 6);
            if (operation.of_receivers && index >= state.receivers())
                index = 0; // only the host knows how many receivers there are
            expect_same(outcome_of([&] { return operation.of_library(state.record(), index); }),
                        outcome_of([&] { return operation.of_oracle(state.record(), index); }),
                        operation.name, index);
            ASSERT_TRUE(state == before) << operation.name << " wrote into its record";
        }
    });
}

constexpr NodeOperation connection_listings[] = {
    NODE_OPERATION(ConnectionApi, make_single_senders, 1, with.sender_filter != 0),
    NODE_OPERATION(ConnectionApi, make_single_receivers, 1, with.receiver_filter,
                   with.audio_group_filter),
};

TEST(IdListingsOracle, ConnectionApi)
{
    compare_node_operations(10, connection_listings);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// The parameter document on random settings, and the membership rules for every position.

#include <climits>
#include <cstring>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/json_oracle.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/run.h"

namespace {

TEST(JsonOracle, Parameters)
{
    for_each_record(15, [](Random& random) {
        st_param_sys parameters;
        randomise(random, parameters);
        const st_param_sys before = parameters;
        const int ignored = static_cast<int>(random.bits() >> 32);
        EXPECT_TRUE(same_bytes(Nmos().make_param_json(&parameters, ignored),
                               oracle::make_param_json(parameters)))
            << "make_param_json";
        EXPECT_EQ(std::memcmp(&parameters, &before, sizeof before), 0);
    });
}

TEST(MembershipOracle, AllPositions)
{
    constexpr int selectors[] = {0, 1, 2, 3, 4, -1, 256, INT_MIN, INT_MAX};
    const auto compare = [&](int position) {
        for (const int first : selectors) {
            ASSERT_EQ(Nmos().is_insert_node_senders(first, position),
                      oracle::is_insert_node_senders(first, position))
                << first << ", " << position;
            for (const int second : selectors)
                ASSERT_EQ(Nmos().is_insert_node_receivers(first, second, position),
                          oracle::is_insert_node_receivers(first, second, position))
                    << first << ", " << second << ", " << position;
        }
    };
    for (int position = -100; position <= 200; ++position)
        compare(position);
    for (const int position : {INT_MIN, INT_MIN + 21, INT_MIN + 22, INT_MAX - 1, INT_MAX})
        compare(position);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0

#include "http/client_places.h"

#include <chrono>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using std::chrono::seconds;

TEST(ClientPlaces, OneClientGetsAFew)
{
    ClientPlaces places(2, 3);
    EXPECT_TRUE(places.take("a") && places.take("a"));
    EXPECT_FALSE(places.take("a"));
    EXPECT_TRUE(places.take("b"));
    EXPECT_FALSE(places.take("b")) << "all three are taken";
    places.give_back("a");
    EXPECT_TRUE(places.take("b"));
    EXPECT_FALSE(places.take("a"));
}

TEST(NameLookups, OnesLeftBehindKeepTheirPlacesForHalfAMinute)
{
    NameLookups lookups(1, 2);
    const NameLookups::TimePoint begin;
    EXPECT_TRUE(lookups.begin("a", begin));
    lookups.leave_behind("a", begin + seconds(2));
    EXPECT_TRUE(lookups.begin("b", begin + seconds(3)));
    EXPECT_FALSE(lookups.begin("c", begin + seconds(3)));
    EXPECT_FALSE(lookups.begin("a", begin + seconds(31)));
    EXPECT_TRUE(lookups.begin("a", begin + seconds(32)));
    lookups.end("b");
    EXPECT_TRUE(lookups.begin("b", begin + seconds(33)));
}

} // namespace
} // namespace nmos_instrument::host

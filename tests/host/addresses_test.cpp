// SPDX-License-Identifier: Apache-2.0

#include "records/addresses.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(ConfiguredAddress, IsWhatTheSettingsAloneSay)
{
    EXPECT_EQ(configured_address({}), (NodeAddress{"127.0.0.1", 3000}));
    EXPECT_EQ(configured_address({{}, "192.0.2.10", 8080, {}}), (NodeAddress{"192.0.2.10", 8080}));
    EXPECT_EQ(configured_address({"192.0.2.10", {}, 8080, 80}), (NodeAddress{"192.0.2.10", 80}));
    EXPECT_EQ(configured_address({"any", "192.0.2.10", 3000, {}}),
              (NodeAddress{"192.0.2.10", 3000}));
}

// What print shows must not depend on the machine.
TEST(ConfiguredAddress, DoesNotLookAtInterfaces)
{
    EXPECT_EQ(configured_address({"lo", {}, 3000, {}}), NodeAddress());
    EXPECT_EQ(configured_address({"any", {}, 3000, {}}), NodeAddress());
    EXPECT_EQ(configured_address({"0.0.0.0", {}, 3000, {}}), NodeAddress());
    EXPECT_EQ(configured_address({"::1", {}, 3000, {}}), NodeAddress());
    EXPECT_EQ(configured_address({"192.0.2.10", "eth0", 3000, {}}), NodeAddress());
}

TEST(Addresses, AllBeginAlike)
{
    const NodeAddress address{"192.0.2.10", 80};
    EXPECT_EQ(base_url(address), "http://192.0.2.10:80/");
    EXPECT_EQ(connection_api_url(address), "http://192.0.2.10:80/x-nmos/connection/v1.0/");
    EXPECT_EQ(transport_file_url(address, "318de7ae-40bd-562a-b969-8121fc9846f3"),
              "http://192.0.2.10:80/x-nmos/connection/v1.0/single/senders/"
              "318de7ae-40bd-562a-b969-8121fc9846f3/transportfile");
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "records/identity.h"

#include <set>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

namespace nmos_instrument::host {
namespace {

using testing::MatchesRegex;

std::set<std::string> all_ids(const Identity& identity)
{
    std::set<std::string> ids = {identity.node, identity.device};
    ids.insert(identity.sources.begin(), identity.sources.end());
    ids.insert(identity.flows.begin(), identity.flows.end());
    ids.insert(identity.senders.begin(), identity.senders.end());
    ids.insert(identity.receivers.begin(), identity.receivers.end());
    return ids;
}

// RFC 9562, appendix A.4.
TEST(NameBasedUuid, IsThatOfTheStandard)
{
    EXPECT_EQ(name_based_uuid("6ba7b810-9dad-11d1-80b4-00c04fd430c8", "www.example.com"),
              "2ed6657d-e927-568b-95e1-2665a8aea6a2");
}

TEST(NameBasedUuid, RefusesANameSpaceThatIsNone)
{
    EXPECT_THROW(name_based_uuid("www.example.com", "name"), std::invalid_argument);
}

// Made with another implementation of UUID version 5. They must never change: a registry would see
// new instruments.
TEST(Identity, IsTheSameForEver)
{
    const Identity identity("QX0000001");
    EXPECT_EQ(identity.node, "1177556d-baaa-5aa4-a170-8a0f7ed5483c");
    EXPECT_EQ(identity.device, "663a44cc-81c6-5258-bcff-d40438c7c00d");
    EXPECT_EQ(identity.sources[1], "87b08a58-1f8e-5c30-bb8e-66690e5a500c");
    EXPECT_EQ(identity.flows[2], "6ba5f4c5-87f2-574f-9a2e-813904259a34");
    EXPECT_EQ(identity.senders[5], "44db81e8-232a-51c3-baea-b4298a068e2c");
    EXPECT_EQ(identity.receivers[23], "4cc17639-c9c5-53c0-9e59-64a5339d1db7");
}

TEST(Identity, GivesEachResourceItsOwnIdAsNmosWritesIt)
{
    const std::set<std::string> ids = all_ids(Identity("QX0000001"));
    EXPECT_EQ(ids.size(), 1 + 1 + 3 + 3 + 6 + 24);
    for (const std::string& id : ids)
        EXPECT_THAT(id, MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-5[0-9a-f]{3}-[89ab][0-9a-f]{3}-"
                                     "[0-9a-f]{12}"));
}

TEST(Identity, SharesNoIdWithAnotherSerialNumber)
{
    std::set<std::string> ids = all_ids(Identity("1"));
    ids.merge(all_ids(Identity("1/node/0")));
    ids.merge(all_ids(Identity("1/sender")));
    ids.merge(all_ids(Identity("")));
    EXPECT_EQ(ids.size(), 4 * 38);
}

TEST(SdpSessionId, IsThatOfItsSender)
{
    EXPECT_EQ(sdp_session_id("318de7ae-40bd-562a-b969-8121fc9846f3"), 3570764815171147306);
    EXPECT_EQ(sdp_session_id("f0000000-0000-0000-8000-000000000000"), 0x7000'0000'0000'0000);
    EXPECT_THROW(sdp_session_id("none"), std::invalid_argument);
}

} // namespace
} // namespace nmos_instrument::host

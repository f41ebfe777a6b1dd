// SPDX-License-Identifier: Apache-2.0
//
// The listings and the constraints: fixed, hand-indented texts, compared whole.

#include "nmos_instrument/ConnectionApi.h"

#include <climits>
#include <memory>
#include <span>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/set_text.h"
#include "support/varied.h"

namespace {

// --- The class ----------------------------------------------------------------------------------

TEST(ConnectionApiClass, InitReturnsNothingAndChangesNothing)
{
    ConnectionApi api;
    static_assert(std::is_void_v<decltype(api.init())>);
    api.init();
    EXPECT_EQ(api.make_version(), "[\n    \"v1.0/\"\n]\n");
}

// --- Root listings ------------------------------------------------------------------------------

TEST(ConnectionApiRootListings, VersionIsOneEntry)
{
    EXPECT_EQ(ConnectionApi().make_version(), "[\n    \"v1.0/\"\n]\n");
}

TEST(ConnectionApiRootListings, BaseNamesBulkAndSingle)
{
    EXPECT_EQ(ConnectionApi().make_base(nullptr), "[\n"
                                                  "    \"bulk/\",\n"
                                                  "    \"single/\"\n"
                                                  "]\n");
}

TEST(ConnectionApiRootListings, BulkNamesSendersAndReceivers)
{
    EXPECT_EQ(ConnectionApi().make_bulk(nullptr), "[\n"
                                                  "    \"senders/\",\n"
                                                  "    \"receivers/\"\n"
                                                  "]\n");
}

TEST(ConnectionApiRootListings, BulkSendersIsFourBytes)
{
    const std::string text = ConnectionApi().make_bulk_senders(nullptr);
    EXPECT_EQ(text.size(), 4U);
    EXPECT_EQ(text, "[\n]\n");
}

TEST(ConnectionApiRootListings, BulkReceiversIsFourBytes)
{
    const std::string text = ConnectionApi().make_bulk_receivers(nullptr);
    EXPECT_EQ(text.size(), 4U);
    EXPECT_EQ(text, "[\n]\n");
}

TEST(ConnectionApiRootListings, SingleNamesSendersAndReceivers)
{
    EXPECT_EQ(ConnectionApi().make_single(nullptr), "[\n"
                                                    "    \"senders/\",\n"
                                                    "    \"receivers/\"\n"
                                                    "]\n");
}

TEST(ConnectionApiRootListings, SenderHasATransportFile)
{
    EXPECT_EQ(ConnectionApi().make_single_senderid(nullptr), "[\n"
                                                             "    \"constraints/\",\n"
                                                             "    \"staged/\",\n"
                                                             "    \"active/\",\n"
                                                             "    \"transportfile/\"\n"
                                                             "]\n");
}

TEST(ConnectionApiRootListings, ReceiverHasNoTransportFile)
{
    EXPECT_EQ(ConnectionApi().make_single_receiverid(nullptr), "[\n"
                                                               "    \"constraints/\",\n"
                                                               "    \"staged/\",\n"
                                                               "    \"active/\"\n"
                                                               "]\n");
}

TEST(ConnectionApiRootListings, DoNotDependOnTheRecord)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    ConnectionApi api;
    EXPECT_EQ(api.make_base(state.get()), "[\n    \"bulk/\",\n    \"single/\"\n]\n");
    EXPECT_EQ(api.make_bulk(state.get()), "[\n    \"senders/\",\n    \"receivers/\"\n]\n");
    EXPECT_EQ(api.make_bulk_senders(state.get()), "[\n]\n");
    EXPECT_EQ(api.make_bulk_receivers(state.get()), "[\n]\n");
    EXPECT_EQ(api.make_single(state.get()), "[\n    \"senders/\",\n    \"receivers/\"\n]\n");
    EXPECT_EQ(api.make_single_senderid(state.get()),
              "[\n    \"constraints/\",\n    \"staged/\",\n    \"active/\",\n"
              "    \"transportfile/\"\n]\n");
    EXPECT_EQ(api.make_single_receiverid(state.get()),
              "[\n    \"constraints/\",\n    \"staged/\",\n    \"active/\"\n]\n");
}

// --- Listings of ids ----------------------------------------------------------------------------

/// Senders S0 to S5 and receivers R0 to R23, all of them counted.
std::unique_ptr<NMOS_IS04_ST> full_node()
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    node->senders_count = 6;
    for (int i = 0; i < 6; ++i)
        set_text(node->senders[i].id, "S" + std::to_string(i));
    node->receivers_count = 24;
    for (int i = 0; i < 24; ++i)
        set_text(node->receivers[i].id, "R" + std::to_string(i));
    return node;
}

struct SenderListing
{
    int count;
    bool all;
    const char* text;
};

TEST(ConnectionApiSenderListing, FollowsCountAndSelector)
{
    const SenderListing rows[] = {
        {INT_MIN, true, "[\n]\n"},
        {-1, true, "[\n]\n"},
        {-1, false, "[\n]\n"},
        {0, true, "[\n]\n"},
        {0, false, "[\n]\n"},
        {1, true, "[\n  \"S0/\"\n]\n"},
        {1, false, "[\n  \"S0/\"\n]\n"},
        {2, true, "[\n  \"S0/\",\n  \"S1/\"\n]\n"},
        {2, false, "[\n  \"S0/\",\n]\n"},
        {3, true, "[\n  \"S0/\",\n  \"S1/\",\n  \"S2/\"\n]\n"},
        {3, false, "[\n  \"S0/\",\n]\n"},
        {4, true, "[\n  \"S0/\",\n  \"S1/\",\n  \"S2/\",\n  \"S3/\"\n]\n"},
        {4, false, "[\n  \"S0/\",\n]\n"},
        {5, true, "[\n  \"S0/\",\n  \"S1/\",\n  \"S2/\",\n  \"S3/\",\n  \"S4/\"\n]\n"},
        {5, false, "[\n  \"S0/\",\n  \"S4/\"\n]\n"},
        {6, true, "[\n  \"S0/\",\n  \"S1/\",\n  \"S2/\",\n  \"S3/\",\n  \"S4/\",\n  \"S5/\"\n]\n"},
        {6, false, "[\n  \"S0/\",\n  \"S4/\",\n  \"S5/\"\n]\n"},
        // A count above the capacity is the capacity, also where it decides about the comma.
        {7, true, "[\n  \"S0/\",\n  \"S1/\",\n  \"S2/\",\n  \"S3/\",\n  \"S4/\",\n  \"S5/\"\n]\n"},
        {7, false, "[\n  \"S0/\",\n  \"S4/\",\n  \"S5/\"\n]\n"},
        {INT_MAX, true,
         "[\n  \"S0/\",\n  \"S1/\",\n  \"S2/\",\n  \"S3/\",\n  \"S4/\",\n  \"S5/\"\n]\n"},
        {INT_MAX, false, "[\n  \"S0/\",\n  \"S4/\",\n  \"S5/\"\n]\n"},
    };
    const auto node = full_node();
    for (const SenderListing& row : rows) {
        node->senders_count = row.count;
        EXPECT_EQ(ConnectionApi().make_single_senders(node.get(), row.all), row.text)
            << "count " << row.count << ", all " << row.all;
    }
}

TEST(ConnectionApiSenderListing, KeepsTheCommaWhenTheLastSendersAreHidden)
{
    const auto node = full_node();
    node->senders_count = 4;
    set_text(node->senders[0].id, "2f9c8a10-4a70-5a45-9f9a-7b2f0f1b0001");
    EXPECT_EQ(ConnectionApi().make_single_senders(node.get(), false),
              "[\n  \"2f9c8a10-4a70-5a45-9f9a-7b2f0f1b0001/\",\n]\n");
}

TEST(ConnectionApiSenderListing, InsertsIdsAsTheyAre)
{
    const auto node = full_node();
    node->senders_count = 3;
    set_text(node->senders[0].id, "");
    set_text(node->senders[1].id, "a\"b\\c/d\n\xC3\xA9");
    fill_whole(node->senders[2].id, 'x');
    EXPECT_EQ(ConnectionApi().make_single_senders(node.get(), true),
              "[\n"
              "  \"/\",\n"
              "  \"a\"b\\c/d\n\xC3\xA9/\",\n"
              "  \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx/\"\n"
              "]\n");
}

struct ReceiverListing
{
    int count;
    int restricted;
    int audio_mode;
    const char* text;
};

void expect_listings(std::span<const ReceiverListing> rows)
{
    const auto node = full_node();
    for (const ReceiverListing& row : rows) {
        node->receivers_count = row.count;
        EXPECT_EQ(ConnectionApi().make_single_receivers(node.get(), row.restricted, row.audio_mode),
                  row.text)
            << "count " << row.count << ", restricted " << row.restricted << ", audio_mode "
            << row.audio_mode;
    }
}

constexpr const char* all_24_receivers =
    "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R5/\",\n"
    "  \"R6/\",\n  \"R7/\",\n  \"R8/\",\n  \"R9/\",\n  \"R10/\",\n  \"R11/\",\n"
    "  \"R12/\",\n  \"R13/\",\n  \"R14/\",\n  \"R15/\",\n  \"R16/\",\n  \"R17/\",\n"
    "  \"R18/\",\n  \"R19/\",\n  \"R20/\",\n  \"R21/\",\n  \"R22/\",\n  \"R23/\"\n]\n";

constexpr const char* receivers_of_group_1 =
    "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R8/\",\n"
    "  \"R12/\",\n  \"R16/\",\n  \"R20/\",\n  \"R21/\",\n  \"R22/\",\n  \"R23/\"\n]\n";

constexpr const char* receivers_of_groups_1_and_2 =
    "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R5/\",\n"
    "  \"R8/\",\n  \"R9/\",\n  \"R12/\",\n  \"R13/\",\n  \"R16/\",\n  \"R17/\",\n"
    "  \"R20/\",\n  \"R21/\",\n  \"R22/\",\n  \"R23/\"\n]\n";

constexpr const char* four_receivers_and_a_comma =
    "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n]\n";

TEST(ConnectionApiReceiverListing, FollowsTheSelectors)
{
    const ReceiverListing rows[] = {
        {24, 0, 0, receivers_of_group_1},
        {24, 0, 1, receivers_of_groups_1_and_2},
        {24, 0, 2, all_24_receivers},
        {24, 0, 3, all_24_receivers},
        {24, 0, -1, all_24_receivers},
        {24, 0, INT_MAX, all_24_receivers},
        {24, 0, INT_MIN, all_24_receivers},
        {24, 1, 0, four_receivers_and_a_comma},
        {24, 1, 1, four_receivers_and_a_comma},
        {24, 1, 2, four_receivers_and_a_comma},
        {24, 2, 2, four_receivers_and_a_comma},
        {24, -1, 2, four_receivers_and_a_comma},
        {24, 256, 2, four_receivers_and_a_comma},
        {24, INT_MIN, 2, four_receivers_and_a_comma},
        {25, 0, 0, receivers_of_group_1},
        {25, 0, 2, all_24_receivers},
        {25, 1, 0, four_receivers_and_a_comma},
        {INT_MAX, 0, 1, receivers_of_groups_1_and_2},
        {INT_MAX, 0, 2, all_24_receivers},
        {INT_MAX, 1, 0, four_receivers_and_a_comma},
    };
    expect_listings(rows);
}

TEST(ConnectionApiReceiverListing, FollowsTheCount)
{
    const ReceiverListing rows[] = {
        {INT_MIN, 0, 2, "[\n]\n"},
        {-1, 0, 2, "[\n]\n"},
        {-1, 1, 0, "[\n]\n"},
        {0, 0, 0, "[\n]\n"},
        {0, 1, 0, "[\n]\n"},
        {1, 0, 0, "[\n  \"R0/\"\n]\n"},
        {1, 1, 0, "[\n  \"R0/\"\n]\n"},
        {4, 0, 0, "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\"\n]\n"},
        {4, 1, 0, "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\"\n]\n"},
        {5, 0, 0, "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\"\n]\n"},
        {5, 1, 0, four_receivers_and_a_comma},
        // The last entry counted is hidden: the line before it keeps its comma.
        {6, 0, 0, "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n]\n"},
        {6, 0, 1, "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R5/\"\n]\n"},
        {7, 0, 1, "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R5/\",\n]\n"},
        {7, 0, 2,
         "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R5/\",\n"
         "  \"R6/\"\n]\n"},
        {20, 1, 2, four_receivers_and_a_comma},
        {20, 0, 0,
         "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R8/\",\n"
         "  \"R12/\",\n  \"R16/\",\n]\n"},
        {21, 0, 0,
         "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R8/\",\n"
         "  \"R12/\",\n  \"R16/\",\n  \"R20/\"\n]\n"},
        {23, 0, 1,
         "[\n  \"R0/\",\n  \"R1/\",\n  \"R2/\",\n  \"R3/\",\n  \"R4/\",\n  \"R5/\",\n"
         "  \"R8/\",\n  \"R9/\",\n  \"R12/\",\n  \"R13/\",\n  \"R16/\",\n  \"R17/\",\n"
         "  \"R20/\",\n  \"R21/\",\n  \"R22/\"\n]\n"},
    };
    expect_listings(rows);
}

TEST(ConnectionApiReceiverListing, InsertsIdsAsTheyAre)
{
    const auto node = full_node();
    node->receivers_count = 3;
    set_text(node->receivers[0].id, "");
    set_text(node->receivers[1].id, "a\"b\\c/d\n\xC3\xA9");
    fill_whole(node->receivers[2].id, 'x');
    EXPECT_EQ(ConnectionApi().make_single_receivers(node.get(), 0, 0),
              "[\n"
              "  \"/\",\n"
              "  \"a\"b\\c/d\n\xC3\xA9/\",\n"
              "  \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx/\"\n"
              "]\n");
}

// --- Constraints --------------------------------------------------------------------------------

const std::string sender_constraints = "[\n"
                                       "  {\n"
                                       "    \"destination_port\": {},\n"
                                       "    \"destination_ip\": {},\n"
                                       "    \"rtp_enabled\": {},\n"
                                       "    \"source_ip\": {\n"
                                       "      \"enum\": [\n"
                                       "        \"192.168.10.1\"\n"
                                       "       ]\n"
                                       "     },\n"
                                       "    \"source_port\": {}\n"
                                       "  },\n"
                                       "  {\n"
                                       "    \"destination_port\": {},\n"
                                       "    \"destination_ip\": {},\n"
                                       "    \"rtp_enabled\": {},\n"
                                       "    \"source_ip\": {\n"
                                       "      \"enum\": [\n"
                                       "        \"192.168.20.1\"\n"
                                       "       ]\n"
                                       "     },\n"
                                       "    \"source_port\": {}\n"
                                       "  }\n"
                                       "]\n";

TEST(ConnectionApiSenderConstraints, HoldOneSourceAddressPerLeg)
{
    std::string leg1 = "192.168.10.1";
    std::string leg2 = "192.168.20.1";
    EXPECT_EQ(ConnectionApi().make_single_senderid_constraints(nullptr, 0, &leg1, &leg2),
              sender_constraints);
    EXPECT_EQ(leg1, "192.168.10.1");
    EXPECT_EQ(leg2, "192.168.20.1");
}

TEST(ConnectionApiSenderConstraints, InsertEmptyAndOddTextsAsTheyAre)
{
    std::string leg1;
    std::string leg2 = "a\"b\\c/d\n";
    EXPECT_EQ(ConnectionApi().make_single_senderid_constraints(nullptr, 5, &leg1, &leg2),
              varied(sender_constraints, {{"192.168.10.1", ""}, {"192.168.20.1", "a\"b\\c/d\n"}}));
}

const std::string receiver_constraints = "[\n"
                                         "  {\n"
                                         "    \"destination_port\": {},\n"
                                         "    \"interface_ip\": {\n"
                                         "      \"enum\": [\n"
                                         "        \"192.168.10.1\",\n"
                                         "        \"auto\"\n"
                                         "       ]\n"
                                         "     },\n"
                                         "    \"multicast_ip\": {},\n"
                                         "    \"rtp_enabled\": {},\n"
                                         "    \"source_ip\": {}\n"
                                         "  },\n"
                                         "  {\n"
                                         "    \"destination_port\": {},\n"
                                         "    \"interface_ip\": {\n"
                                         "      \"enum\": [\n"
                                         "        \"192.168.20.1\",\n"
                                         "        \"auto\"\n"
                                         "       ]\n"
                                         "     },\n"
                                         "    \"multicast_ip\": {},\n"
                                         "    \"rtp_enabled\": {},\n"
                                         "    \"source_ip\": {}\n"
                                         "  }\n"
                                         "]\n";

TEST(ConnectionApiReceiverConstraints, HoldOneInterfaceAddressPerLegAndAuto)
{
    std::string leg1 = "192.168.10.1";
    std::string leg2 = "192.168.20.1";
    EXPECT_EQ(ConnectionApi().make_single_receiverid_constraints(nullptr, 0, &leg1, &leg2),
              receiver_constraints);
    EXPECT_EQ(leg1, "192.168.10.1");
    EXPECT_EQ(leg2, "192.168.20.1");
}

TEST(ConnectionApiReceiverConstraints, InsertEmptyAndOddTextsAsTheyAre)
{
    std::string leg1 = "a\"b\\c/d\n";
    std::string leg2;
    EXPECT_EQ(
        ConnectionApi().make_single_receiverid_constraints(nullptr, 23, &leg1, &leg2),
        varied(receiver_constraints, {{"192.168.10.1", "a\"b\\c/d\n"}, {"192.168.20.1", ""}}));
}

TEST(ConnectionApiConstraints, ReadNeitherRecordNorIndex)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    std::string leg1 = "10.0.0.1";
    std::string leg2 = "10.0.1.1";
    ConnectionApi api;
    const std::string sender = api.make_single_senderid_constraints(nullptr, 0, &leg1, &leg2);
    const std::string receiver = api.make_single_receiverid_constraints(nullptr, 0, &leg1, &leg2);
    for (const int index : {INT_MIN, -1, 0, 5, 6, 24, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(api.make_single_senderid_constraints(nullptr, index, &leg1, &leg2), sender);
        EXPECT_EQ(api.make_single_senderid_constraints(state.get(), index, &leg1, &leg2), sender);
        EXPECT_EQ(api.make_single_receiverid_constraints(nullptr, index, &leg1, &leg2), receiver);
        EXPECT_EQ(api.make_single_receiverid_constraints(state.get(), index, &leg1, &leg2),
                  receiver);
    }
}

TEST(ConnectionApiConstraints, MayHaveOneTextForBothLegs)
{
    std::string address = "A";
    EXPECT_EQ(ConnectionApi().make_single_senderid_constraints(nullptr, 0, &address, &address),
              varied(sender_constraints, {{"192.168.10.1", "A"}, {"192.168.20.1", "A"}}));
    EXPECT_EQ(ConnectionApi().make_single_receiverid_constraints(nullptr, 0, &address, &address),
              varied(receiver_constraints, {{"192.168.10.1", "A"}, {"192.168.20.1", "A"}}));
}

} // namespace

// SPDX-License-Identifier: Apache-2.0

#include "label_tables.h"

#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

TEST(LabelTables, ProtocolsAreHttpAndHttps)
{
    EXPECT_THAT(str_protocol, ElementsAre("http", "https"));
}

TEST(LabelTables, LabelsAreTheInstrumentsInTheirOrder)
{
    const char* const labels[] = {
        "QX3100/QX3300",
        "Source for Video",
        "Source for Audio",
        "Source for ANCILLARY",
        "EN_Source_4",
        "Flow for Video",
        "Flow for Audio",
        "Flow for ANCILLARY",
        "EN_Flow_4",
        "QX3100-OPT21 IP OPTION",
        "EN_Device_2",
        "EN_Device_3",
        "EN_Device_4",
        "IP Stream 1 Video Sender",
        "IP Stream 2 Video Sender",
        "IP Stream 3 Video Sender",
        "IP Stream 4 Video Sender",
        "IP Stream 1 for Video",
        "IP Stream 2 for Video",
        "IP Stream 3 for Video",
        "IP Stream 4 for Video",
        "IP Stream 1 G1 for Audio",
        "IP Stream 1 G2 for Audio",
        "IP Stream 1 G3 for Audio",
        "IP Stream 1 G4 for Audio",
        "IP Stream 2 G1 for Audio",
        "IP Stream 2 G2 for Audio",
        "IP Stream 2 G3 for Audio",
        "IP Stream 2 G4 for Audio",
        "IP Stream 3 G1 for Audio",
        "IP Stream 3 G2 for Audio",
        "IP Stream 3 G3 for Audio",
        "IP Stream 3 G4 for Audio",
        "IP Stream 4 G1 for Audio",
        "IP Stream 4 G2 for Audio",
        "IP Stream 4 G3 for Audio",
        "IP Stream 4 G4 for Audio",
        "IP Stream 1 for ANCILLARY",
        "IP Stream 2 for ANCILLARY",
        "IP Stream 3 for ANCILLARY",
        "IP Stream 4 for ANCILLARY",
        "IP_TEST12",
        "IP_TEST13",
        "IP_TEST14",
        "IP Stream 1 Audio Sender",
        "IP Stream 1 ANCILLARY Sender",
    };
    static_assert(std::size(labels) == 46);
    EXPECT_THAT(uuid_label_list, ElementsAreArray(labels));
}

TEST(LabelTables, PositionsAreThoseOfTheMembershipRules)
{
    ASSERT_EQ(std::size(uuid_label_list), 46u);
    EXPECT_EQ(uuid_label_list[13], "IP Stream 1 Video Sender");
    EXPECT_EQ(uuid_label_list[16], "IP Stream 4 Video Sender");
    EXPECT_EQ(uuid_label_list[17], "IP Stream 1 for Video");
    EXPECT_EQ(uuid_label_list[20], "IP Stream 4 for Video");
    EXPECT_EQ(uuid_label_list[21], "IP Stream 1 G1 for Audio");
    EXPECT_EQ(uuid_label_list[36], "IP Stream 4 G4 for Audio");
    EXPECT_EQ(uuid_label_list[37], "IP Stream 1 for ANCILLARY");
    EXPECT_EQ(uuid_label_list[40], "IP Stream 4 for ANCILLARY");
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// Which senders and receivers the selectors let through, in lists and in devices.

#include "nmos_instrument/NodeApi.h"

#include <climits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/body_parts.h"
#include "support/example_node.h"
#include "support/example_node_texts.h"
#include "support/set_text.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

const std::vector<std::string> every_receiver = {"0",  "1",  "2",  "3",  "4",  "5",  "6",  "7",
                                                 "8",  "9",  "10", "11", "12", "13", "14", "15",
                                                 "16", "17", "18", "19", "20", "21", "22", "23"};
const std::vector<std::string> video_and_ancillary_and_g1 = {"0",  "1",  "2",  "3",  "4",  "8",
                                                             "12", "16", "20", "21", "22", "23"};
const std::vector<std::string> video_and_ancillary_and_g1_g2 = {
    "0", "1", "2", "3", "4", "5", "8", "9", "12", "13", "16", "17", "20", "21", "22", "23"};
const std::vector<std::string> video_alone = {"0", "1", "2", "3"};

struct ReceiverSelection
{
    int receiver_filter;
    int audio_group_filter;
    const std::vector<std::string>& shown;
};

const ReceiverSelection receiver_selections[] = {
    {0, 0, video_and_ancillary_and_g1},
    {0, 1, video_and_ancillary_and_g1_g2},
    {0, 2, every_receiver},
    {0, 3, every_receiver},
    {0, -1, every_receiver},
    {0, INT_MAX, every_receiver},
    {0, INT_MIN, every_receiver},
    {1, 0, video_alone},
    {1, 1, video_alone},
    {1, 2, video_alone},
    {2, 2, video_alone},
    {-1, 2, video_alone},
    {INT_MIN, 0, video_alone},
    {INT_MAX, 3, video_alone},
};

TEST(NodeApiReceivers, ShowWhatTheSelectorsLetThrough)
{
    const auto rec = empty_node();
    rec->receivers_count = 24;
    for (int i = 0; i < 24; ++i)
        set_text(rec->receivers[i].id, std::to_string(i));
    for (const auto& [receiver_filter, audio_group_filter, shown] : receiver_selections)
        EXPECT_THAT(
            ids_in(NodeApi().make_receivers(rec.get(), receiver_filter, audio_group_filter)),
            ElementsAreArray(shown))
            << receiver_filter << ' ' << audio_group_filter;
}

TEST(NodeApiReceivers, ShowOnlyValidOnes)
{
    const auto rec = empty_node();
    for (int i = 0; i < 24; ++i)
        set_text(rec->receivers[i].id, std::to_string(i));
    rec->receivers_count = 9;
    EXPECT_THAT(ids_in(NodeApi().make_receivers(rec.get(), 0, 0)),
                ElementsAre("0", "1", "2", "3", "4", "8"));
    rec->receivers_count = 2;
    EXPECT_THAT(ids_in(NodeApi().make_receivers(rec.get(), 1, 0)), ElementsAre("0", "1"));
}

TEST(NodeApiReceivers, AreBuiltByIdWhateverTheSelectorsHide)
{
    const auto rec = empty_node();
    set_text(rec->receivers[7].id, "stream 1 G4");
    EXPECT_THAT(ids_in(NodeApi().make_receiverid(rec.get(), 7)), ElementsAre("stream 1 G4"));
}

TEST(NodeApiSenders, ShowWhatTheSelectorLetsThrough)
{
    const auto rec = empty_node();
    rec->senders_count = 6;
    for (int i = 0; i < 6; ++i)
        set_text(rec->senders[i].id, std::to_string(i));
    EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), 0)), ElementsAre("0", "4", "5"));
    for (const int all : {1, 2, -1, INT_MIN, INT_MAX})
        EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), all)),
                    ElementsAre("0", "1", "2", "3", "4", "5"))
            << all;
    rec->senders_count = 4;
    EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), 0)), ElementsAre("0"));
}

TEST(NodeApiSenders, BodiesOfTheShownOnesAreWhole)
{
    using namespace example_texts;
    const auto rec = example_node();
    EXPECT_EQ(NodeApi().make_senders(rec.get(), 0),
              "[" + sender_0 + "," + sender_4 + "," + sender_5 + "]");
}

/// The ids in one list of a device body.
std::vector<std::string> list_in(const std::string& body, const std::string& key)
{
    const std::string begin = "\"" + key + "\":[";
    const std::size_t at = body.find(begin) + begin.size();
    std::vector<std::string> texts;
    std::string list = body.substr(at, body.find(']', at) - at);
    for (std::size_t quote = 0; quote < list.size();) {
        const std::size_t end = list.find('"', quote + 1);
        texts.push_back(list.substr(quote + 1, end - quote - 1));
        quote = end + 2;
    }
    return texts;
}

TEST(NodeApiDevices, ListTheReceiverIdsThatTheSelectorsLetThrough)
{
    const auto rec = empty_node();
    rec->devices_count = 1;
    rec->devices[0].receiver_ids_count = 24;
    for (int i = 0; i < 24; ++i)
        set_text(rec->devices[0].receivers[i], std::to_string(i));
    for (const auto& [receiver_filter, audio_group_filter, shown] : receiver_selections) {
        const std::string body =
            NodeApi().make_deviceid(rec.get(), 0, receiver_filter, audio_group_filter, 0);
        EXPECT_THAT(list_in(body, "receivers"), ElementsAreArray(shown))
            << receiver_filter << ' ' << audio_group_filter;
        EXPECT_EQ(NodeApi().make_devices(rec.get(), receiver_filter, audio_group_filter, 0),
                  "[" + body + "]");
    }
}

TEST(NodeApiDevices, ListTheSenderIdsThatTheSelectorLetsThrough)
{
    const auto rec = empty_node();
    rec->devices_count = 1;
    rec->devices[0].sender_ids_count = 6;
    for (int i = 0; i < 6; ++i)
        set_text(rec->devices[0].senders[i], std::to_string(i));
    EXPECT_THAT(list_in(NodeApi().make_deviceid(rec.get(), 0, 0, 0, 0), "senders"),
                ElementsAre("0", "4", "5"));
    EXPECT_THAT(list_in(NodeApi().make_devices(rec.get(), 0, 0, 0), "senders"),
                ElementsAre("0", "4", "5"));
    for (const int all : {1, 2, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(all);
        EXPECT_THAT(list_in(NodeApi().make_deviceid(rec.get(), 0, 0, 0, all), "senders"),
                    ElementsAre("0", "1", "2", "3", "4", "5"));
        EXPECT_THAT(list_in(NodeApi().make_devices(rec.get(), 0, 0, all), "senders"),
                    ElementsAre("0", "1", "2", "3", "4", "5"));
    }
}

TEST(NodeApiDevices, HaveEmptyListsWhenNothingIsLetThrough)
{
    const auto rec = empty_node();
    // Slots 1 to 3 are hidden, slot 0 is not.
    rec->devices[0].sender_ids_count = 4;
    EXPECT_THAT(NodeApi().make_deviceid(rec.get(), 0, 1, 0, 0),
                HasSubstr(R"("receivers":[],"senders":[""],)"));
    rec->devices[0].sender_ids_count = 0;
    EXPECT_THAT(NodeApi().make_deviceid(rec.get(), 0, 1, 0, 0),
                HasSubstr(R"("receivers":[],"senders":[],)"));
}

} // namespace

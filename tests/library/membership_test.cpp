// SPDX-License-Identifier: Apache-2.0
//
// Which senders and receivers the node shows, for every position in the label table and beyond.

#include <climits>
#include <set>

#include <gtest/gtest.h>

#include "nmos_instrument/Nmos.h"

namespace {

// Positions as the label table numbers them.
const std::set<int> video_senders_of_streams_2_to_4 = {14, 15, 16};

const std::set<int> groups_g2_to_g4 = {22, 23, 24,  // stream 1
                                       26, 27, 28,  // stream 2
                                       30, 31, 32,  // stream 3
                                       34, 35, 36}; // stream 4

const std::set<int> groups_g3_and_g4 = {23, 24, 27, 28, 31, 32, 35, 36};

const std::set<int> audio_and_ancillary = {21, 22, 23, 24, 25, 26, 27, 28, 29, 30,
                                           31, 32, 33, 34, 35, 36, 37, 38, 39, 40};

constexpr int first_position = -1;
constexpr int last_position = 50;

constexpr int far_positions[] = {
    INT_MIN, INT_MIN + 1, INT_MIN + 21, INT_MIN + 22, INT_MIN + 23, -1000, -42,         -11,
    -10,     -9,          54,           55,           86,           1000,  INT_MAX - 1, INT_MAX};

TEST(SenderMembership, ShowsAllWhenAllIsNotZero)
{
    Nmos nmos;
    for (const int all : {1, 2, -1, INT_MIN, INT_MAX}) {
        for (int position = first_position; position <= last_position; ++position)
            EXPECT_EQ(nmos.is_insert_node_senders(all, position), 1) << all << ' ' << position;
        for (const int position : far_positions)
            EXPECT_EQ(nmos.is_insert_node_senders(all, position), 1) << all << ' ' << position;
    }
}

TEST(SenderMembership, HidesTheVideoSendersOfStreams2To4Otherwise)
{
    Nmos nmos;
    for (int position = first_position; position <= last_position; ++position)
        EXPECT_EQ(nmos.is_insert_node_senders(0, position),
                  video_senders_of_streams_2_to_4.contains(position) ? 0 : 1)
            << position;
    for (const int position : far_positions)
        EXPECT_EQ(nmos.is_insert_node_senders(0, position), 1) << position;
}

TEST(SenderMembership, ShowsThese)
{
    Nmos nmos;
    EXPECT_EQ(nmos.is_insert_node_senders(0, 13), 1);
    EXPECT_EQ(nmos.is_insert_node_senders(0, 14), 0);
    EXPECT_EQ(nmos.is_insert_node_senders(0, 16), 0);
    EXPECT_EQ(nmos.is_insert_node_senders(0, 17), 1);
    EXPECT_EQ(nmos.is_insert_node_senders(0, 18), 1);
    EXPECT_EQ(nmos.is_insert_node_senders(1, 15), 1);
}

TEST(ReceiverMembership, FollowsModeAndKindAtEveryPosition)
{
    Nmos nmos;
    for (const int video_only : {0, 1, 2, -1, INT_MIN, INT_MAX}) {
        for (const int mode : {-1, 0, 1, 2, 3, 4, 256, INT_MIN, INT_MAX}) {
            for (int position = first_position; position <= last_position; ++position) {
                const bool hidden_group = (mode == 0 && groups_g2_to_g4.contains(position)) ||
                                          (mode == 1 && groups_g3_and_g4.contains(position));
                const bool hidden_kind = video_only != 0 && audio_and_ancillary.contains(position);
                EXPECT_EQ(nmos.is_insert_node_receivers(video_only, mode, position),
                          hidden_group || hidden_kind ? 0 : 1)
                    << video_only << ' ' << mode << ' ' << position;
            }
        }
    }
}

TEST(ReceiverMembership, ShowsWhateverLiesFarOutside)
{
    Nmos nmos;
    for (const int video_only : {0, 1})
        for (const int mode : {0, 1, 2})
            for (const int position : far_positions)
                EXPECT_EQ(nmos.is_insert_node_receivers(video_only, mode, position), 1)
                    << video_only << ' ' << mode << ' ' << position;
}

TEST(ReceiverMembership, ShowsThese)
{
    Nmos nmos;
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 0, 21), 1);
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 0, 22), 0);
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 0, 25), 1);
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 1, 22), 1);
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 1, 23), 0);
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 2, 36), 1);
    EXPECT_EQ(nmos.is_insert_node_receivers(1, 2, 20), 1);
    EXPECT_EQ(nmos.is_insert_node_receivers(1, 2, 21), 0);
    EXPECT_EQ(nmos.is_insert_node_receivers(1, 2, 40), 0);
    EXPECT_EQ(nmos.is_insert_node_receivers(1, 2, 41), 1);
}

TEST(ReceiverMembership, AlwaysShowsVideo)
{
    Nmos nmos;
    for (const int video_only : {0, 1, -1})
        for (const int mode : {-1, 0, 1, 2, 3})
            for (const int position : {17, 18, 19, 20})
                EXPECT_EQ(nmos.is_insert_node_receivers(video_only, mode, position), 1)
                    << video_only << ' ' << mode << ' ' << position;
}

TEST(Membership, DoesNotDependOnTheObject)
{
    Nmos nmos;
    nmos.port = 0;
    nmos.protocol = 1;
    nmos.ver_snd = nmos.ver_rcv = 14;
    nmos.text = "null";
    EXPECT_EQ(nmos.is_insert_node_senders(0, 14), 0);
    EXPECT_EQ(nmos.is_insert_node_receivers(0, 0, 21), 1);
}

} // namespace

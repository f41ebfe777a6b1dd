// SPDX-License-Identifier: Apache-2.0

#include "records/stream_selection.h"

#include <cstddef>
#include <vector>

#include <gmock/gmock.h>

namespace nmos_instrument::host {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

std::vector<std::size_t> shown_senders(const StreamSelection& selection)
{
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < sender_count; ++i) {
        if (selection.shows_sender(i))
            shown.push_back(i);
    }
    return shown;
}

std::vector<std::size_t> shown_receivers(const StreamSelection& selection)
{
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < receiver_count; ++i) {
        if (selection.shows_receiver(i))
            shown.push_back(i);
    }
    return shown;
}

TEST(StreamSelection, ShowsEverythingByDefault)
{
    const StreamSelection selection = selection_of(StreamSettings());
    EXPECT_EQ(selection, StreamSelection());
    EXPECT_THAT(shown_senders(selection), SizeIs(6));
    EXPECT_THAT(shown_receivers(selection), SizeIs(24));
}

TEST(StreamSelection, Stream1LeavesItsVideoSenderAndTheOthers)
{
    StreamSettings streams;
    streams.senders = SenderStreams::stream_1;
    EXPECT_THAT(shown_senders(selection_of(streams)), ElementsAre(0, 4, 5));
    EXPECT_THAT(shown_receivers(selection_of(streams)), SizeIs(24));
}

TEST(StreamSelection, OneAudioGroupIsG1)
{
    StreamSettings streams;
    streams.audio_groups = AudioGroups::g1;
    EXPECT_THAT(shown_receivers(selection_of(streams)),
                ElementsAre(0, 1, 2, 3, 4, 8, 12, 16, 20, 21, 22, 23));
}

TEST(StreamSelection, TwoAudioGroupsAreG1AndG2)
{
    StreamSettings streams;
    streams.audio_groups = AudioGroups::g1_and_g2;
    EXPECT_THAT(shown_receivers(selection_of(streams)),
                ElementsAre(0, 1, 2, 3, 4, 5, 8, 9, 12, 13, 16, 17, 20, 21, 22, 23));
}

TEST(StreamSelection, VideoOnlyLeavesTheVideoReceivers)
{
    StreamSettings streams;
    streams.receiver_essences = Essences::video_only;
    for (const AudioGroups groups :
         {AudioGroups::g1, AudioGroups::g1_and_g2, AudioGroups::all_four}) {
        streams.audio_groups = groups;
        EXPECT_THAT(shown_receivers(selection_of(streams)), ElementsAre(0, 1, 2, 3));
    }
}

/// Every combination of the settings.
std::vector<StreamSettings> all_settings()
{
    std::vector<StreamSettings> all;
    for (const SenderStreams senders : {SenderStreams::all, SenderStreams::stream_1})
        for (const Essences sent : {Essences::all, Essences::video_only})
            for (const Essences received : {Essences::all, Essences::video_only})
                for (const AudioGroups groups :
                     {AudioGroups::g1, AudioGroups::g1_and_g2, AudioGroups::all_four})
                    all.push_back({senders, sent, received, groups});
    return all;
}

TEST(StreamSelection, WhatIsNotShownHasAReasonAndNothingElse)
{
    for (const StreamSettings& streams : all_settings()) {
        const StreamSelection selection = selection_of(streams);
        for (std::size_t i = 0; i < receiver_count; ++i)
            EXPECT_EQ(why_receiver_is_hidden(streams, i) == nullptr, selection.shows_receiver(i));
        for (std::size_t i = 0; i < audio_sender; ++i)
            EXPECT_EQ(why_sender_is_hidden(streams, i) == nullptr, selection.shows_sender(i));
        // Without them there are no records, so there is nothing to select.
        for (const std::size_t i : {audio_sender, ancillary_sender})
            EXPECT_EQ(why_sender_is_hidden(streams, i) == nullptr,
                      streams.sender_essences == Essences::all);
    }
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "records/stream_selection.h"

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/resource_counts.h"

namespace nmos_instrument::host {
namespace {

int audio_group_filter_of(AudioGroups groups)
{
    switch (groups) {
    case AudioGroups::g1:
        return audio_group_filter_g1;
    case AudioGroups::g1_and_g2:
        return audio_group_filter_g1_g2;
    case AudioGroups::all_four:
        break;
    }
    return audio_group_filter_all;
}

} // namespace

StreamSelection selection_of(const StreamSettings& streams)
{
    StreamSelection selection;
    selection.receiver_filter = streams.receiver_essences == Essences::video_only
                                    ? receiver_filter_video_only
                                    : receiver_filter_all;
    selection.audio_group_filter = audio_group_filter_of(streams.audio_groups);
    selection.sender_filter =
        streams.senders == SenderStreams::all ? sender_filter_all : sender_filter_stream_1;
    return selection;
}

const char* why_sender_is_hidden(const StreamSettings& streams, std::size_t sender)
{
    if (essence_of_sender(sender) != Essence::video)
        return streams.sender_essences == Essences::video_only
                   ? R"(streams.sender_essences is "video only": only senders of video)"
                   : nullptr;
    const bool is_of_stream_1 = sender == 0;
    return streams.senders == SenderStreams::stream_1 && !is_of_stream_1
               ? R"(streams.senders is "stream 1": of the video senders only that of stream 1)"
               : nullptr;
}

const char* why_receiver_is_hidden(const StreamSettings& streams, std::size_t receiver)
{
    const Essence essence = essence_of_receiver(receiver);
    if (essence != Essence::video && streams.receiver_essences == Essences::video_only)
        return R"(streams.receiver_essences is "video only": only receivers of video)";
    if (essence != Essence::audio)
        return nullptr;
    const std::size_t group = audio_group_of(receiver);
    if (streams.audio_groups == AudioGroups::g1 && group > 0)
        return "streams.audio_groups is 1: only group G1";
    if (streams.audio_groups == AudioGroups::g1_and_g2 && group > 1)
        return "streams.audio_groups is 2: only groups G1 and G2";
    return nullptr;
}

bool StreamSelection::shows_sender(std::size_t sender) const
{
    return Nmos().is_insert_node_senders(sender_filter, sender_label(static_cast<int>(sender))) !=
           0;
}

bool StreamSelection::shows_receiver(std::size_t receiver) const
{
    return Nmos().is_insert_node_receivers(receiver_filter, audio_group_filter,
                                           receiver_label(static_cast<int>(receiver))) != 0;
}

} // namespace nmos_instrument::host

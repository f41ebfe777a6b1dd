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
        return 0;
    case AudioGroups::g1_and_g2:
        return 1;
    case AudioGroups::all_four:
        break;
    }
    return 2;
}

} // namespace

StreamSelection selection_of(const StreamSettings& streams)
{
    StreamSelection selection;
    selection.receiver_filter = streams.receiver_essences == Essences::video_only ? 1 : 0;
    selection.audio_group_filter = audio_group_filter_of(streams.audio_groups);
    selection.sender_filter = streams.senders == SenderStreams::all ? 1 : 0;
    return selection;
}

bool StreamSelection::shows_sender(std::size_t sender) const
{
    return Nmos().is_insert_node_senders(sender_filter,
                                         first_sender_label + static_cast<int>(sender)) != 0;
}

bool StreamSelection::shows_receiver(std::size_t receiver) const
{
    return Nmos().is_insert_node_receivers(receiver_filter, audio_group_filter,
                                           first_receiver_label + static_cast<int>(receiver)) != 0;
}

} // namespace nmos_instrument::host

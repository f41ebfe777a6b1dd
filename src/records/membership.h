// SPDX-License-Identifier: Apache-2.0
//
// Which senders and receivers the node shows for the instrument's stream configuration. A resource
// is named by the position of its default label in `uuid_label_list`.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_MEMBERSHIP_H
#define NMOS_INSTRUMENT_SRC_RECORDS_MEMBERSHIP_H

#include <cstddef>

#include "records/positions.h"

namespace nmos_instrument {

/// The selectors that hide nothing.
constexpr Selection everything_shown = {receiver_filter_all, audio_group_filter_all,
                                        sender_filter_all};

/// The host's selectors for receivers, in the order in which every operation takes them.
struct ReceiverSelection
{
    int video_only;
    int audio_group_mode;
};

/// `all_senders` 0 hides the video senders of streams 2 to 4.
constexpr bool shows_sender_label(int all_senders, int label) noexcept
{
    constexpr int second_video = first_sender_label + 1;
    constexpr int last_video = first_sender_label + ip_streams - 1;
    return all_senders != 0 || label < second_video || label > last_video;
}

/// Mode 0 leaves one audio group of each stream, mode 1 two, any other all four; `video_only`
/// hides every receiver that is not video.
constexpr bool shows_receiver_label(ReceiverSelection selection, int label) noexcept
{
    constexpr int first_audio = first_receiver_label + first_audio_receiver;
    constexpr int first_ancillary = first_receiver_label + first_ancillary_receiver;
    constexpr int end = first_receiver_label + receivers_end;
    if (label >= first_audio && label < first_ancillary) {
        const int group = (label - first_audio) % int{audio_groups_of_a_stream}; // 0 is G1
        if (selection.audio_group_mode == audio_group_filter_g1 && group > 0)
            return false;
        if (selection.audio_group_mode == audio_group_filter_g1_g2 && group > 1)
            return false;
    }
    return selection.video_only == 0 || label < first_audio || label >= end;
}

/// By position in the senders of a node or device.
constexpr bool shows_sender(int all_senders, std::size_t sender) noexcept
{
    return shows_sender_label(all_senders, static_cast<int>(first_sender_label + sender));
}

/// By position in the receivers of a node or device.
constexpr bool shows_receiver(ReceiverSelection selection, std::size_t receiver) noexcept
{
    return shows_receiver_label(selection, static_cast<int>(first_receiver_label + receiver));
}

constexpr bool shows_sender(const Selection& selection, std::size_t sender) noexcept
{
    return shows_sender(selection.sender_filter, sender);
}

constexpr bool shows_receiver(const Selection& selection, std::size_t receiver) noexcept
{
    return shows_receiver(
        ReceiverSelection{selection.receiver_filter, selection.audio_group_filter}, receiver);
}

} // namespace nmos_instrument

#endif

// SPDX-License-Identifier: Apache-2.0
//
// Which senders and receivers the node shows for the instrument's stream configuration. A resource
// is named by the position of its default label in `uuid_label_list`.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_MEMBERSHIP_H
#define NMOS_INSTRUMENT_SRC_RECORDS_MEMBERSHIP_H

#include <cstddef>

namespace nmos_instrument {

/// The host's selectors for receivers, in the order in which every operation takes them.
struct ReceiverSelection
{
    int video_only;
    int audio_group_mode;
};

constexpr int first_sender_label = 13;
constexpr int first_receiver_label = 17;

/// `all_senders` 0 hides the video senders of streams 2 to 4.
constexpr bool shows_sender_label(int all_senders, int label_index) noexcept
{
    return all_senders != 0 || label_index < 14 || label_index > 16;
}

/// Mode 0 leaves one audio group of each stream, mode 1 two, any other all four; `video_only`
/// hides every receiver that is not video.
constexpr bool shows_receiver_label(ReceiverSelection selection, int label_index) noexcept
{
    constexpr int first_audio = 21;
    constexpr int last_audio = 36;
    constexpr int last_ancillary = 40;
    if (label_index >= first_audio && label_index <= last_audio) {
        const int group = (label_index - first_audio) % 4; // 0 is G1
        if (selection.audio_group_mode == 0 && group > 0)
            return false;
        if (selection.audio_group_mode == 1 && group > 1)
            return false;
    }
    return selection.video_only == 0 || label_index < first_audio || label_index > last_ancillary;
}

/// By position in the senders of a node or device.
constexpr bool shows_sender(int all_senders, std::size_t sender) noexcept
{
    return shows_sender_label(all_senders, first_sender_label + static_cast<int>(sender));
}

/// By position in the receivers of a node or device.
constexpr bool shows_receiver(ReceiverSelection selection, std::size_t receiver) noexcept
{
    return shows_receiver_label(selection, first_receiver_label + static_cast<int>(receiver));
}

} // namespace nmos_instrument

#endif

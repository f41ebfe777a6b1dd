// SPDX-License-Identifier: Apache-2.0
//
// What the positions in a record's arrays mean. The kind of a resource is its position, see
// node_state.h; a default label has a number of its own, see default_labels.cpp.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_POSITIONS_H
#define NMOS_INSTRUMENT_SRC_RECORDS_POSITIONS_H

#include <cstddef>

namespace nmos_instrument {

constexpr std::size_t ip_streams = 4;
constexpr std::size_t audio_groups_of_a_stream = 4;

// Sources
constexpr std::size_t audio_source = 1;

// Flows
constexpr std::size_t video_flow = 0;
constexpr std::size_t audio_flow = 1;

// Senders: video of the streams 1 to 4, audio, ancillary data
constexpr std::size_t audio_sender = ip_streams;
constexpr std::size_t ancillary_sender = audio_sender + 1;

// Receivers: video of the streams 1 to 4, audio of all groups of stream 1, of stream 2 ...,
// ancillary data of the streams 1 to 4
constexpr std::size_t first_audio_receiver = ip_streams;
constexpr std::size_t first_ancillary_receiver =
    first_audio_receiver + ip_streams * audio_groups_of_a_stream;
constexpr std::size_t receivers_end = first_ancillary_receiver + ip_streams;

// Default labels
constexpr std::size_t first_sender_label = 13;
constexpr std::size_t first_receiver_label = 17;

static_assert(audio_sender == 4 && ancillary_sender == 5);
static_assert(first_audio_receiver == 4 && first_ancillary_receiver == 20 && receivers_end == 24);

} // namespace nmos_instrument

#endif

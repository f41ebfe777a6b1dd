// SPDX-License-Identifier: Apache-2.0
//
// What the positions in a record's arrays mean, as the sizes that arrays are counted in. The numbers
// stand in nmos_instrument/codes.h; the names of default labels in default_labels.cpp.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_POSITIONS_H
#define NMOS_INSTRUMENT_SRC_RECORDS_POSITIONS_H

#include <cstddef>

#include "nmos_instrument/codes.h"

namespace nmos_instrument {

constexpr std::size_t ip_streams = ip_stream_count;
constexpr std::size_t audio_groups_of_a_stream = audio_group_count_of_a_stream;

// Sources
constexpr std::size_t audio_source = source_audio;

// Flows
constexpr std::size_t video_flow = flow_video;
constexpr std::size_t audio_flow = flow_audio;

// Senders: video of the streams 1 to 4, audio, ancillary data
constexpr std::size_t audio_sender = sender_audio;
constexpr std::size_t ancillary_sender = sender_ancillary;

// Receivers: video of the streams 1 to 4, audio of all groups of stream 1, of stream 2 ...,
// ancillary data of the streams 1 to 4
constexpr std::size_t first_audio_receiver = receiver_audio_1_g1;
constexpr std::size_t first_ancillary_receiver = receiver_ancillary_1;
constexpr std::size_t receivers_end = receiver_position_count;

// Default labels
constexpr std::size_t first_sender_label = static_cast<std::size_t>(sender_label(0));
constexpr std::size_t first_receiver_label = static_cast<std::size_t>(receiver_label(0));

static_assert(audio_sender == ip_streams && ancillary_sender == ip_streams + 1);
static_assert(first_audio_receiver == ip_streams &&
              first_ancillary_receiver ==
                  first_audio_receiver + ip_streams * audio_groups_of_a_stream &&
              receivers_end == first_ancillary_receiver + ip_streams);

} // namespace nmos_instrument

#endif

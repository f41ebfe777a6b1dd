// SPDX-License-Identifier: Apache-2.0
//
// How many resources the instrument has, and which kind is at which position of the records.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_RESOURCE_COUNTS_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_RESOURCE_COUNTS_H

#include <array>
#include <cstddef>

#include <nmos_instrument/codes.h>

namespace nmos_instrument::host {

constexpr std::size_t stream_count = ip_stream_count;
constexpr std::size_t interface_count = 2; ///< media interfaces: primary and secondary leg
constexpr std::size_t leg_count = 2;
constexpr std::size_t source_count = 3; ///< video, audio, ancillary data
constexpr std::size_t flow_count = 3;   ///< one for each source

// Senders: video of the IP streams, audio, ancillary data.
constexpr std::size_t audio_sender = sender_audio;
constexpr std::size_t ancillary_sender = sender_ancillary;
constexpr std::size_t sender_count = sender_position_count;

// Receivers: video of the IP streams; audio groups G1 to G4 of stream 1, of stream 2 ...; ancillary
// data of the streams.
constexpr std::size_t audio_group_count = audio_group_count_of_a_stream;
constexpr std::size_t first_audio_receiver = receiver_audio_1_g1;
constexpr std::size_t first_ancillary_receiver = receiver_ancillary_1;
constexpr std::size_t receiver_count = receiver_position_count;

/// What a sender or receiver carries. The values are the positions of its source and flow.
enum class Essence : std::size_t
{
    video = 0,
    audio = 1,
    ancillary = 2
};

constexpr std::array<Essence, 3> all_essences = {Essence::video, Essence::audio,
                                                 Essence::ancillary};

constexpr std::size_t index_of(Essence essence)
{
    return static_cast<std::size_t>(essence);
}

/// "video", "audio" or "ancillary"
constexpr const char* name_of(Essence essence)
{
    constexpr const char* names[] = {"video", "audio", "ancillary"};
    return names[index_of(essence)];
}

constexpr Essence essence_of_sender(std::size_t sender)
{
    if (sender < audio_sender)
        return Essence::video;
    return sender == audio_sender ? Essence::audio : Essence::ancillary;
}

constexpr Essence essence_of_receiver(std::size_t receiver)
{
    if (receiver < first_audio_receiver)
        return Essence::video;
    return receiver < first_ancillary_receiver ? Essence::audio : Essence::ancillary;
}

/// Of an audio receiver, from 0: G1 is 0.
constexpr std::size_t audio_group_of(std::size_t receiver)
{
    return (receiver - first_audio_receiver) % audio_group_count;
}

/// All receivers of one kind take the same SDP files, so one of them can speak for all.
constexpr std::size_t first_receiver_of(Essence essence)
{
    constexpr std::size_t first[] = {0, first_audio_receiver, first_ancillary_receiver};
    return first[index_of(essence)];
}

} // namespace nmos_instrument::host

#endif

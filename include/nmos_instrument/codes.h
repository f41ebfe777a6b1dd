// SPDX-License-Identifier: Apache-2.0
//
// The instrument's codes by name, for every place where the library reads one, and the positions of
// the resources. Header only; each name may stand wherever an int or std::int16_t is taken.
//
// ```cpp
// using namespace nmos_instrument;
// st_param_sys settings = st_param_sys(); // all zero is 2160p60 in ST 2022-6
// settings.sdp_st2110_mode = stream_mode_st2110;
// settings.sdp_video_system = video_system_1080;
// settings.sdp_video_frame_rate = frame_rate_29_97_interlaced;
// settings.sdp_audio_ptime = packet_time_125_us;
//
// std::unique_ptr<NMOS_IS05_ST> state(new NMOS_IS05_ST());
// const std::string sdp = ConnectionApi().make_single_senderid_sdp(state.get(), sender_video_1,
//                                                                  &settings);
// assert(sdp.find("width=1920; height=1080; depth=10; exactframerate=30000/1001; interlace;") !=
//        std::string::npos);
//
// // The node without the video senders of streams 2 to 4:
// const Selection selection = {receiver_filter_all, audio_group_filter_all, sender_filter_stream_1};
// Nmos nmos;
// assert(nmos.is_insert_node_senders(selection.sender_filter, sender_label(sender_audio)) == 1);
// assert(nmos.is_insert_node_senders(selection.sender_filter, sender_label(sender_video_2)) == 0);
//
// assert(audio_receiver(1, 2) == 10); // IP stream 2, group G3
// ```
//
// The library reads no other codes. What the others in st_param_sys mean (`type`, `ptp_profile` and
// so on) only the instrument knows.

#ifndef NMOS_INSTRUMENT_CODES_H
#define NMOS_INSTRUMENT_CODES_H

#include <cstdint>

namespace nmos_instrument {

/// st_param_sys::sdp_st2110_mode
enum StreamMode : std::int16_t
{
    stream_mode_st2022_6 = 0, ///< SMPTE ST 2022-6 carriage
    stream_mode_st2110 = 1    ///< SMPTE ST 2110; so is any other value
};

/// st_param_sys::sdp_video_system
enum VideoSystem : std::int16_t
{
    video_system_2160 = 0,       ///< 3840x2160
    video_system_2160_other = 1, ///< 3840x2160 too
    video_system_1080 = 2,       ///< 1920x1080; so is any value not listed
    video_system_720 = 4         ///< 1280x720
};

/// st_param_sys::sdp_video_frame_rate. Frames, not fields, a second.
enum FrameRate : std::int16_t
{
    frame_rate_60 = 0,                ///< 60; so is any value not listed
    frame_rate_59_94 = 1,             ///< 60000/1001
    frame_rate_50 = 2,                ///< 50
    frame_rate_30_interlaced = 10,    ///< 30, 60 fields
    frame_rate_29_97_interlaced = 11, ///< 30000/1001
    frame_rate_25_interlaced = 12     ///< 25
};

/// st_param_sys::sdp_audio_ptime
enum PacketTime : std::int16_t
{
    packet_time_8_ms = 0,  ///< Intentional: the instrument has it, though no ST 2110-30 level does
    packet_time_1_ms = 1,  ///< 1 ms; so is any value not listed
    packet_time_125_us = 2 ///< 0.125 ms
};

/// The video format of the instrument, as ConnectionApi::analyze_sdp_file takes it: one code of
/// each class that it tells apart. All other codes are in one of these classes, see there.
enum CurrentFormat : std::int16_t
{
    current_format_2k = 0,  ///< never takes 2160 lines; so do 1, 2, 7 and 8
    current_format_any = 3, ///< 1080 and 720 are its own, 2160 a switch; so do all codes not listed
    current_format_4k = 9   ///< 2160 lines are its own, 1080 and 720 a switch; so does 10
};

/// @name Selectors
/// They decide what the node shows, see NodeApi.h.
/// @{
enum ReceiverFilter : int
{
    receiver_filter_all = 0,
    receiver_filter_video_only = 1
};

enum AudioGroupFilter : int
{
    audio_group_filter_g1 = 0,    ///< of the audio receivers of each stream, that of group G1
    audio_group_filter_g1_g2 = 1, ///< those of G1 and G2
    audio_group_filter_all = 2    ///< all four
};

enum SenderFilter : int
{
    sender_filter_stream_1 = 0, ///< of the video senders, that of IP stream 1
    sender_filter_all = 1
};

/// The three together, in the order in which the operations take them.
struct Selection
{
    int receiver_filter;
    int audio_group_filter; ///< audio_group_mode of Nmos::is_insert_node_receivers
    int sender_filter;      ///< all_senders of NodeApi::make_senders
};
/// @}

/// @name Positions
/// The kind of a resource is its position in its array, see node_state.h.
/// @{
enum SourcePosition : int
{
    source_video = 0,
    source_audio = 1,
    source_ancillary = 2
};

enum FlowPosition : int
{
    flow_video = 0,
    flow_audio = 1,
    flow_ancillary = 2
};

enum SenderPosition : int
{
    sender_video_1 = 0, ///< IP stream 1
    sender_video_2 = 1,
    sender_video_3 = 2,
    sender_video_4 = 3,
    sender_audio = 4,
    sender_ancillary = 5
};

enum ReceiverPosition : int
{
    receiver_video_1 = 0,     ///< IP stream 1; those of streams 2 to 4 follow
    receiver_audio_1_g1 = 4,  ///< IP stream 1, group G1; the others follow, see audio_receiver
    receiver_ancillary_1 = 20 ///< IP stream 1; those of streams 2 to 4 follow
};

enum Capacity : int
{
    ip_stream_count = 4,
    audio_group_count_of_a_stream = 4,
    sender_position_count = 6,
    receiver_position_count = 24
};

/// The audio receiver of IP stream `stream` and group `group`, both counted from 0.
constexpr int audio_receiver(int stream, int group)
{
    return receiver_audio_1_g1 + audio_group_count_of_a_stream * stream + group;
}
/// @}

/// @name Label indexes
/// As Nmos::is_insert_node_senders and is_insert_node_receivers take them.
/// @{
constexpr int sender_label(int sender)
{
    return 13 + sender;
}

constexpr int receiver_label(int receiver)
{
    return 17 + receiver;
}
/// @}

} // namespace nmos_instrument

#endif

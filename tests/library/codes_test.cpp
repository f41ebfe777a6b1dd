// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/codes.h"

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include <gmock/gmock.h>

#include "nmos_instrument/ConnectionApi.h"
#include "nmos_instrument/Nmos.h"

namespace {

using namespace nmos_instrument;
using testing::HasSubstr;

static_assert(std::is_convertible<VideoSystem, std::int16_t>::value, "a member takes it");
static_assert(std::is_convertible<SenderFilter, int>::value, "an operation takes it");

static_assert(stream_mode_st2022_6 == 0 && stream_mode_st2110 == 1, "");
static_assert(video_system_2160 == 0 && video_system_2160_other == 1, "");
static_assert(video_system_1080 == 2 && video_system_720 == 4, "");
static_assert(frame_rate_60 == 0 && frame_rate_59_94 == 1 && frame_rate_50 == 2, "");
static_assert(frame_rate_30_interlaced == 10 && frame_rate_29_97_interlaced == 11 &&
                  frame_rate_25_interlaced == 12,
              "");
static_assert(packet_time_8_ms == 0 && packet_time_1_ms == 1 && packet_time_125_us == 2, "");
static_assert(current_format_2k == 0 && current_format_any == 3 && current_format_4k == 9, "");
static_assert(receiver_filter_all == 0 && receiver_filter_video_only == 1, "");
static_assert(audio_group_filter_g1 == 0 && audio_group_filter_g1_g2 == 1 &&
                  audio_group_filter_all == 2,
              "");
static_assert(sender_filter_stream_1 == 0 && sender_filter_all == 1, "");
static_assert(source_video == 0 && source_audio == 1 && source_ancillary == 2, "");
static_assert(flow_video == 0 && flow_audio == 1 && flow_ancillary == 2, "");
static_assert(sender_video_1 == 0 && sender_video_2 == 1 && sender_video_3 == 2 &&
                  sender_video_4 == 3 && sender_audio == 4 && sender_ancillary == 5,
              "");
static_assert(receiver_video_1 == 0 && receiver_audio_1_g1 == 4 && receiver_ancillary_1 == 20, "");
static_assert(sender_position_count == 6 && receiver_position_count == 24, "");
static_assert(audio_receiver(0, 0) == 4 && audio_receiver(0, 3) == 7 && audio_receiver(1, 0) == 8 &&
                  audio_receiver(3, 3) == 19,
              "");
static_assert(sender_label(sender_video_1) == 13 && sender_label(sender_ancillary) == 18, "");
static_assert(receiver_label(receiver_video_1) == 17 && receiver_label(23) == 40, "");

struct FormatCase
{
    const char* name;
    VideoSystem system;
    FrameRate rate;
    const char* in_sdp_file;
};

class VideoCodes : public testing::TestWithParam<FormatCase>
{};

TEST_P(VideoCodes, AreReadByTheSdpFile)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    st_param_sys settings = st_param_sys();
    settings.sdp_video_system = GetParam().system;
    settings.sdp_video_frame_rate = GetParam().rate;
    EXPECT_THAT(ConnectionApi().make_single_senderid_sdp(state.get(), sender_video_1, &settings),
                HasSubstr(std::string(" sampling=YCbCr-4:2:2; ") + GetParam().in_sdp_file +
                          " colorimetry="));
}

// clang-format off
const FormatCase format_cases[] = {
    {"p60",    video_system_2160,       frame_rate_60,               "width=3840; height=2160; depth=10; exactframerate=60;"},
    {"p60too", video_system_2160_other, frame_rate_60,               "width=3840; height=2160; depth=10; exactframerate=60;"},
    {"p5994",  video_system_1080,       frame_rate_59_94,            "width=1920; height=1080; depth=10; exactframerate=60000/1001;"},
    {"p50",    video_system_720,        frame_rate_50,               "width=1280; height=720; depth=10; exactframerate=50;"},
    {"i30",    video_system_1080,       frame_rate_30_interlaced,    "width=1920; height=1080; depth=10; exactframerate=30; interlace;"},
    {"i2997",  video_system_1080,       frame_rate_29_97_interlaced, "width=1920; height=1080; depth=10; exactframerate=30000/1001; interlace;"},
    {"i25",    video_system_1080,       frame_rate_25_interlaced,    "width=1920; height=1080; depth=10; exactframerate=25; interlace;"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Formats, VideoCodes, testing::ValuesIn(format_cases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(StreamModes, ChooseThePackingMode)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    st_param_sys settings = st_param_sys();
    settings.sdp_st2110_mode = stream_mode_st2110;
    EXPECT_THAT(ConnectionApi().make_single_senderid_sdp(state.get(), sender_video_1, &settings),
                HasSubstr(" PM=2110BPM; "));
    settings.sdp_st2110_mode = stream_mode_st2022_6;
    EXPECT_THAT(ConnectionApi().make_single_senderid_sdp(state.get(), sender_video_1, &settings),
                HasSubstr(" PM=2022-6; "));
}

TEST(PacketTimes, AreReadByTheSdpFile)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    st_param_sys settings = st_param_sys();
    const auto sdp = [&](PacketTime time) {
        settings.sdp_audio_ptime = time;
        return ConnectionApi().make_single_senderid_sdp(state.get(), sender_audio, &settings);
    };
    EXPECT_THAT(sdp(packet_time_125_us), HasSubstr("a=ptime:0.125\r\n"));
    EXPECT_THAT(sdp(packet_time_1_ms), HasSubstr("a=ptime:1\r\n"));
    EXPECT_THAT(sdp(packet_time_8_ms), HasSubstr("a=ptime:8\r\n"));
}

TEST(CurrentFormats, DecideWhoTakes2160Lines)
{
    std::string errors;
    const auto takes_them = [&](CurrentFormat format) {
        sdp_str found = sdp_str();
        ConnectionApi().analyze_sdp_file("a=x width=3840; height=2160;\r\n", true, format, false,
                                         &errors, &found);
        return (found.found_flags & sdp_found_size) != 0;
    };
    EXPECT_TRUE(takes_them(current_format_4k));
    EXPECT_EQ(errors, "");
    EXPECT_TRUE(takes_them(current_format_any));
    EXPECT_EQ(errors, "Switching 2K/4K is denied by the setting. \n");
    EXPECT_FALSE(takes_them(current_format_2k));
    EXPECT_EQ(errors, "Switching 2K/4K is denied by the setting. \n");
}

TEST(Selectors, HideWhatTheyNameSo)
{
    Nmos nmos;
    EXPECT_EQ(nmos.is_insert_node_senders(sender_filter_stream_1, sender_label(sender_video_1)), 1);
    EXPECT_EQ(nmos.is_insert_node_senders(sender_filter_stream_1, sender_label(sender_video_4)), 0);
    EXPECT_EQ(nmos.is_insert_node_senders(sender_filter_all, sender_label(sender_video_4)), 1);

    const auto shows = [&](int kinds, int groups, int receiver) {
        return nmos.is_insert_node_receivers(kinds, groups, receiver_label(receiver));
    };
    EXPECT_EQ(shows(receiver_filter_video_only, audio_group_filter_all, receiver_video_1), 1);
    EXPECT_EQ(shows(receiver_filter_video_only, audio_group_filter_all, receiver_ancillary_1), 0);
    EXPECT_EQ(shows(receiver_filter_all, audio_group_filter_g1, audio_receiver(3, 0)), 1);
    EXPECT_EQ(shows(receiver_filter_all, audio_group_filter_g1, audio_receiver(3, 1)), 0);
    EXPECT_EQ(shows(receiver_filter_all, audio_group_filter_g1_g2, audio_receiver(3, 1)), 1);
    EXPECT_EQ(shows(receiver_filter_all, audio_group_filter_g1_g2, audio_receiver(3, 2)), 0);
    EXPECT_EQ(shows(receiver_filter_all, audio_group_filter_all, audio_receiver(3, 3)), 1);
}

} // namespace

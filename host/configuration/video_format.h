// SPDX-License-Identifier: Apache-2.0
//
// The formats that the instrument generates: those that its SDP files can describe.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_VIDEO_FORMAT_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_VIDEO_FORMAT_H

#include <array>
#include <cstdint>
#include <string_view>

#include <nmos_instrument/codes.h>

namespace nmos_instrument::host {

enum class PictureSize
{
    lines_2160,
    lines_1080,
    lines_720
};

enum class Scan
{
    progressive,
    interlaced
};

/// Frames per second, not fields, for interlaced video too.
enum class FrameRate
{
    fps_60,
    fps_59_94,
    fps_50,
    fps_30,
    fps_29_97,
    fps_25
};

enum class PacketTime
{
    us_125,
    ms_1,
    ms_8
};

struct PictureSizeFacts
{
    PictureSize size;
    std::string_view json; ///< as the configuration spells it
    int width;
    int height;
    std::int16_t system_code; ///< st_param_sys::sdp_video_system
};

constexpr std::array<PictureSizeFacts, 3> picture_sizes = {{
    {PictureSize::lines_2160, "2160", 3840, 2160, video_system_2160},
    {PictureSize::lines_1080, "1080", 1920, 1080, video_system_1080},
    {PictureSize::lines_720, "720", 1280, 720, video_system_720},
}};

struct FrameRateFacts
{
    FrameRate rate;
    std::string_view json;
    int numerator;
    int denominator;
    Scan scan;
    std::int16_t rate_code; ///< st_param_sys::sdp_video_frame_rate
};

constexpr std::array<FrameRateFacts, 6> frame_rates = {{
    {FrameRate::fps_60, "60", 60, 1, Scan::progressive, frame_rate_60},
    {FrameRate::fps_59_94, "59.94", 60000, 1001, Scan::progressive, frame_rate_59_94},
    {FrameRate::fps_50, "50", 50, 1, Scan::progressive, frame_rate_50},
    {FrameRate::fps_30, "30", 30, 1, Scan::interlaced, frame_rate_30_interlaced},
    {FrameRate::fps_29_97, "29.97", 30000, 1001, Scan::interlaced, frame_rate_29_97_interlaced},
    {FrameRate::fps_25, "25", 25, 1, Scan::interlaced, frame_rate_25_interlaced},
}};

struct PacketTimeFacts
{
    PacketTime time;
    std::string_view json;   ///< milliseconds
    std::int16_t ptime_code; ///< st_param_sys::sdp_audio_ptime
};

constexpr std::array<PacketTimeFacts, 3> packet_times = {{
    {PacketTime::us_125, "0.125", packet_time_125_us},
    {PacketTime::ms_1, "1", packet_time_1_ms},
    {PacketTime::ms_8, "8", packet_time_8_ms},
}};

const PictureSizeFacts& facts_of(PictureSize size);
const FrameRateFacts& facts_of(FrameRate rate);
const PacketTimeFacts& facts_of(PacketTime time);

} // namespace nmos_instrument::host

#endif

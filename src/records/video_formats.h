// SPDX-License-Identifier: Apache-2.0
//
// What the video codes of st_param_sys mean in an SDP file.

#ifndef NMOS_INSTRUMENT_SRC_RECORDS_VIDEO_FORMATS_H
#define NMOS_INSTRUMENT_SRC_RECORDS_VIDEO_FORMATS_H

#include <cstdint>
#include <string_view>

#include "nmos_instrument/codes.h"

namespace nmos_instrument {

/// The texts stand beside the numbers: an SDP file is written a fifth faster than from numbers.
struct PictureSize
{
    int width;
    int height;
    std::string_view width_text;
    std::string_view height_text;
};

constexpr PictureSize picture_size(std::int16_t video_system) noexcept
{
    switch (video_system) {
    case video_system_2160:
    case video_system_2160_other:
        return {3840, 2160, "3840", "2160"};
    case video_system_720:
        return {1280, 720, "1280", "720"};
    default:
        return {1920, 1080, "1920", "1080"};
    }
}

struct PictureRate
{
    int numerator;
    int denominator;
    bool is_interlaced;
    /// The value of exactframerate and, for interlaced rates, the interlace flag after it (SMPTE ST
    /// 2110-20 7.2, 7.3)
    std::string_view text;
};

constexpr PictureRate picture_rate(std::int16_t frame_rate) noexcept
{
    switch (frame_rate) {
    case frame_rate_59_94:
        return {60000, 1001, false, "60000/1001;"};
    case frame_rate_50:
        return {50, 1, false, "50;"};
    case frame_rate_30_interlaced:
        return {30, 1, true, "30; interlace;"};
    case frame_rate_29_97_interlaced:
        return {30000, 1001, true, "30000/1001; interlace;"};
    case frame_rate_25_interlaced:
        return {25, 1, true, "25; interlace;"};
    default:
        return {60, 1, false, "60;"};
    }
}

} // namespace nmos_instrument

#endif

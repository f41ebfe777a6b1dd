// SPDX-License-Identifier: Apache-2.0

#include "configuration/video_format.h"

#include <algorithm>
#include <stdexcept>

namespace nmos_instrument::host {
namespace {

/// The row of `table` whose `key` is `wanted`.
template <class Row, std::size_t N, class Key>
const Row& row_of(const std::array<Row, N>& table, Key Row::*key, Key wanted)
{
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&](const Row& candidate) { return candidate.*key == wanted; });
    if (row == table.end())
        throw std::logic_error("a format is missing from its table");
    return *row;
}

} // namespace

const PictureSizeFacts& facts_of(PictureSize size)
{
    return row_of(picture_sizes, &PictureSizeFacts::size, size);
}

const FrameRateFacts& facts_of(FrameRate rate)
{
    return row_of(frame_rates, &FrameRateFacts::rate, rate);
}

const PacketTimeFacts& facts_of(PacketTime time)
{
    return row_of(packet_times, &PacketTimeFacts::time, time);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// How many resources the instrument has, and which kind is at which position of the records.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_RESOURCE_COUNTS_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_RESOURCE_COUNTS_H

#include <cstddef>

namespace nmos_instrument::host {

constexpr std::size_t stream_count = 4;    ///< IP streams
constexpr std::size_t interface_count = 2; ///< media interfaces: primary and secondary leg
constexpr std::size_t leg_count = 2;
constexpr std::size_t source_count = 3; ///< video, audio, ancillary data
constexpr std::size_t flow_count = 3;   ///< one for each source
constexpr std::size_t sender_count = 6;
constexpr std::size_t receiver_count = 24;

/// What a sender or receiver carries. The values are the positions of its source and flow.
enum class Essence : std::size_t
{
    video = 0,
    audio = 1,
    ancillary = 2
};

constexpr std::size_t index_of(Essence essence)
{
    return static_cast<std::size_t>(essence);
}

constexpr Essence essence_of_sender(std::size_t sender)
{
    if (sender < 4)
        return Essence::video;
    return sender == 4 ? Essence::audio : Essence::ancillary;
}

constexpr Essence essence_of_receiver(std::size_t receiver)
{
    if (receiver < 4)
        return Essence::video;
    return receiver < 20 ? Essence::audio : Essence::ancillary;
}

} // namespace nmos_instrument::host

#endif

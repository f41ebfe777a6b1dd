// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_STREAM_SELECTION_H
#define NMOS_INSTRUMENT_HOST_RECORDS_STREAM_SELECTION_H

#include <cstddef>

#include "configuration/configuration.h"

namespace nmos_instrument::host {

/// The three selectors that the library's operations take. StreamSettings has them in words.
struct StreamSelection
{
    int receiver_filter = receiver_filter_all;
    int audio_group_filter = audio_group_filter_all;
    int sender_filter = sender_filter_all;

    bool operator==(const StreamSelection&) const = default;

    /// Whether the node shows the sender or receiver at this position in the records, as the
    /// library decides.
    bool shows_sender(std::size_t sender) const;
    bool shows_receiver(std::size_t receiver) const;
};

StreamSelection selection_of(const StreamSettings& streams);

/// The setting that hides the sender or receiver at this position, and what it leaves, like
/// "streams.audio_groups is 1: only group G1"; null if the node shows it.
const char* why_sender_is_hidden(const StreamSettings& streams, std::size_t sender);
const char* why_receiver_is_hidden(const StreamSettings& streams, std::size_t receiver);

} // namespace nmos_instrument::host

#endif

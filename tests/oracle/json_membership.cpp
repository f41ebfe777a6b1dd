// SPDX-License-Identifier: Apache-2.0

#include "oracle/json_oracle.h"

#include <set>

namespace oracle {

bool is_insert_node_senders(int all_senders, int label_index)
{
    static const std::set<int> video_of_streams_2_to_4 = {14, 15, 16};
    return all_senders != 0 || !video_of_streams_2_to_4.contains(label_index);
}

bool is_insert_node_receivers(int video_only, int audio_group_mode, int label_index)
{
    static const std::set<int> groups_2_to_4 = {22, 23, 24, 26, 27, 28, 30, 31, 32, 34, 35, 36};
    static const std::set<int> groups_3_and_4 = {23, 24, 27, 28, 31, 32, 35, 36};
    if (audio_group_mode == 0 && groups_2_to_4.contains(label_index))
        return false;
    if (audio_group_mode == 1 && groups_3_and_4.contains(label_index))
        return false;
    const bool audio_or_ancillary = label_index >= 21 && label_index <= 40;
    return video_only == 0 || !audio_or_ancillary;
}

} // namespace oracle

// SPDX-License-Identifier: Apache-2.0

#include "sdp/other_takers.h"

#include "sdp/read_sdp.h"

namespace nmos_instrument::host {

std::vector<Essence> other_takers(const std::string& sdp, Essence asked,
                                  const OneOfEachKind& receivers)
{
    std::vector<Essence> takers;
    for (const Essence other : all_essences) {
        const std::optional<SdpReceiver>& receiver = receivers[index_of(other)];
        if (other != asked && receiver && read_sdp(sdp, *receiver).taken())
            takers.push_back(other);
    }
    return takers;
}

} // namespace nmos_instrument::host

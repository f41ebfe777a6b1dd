// SPDX-License-Identifier: Apache-2.0

#include "conformance/source_body.h"

#include <cstdint>
#include <string>

#include "configuration/resource_counts.h"
#include "conformance/formats.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

/// In front of the source's id, where the order of the keys puts it.
Replacement with_grain_rate_of(const FLOW_IS04_ST& flow)
{
    const std::string id = "\"id\":\"" + std::string(text_of(flow.source_id)) + '"';
    const auto numerator = static_cast<std::int64_t>(flow.grain_rate_numerator);
    const auto denominator = static_cast<std::int64_t>(flow.grain_rate_denominator);
    return {id,
            R"("grain_rate":{"denominator":)" + std::to_string(denominator) + R"(,"numerator":)" +
                std::to_string(numerator) + "}," + id,
            ""};
}

Replacement with_channels(int count)
{
    std::string channels;
    for (int i = 1; i <= count; ++i) {
        channels += channels.empty() ? "" : ",";
        channels += R"({"label":"Channel )";
        channels += std::to_string(i);
        channels += "\"}";
    }
    return {R"("channels":[{"label":""}])", "\"channels\":[" + channels + ']', ""};
}

} // namespace

std::vector<Replacement> source_corrections(const Configuration& configuration,
                                            const NMOS_IS04_ST& node)
{
    std::vector<Replacement> corrections;
    // IS-04 v1.2, source_core.json, "grain_rate": the largest rate of the source's flows; and
    // flow_core.json: the rate of a flow is that of its source or an integer part of it. The
    // ancillary flow shows none (NodeApi.h).
    for (const Essence essence : {Essence::video, Essence::audio}) {
        if (index_of(essence) < static_cast<std::size_t>(node.flows_count))
            corrections.push_back(with_grain_rate_of(node.flows[index_of(essence)]));
    }
    // IS-04 v1.2, source_audio.json, "channels": all channels of the source. The SDP file says how
    // many there are.
    corrections.push_back(with_channels(configuration.audio.channels));
    if (configuration.carriage == Carriage::st2022_6)
        corrections.push_back(mux_instead_of_video());
    return corrections;
}

} // namespace nmos_instrument::host

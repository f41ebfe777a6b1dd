// SPDX-License-Identifier: Apache-2.0

#include "conformance/flow_body.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "configuration/resource_counts.h"
#include "conformance/formats.h"

namespace nmos_instrument::host {
namespace {

/// SMPTE ST 2110-20 7.4.1: with 4:2:2 sampling, the only one of this instrument, Cb and Cr have every
/// second sample of a line. IS-04 v1.2, flow_video_raw.json: "width" is that of the component.
Replacement with_half_width(std::string_view component, const FLOW_IS04_ST& flow)
{
    const auto width = static_cast<std::int64_t>(flow.frame_width);
    const std::string before = "\"name\":\"" + std::string(component) + "\",\"width\":";
    return {before + std::to_string(width) + '}', before + std::to_string(width / 2) + '}', ""};
}

Replacement without(std::string_view first_key, std::string_view key_behind)
{
    const auto key = [](std::string_view name) { return '"' + std::string(name) + "\":"; };
    return {key(first_key), "", key(key_behind)};
}

} // namespace

std::vector<Replacement> flow_corrections(const Configuration& configuration,
                                          const NMOS_IS04_ST& node)
{
    const FLOW_IS04_ST& video = node.flows[index_of(Essence::video)];
    if (configuration.carriage == Carriage::st2110)
        return {with_half_width("Cb", video), with_half_width("Cr", video)};
    return {
        mux_instead_of_video(),
        // IS-04 v1.2, flow_mux.json. Some texts of the library escape their slashes.
        {R"("media_type":"video/raw")", R"("media_type":"video/SMPTE2022-6")", ""},
        {R"("media_type":"video\/raw")", R"("media_type":"video\/SMPTE2022-6")", ""},
        // flow_mux.json has no member that describes the picture.
        without("colorspace", "description"),  // and "components"
        without("frame_height", "grain_rate"), // and "frame_width"
        without("interlace_mode", "label"),
        without("transfer_characteristic", "version"),
    };
}

} // namespace nmos_instrument::host

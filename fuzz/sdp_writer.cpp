// SPDX-License-Identifier: Apache-2.0
//
// What the writer writes for any record is read by the analyser without harm.

#include <memory>
#include <stdexcept>

#include "fuzz_input.h"
#include "nmos_instrument/ConnectionApi.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto connections = std::make_unique<NMOS_IS05_ST>();
    const auto settings = std::make_unique<st_param_sys>();
    FuzzInput fuzz(data, size);
    const int index = fuzz.byte() % 6;
    fuzz.fill(connections->ptp_grandmaster_id);
    fuzz.fill(connections->sdp_session_id);
    fuzz.fill(connections->sdp_session_version);
    fuzz.fill(settings->sdp_st2110_mode);
    fuzz.fill(settings->sdp_video_system);
    fuzz.fill(settings->sdp_video_frame_rate);
    fuzz.fill(settings->sdp_audio_ptime);
    fuzz.fill(settings->sdp_rtp_payload_video);
    fuzz.fill(connections->senders[index].active.transport_params);

    ConnectionApi api;
    const std::string sdp = api.make_single_senderid_sdp(connections.get(), index, settings.get());
    REQUIRE(sdp.starts_with("v=0\r\no=HALDEN "));
    REQUIRE(sdp.ends_with("\r\na=mid:secondary\r\n"));
    std::string errors;
    sdp_str found = sdp_str();
    try {
        api.analyze_sdp_file(sdp, true, 3, true, &errors, &found);
    } catch (const std::out_of_range&) {
        // A line break within an address leaves a filter line with one address.
    }
    return 0;
}

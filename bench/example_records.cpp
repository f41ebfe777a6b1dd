// SPDX-License-Identifier: Apache-2.0

#include "example_records.h"

#include "support/clean_records.h"

namespace {

constexpr const char* description =
    "Receiver of the IP measuring instrument in rack 4, primary and "
    "secondary leg (ST 2022-7), SMPTE ST 2110 only";

/// What other senders write into their files beside what the analyser looks for.
std::string with_more_attributes(std::string sdp)
{
    const std::string more = "b=AS:2200000\r\na=ts-refclk:localmac=00-00-5E-00-53-01\r\n"
                             "a=framerate:59.94\r\na=tool:example instrument 1.0\r\n"
                             "a=label:IP Stream 1 for Video\r\na=recvonly\r\n";
    return sdp.insert(sdp.find("a=mid:primary"), more).insert(sdp.find("a=mid:secondary"), more);
}

} // namespace

ExampleRecords example_records()
{
    ExampleRecords records{clean_node(), clean_connections(), clean_parameters(), {}};
    for (std::size_t i = 0; i < 24; ++i) {
        RECEIVER_IS04_ST& receiver = records.node->receivers[i];
        write_text(receiver.label, "IP Stream 1 G1 for Audio");
        write_text(receiver.description, description);
        write_text(receiver.interface_bindings[0], "media-port-1");
        write_text(receiver.interface_bindings[1], "media-port-2");
        write_text(receiver.subscription[0].peer_id, clean_parts::sender_id(i % 6));
    }
    for (CONNECTION_IS05_ST& sender : records.connections->senders) {
        for (CONNECTION_LEG_IS05_ST& leg : sender.active.transport_params)
            write_text(leg.destination_ip, "233.252.0.100");
    }
    records.settings->sdp_st2110_mode = 1;
    records.settings->sdp_rtp_payload_video = 96;
    records.settings->sdp_video_frame_rate = 1;
    records.sdp = with_more_attributes(ConnectionApi().make_single_senderid_sdp(
        records.connections.get(), 0, records.settings.get()));
    return records;
}

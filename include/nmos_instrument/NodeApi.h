// SPDX-License-Identifier: Apache-2.0
//
// NodeApi: the response bodies of the IS-04 v1.2 Node API.
//
// nmos_instrument.h says what holds for all operations. None of these writes into its record.
//
// ```cpp
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST()); // all zero
// node->clocks_count = 1;
// std::strcpy(node->clocks[0].name, "clk0");
// std::strcpy(node->clocks[0].ref_type, "internal");
//
// NodeApi api;
// assert(api.make_version() == "[\n    \"v1.2/\"\n]\n");
// const std::string self = api.make_self(node.get());
// assert(self.find("{\"name\":\"clk0\",\"ref_type\":\"internal\"}") != std::string::npos);
// assert(api.make_sources(node.get()) == "[]");
// assert(api.make_sourceid(node.get(), 0) == "{}"); // there is none
//
// try {
//     api.make_receiverid(node.get(), 24);
//     assert(false);
// } catch (const std::out_of_range& error) {
//     assert(std::string(error.what()) == "NodeApi::make_receiverid: index 24 is outside 0 to 23");
// }
// ```
//
// The selectors mean the same in every operation and class. Pass the same values everywhere:
//
//   receiver_filter     0 lists all kinds of receivers; any other value the video receivers only
//   audio_group_filter  0 lists audio group G1 of each stream, 1 lists G1 and G2, any other value
//                       all four
//   sender_filter,      0 leaves out senders 1, 2 and 3 (video of streams 2 to 4); any other value
//   all_senders         lists all six
//
// Intentional: a value other than 0 narrows the receivers but widens the senders. A host that has
// one switch for both inverts it for one of them.

#ifndef NMOS_INSTRUMENT_NODEAPI_H
#define NMOS_INSTRUMENT_NODEAPI_H

#include <string>

#include "nmos_instrument/export.h"
#include "nmos_instrument/node_state.h"

class NMOS_INSTRUMENT_EXPORT NodeApi
{
public:
    NodeApi();
    ~NodeApi();

    /// Does nothing.
    void init();

    /// Listing of the API's versions: "v1.2/". Fixed text with an indent of four spaces; it ends
    /// with a line feed.
    std::string make_version();

    /// Listing of the API's resources, "self/" to "receivers/". Fixed text; `rec` is not read and
    /// may be null.
    std::string make_base(NMOS_IS04_ST* rec);

    /// Body of "self": the node (IS-04 v1.2, node.json). Plain slashes.
    ///
    /// "api"."endpoints" holds `endpoints[0]` only; without a valid entry it is absent.
    /// Intentional: the node is reached at one address. "services" is always [], "caps" and "tags"
    /// are always {}. A PTP clock has four more members than other clocks.
    ///
    /// Throws std::overflow_error when the port of any valid endpoint, shown or not, is NaN or
    /// infinite.
    std::string make_self(NMOS_IS04_ST* rec);

    /// Body of "sources": array of `sources_count` sources (IS-04 v1.2, source.json). Plain
    /// slashes.
    ///
    /// Only entry 1 has "channels": one channel with an empty label.
    std::string make_sources(NMOS_IS04_ST* rec);

    /// Body of "sources/{id}" for `sources[index]`, index 0 to 3. Slashes escaped ("\/"), unlike
    /// in make_sources.
    ///
    /// "{}" when `sources_count` is exactly 0, whatever the index; otherwise the count is not read.
    /// Throws std::out_of_range for any other index.
    std::string make_sourceid(NMOS_IS04_ST* rec, int index);

    /// Body of "flows": array of `flows_count` flows (IS-04 v1.2, flow.json). Plain slashes.
    ///
    /// Entry 0 is raw video with three components. Intentional: each has the full frame width and
    /// height, Cb and Cr of 4:2:2 too, since the record holds one size. Entry 1 is raw audio; its
    /// "sample_rate"."denominator" is always 1. Entries 2 and 3 have only what all flows have.
    ///
    /// Throws std::overflow_error when a number that is written is NaN or infinite.
    std::string make_flows(NMOS_IS04_ST* rec);

    /// Body of "flows/{id}" for `flows[index]`, index 0 to 3. Plain slashes. "{}" when
    /// `flows_count` is exactly 0. Throws std::out_of_range, std::overflow_error.
    std::string make_flowid(NMOS_IS04_ST* rec, int index);

    /// Body of "devices": array of `devices_count` devices (IS-04 v1.2, device.json). Plain
    /// slashes. The selectors decide which of a device's sender and receiver ids are listed.
    std::string make_devices(NMOS_IS04_ST* rec, int receiver_filter, int audio_group_filter,
                             int sender_filter);

    /// Body of "devices/{id}" for `devices[index]`, index 0 to 3. Plain slashes. `devices_count`
    /// is not read. Throws std::out_of_range.
    std::string make_deviceid(NMOS_IS04_ST* rec, int index, int receiver_filter,
                              int audio_group_filter, int sender_filter);

    /// Body of "senders": array of those of `senders_count` senders that `all_senders` lets
    /// through (IS-04 v1.2, sender.json). Plain slashes.
    std::string make_senders(NMOS_IS04_ST* rec, int all_senders);

    /// Body of "senders/{id}" for `senders[index]`, index 0 to 5, whatever the selectors say. Plain
    /// slashes. "{}" when `senders_count` is exactly 0. Throws std::out_of_range.
    std::string make_senderid(NMOS_IS04_ST* rec, int index);

    /// Body of "receivers": array of those of `receivers_count` receivers that the selectors let
    /// through (IS-04 v1.2, receiver.json). Plain slashes.
    std::string make_receivers(NMOS_IS04_ST* rec, int receiver_filter, int audio_group_filter);

    /// Body of "receivers/{id}" for `receivers[index]`, index 0 to 23, whatever the selectors say.
    /// Plain slashes. `receivers_count` is not read. Throws std::out_of_range.
    std::string make_receiverid(NMOS_IS04_ST* rec, int index);

    /// Body of "receivers/{id}/target": the sender that a receiver is to subscribe to (IS-04 v1.2,
    /// nodeapi-receiver-target.json), from one sender record. Plain slashes.
    ///
    /// Unlike a sender body, it has an empty "caps", and "id", "device_id" and "flow_id" are null
    /// where the field holds "null".
    std::string make_receiverid_target(SENDER_IS04_ST* sender);
};

#endif

// SPDX-License-Identifier: Apache-2.0
//
// One function for each IS-04 resource, shared by the Node API and the Registration API.

#ifndef NMOS_INSTRUMENT_SRC_BODIES_IS04_BODIES_H
#define NMOS_INSTRUMENT_SRC_BODIES_IS04_BODIES_H

#include <cstddef>

#include "json/json_writer.h"
#include "nmos_instrument/node_state.h"
#include "records/membership.h"

namespace nmos_instrument {

/// Which of a device's ids its body lists.
struct DeviceSelection
{
    ReceiverSelection receivers;
    int all_senders;
};

/// Whether a device body has its (always empty) "tags".
enum class DeviceTags
{
    present,
    absent
};

/// A sender as a resource of its own, or as what a receiver is asked to subscribe to: there it has
/// "caps", and ids may be null.
enum class SenderForm
{
    resource,
    receiver_target
};

void write_node(JsonText& text, const NMOS_IS04_ST& node);
void write_device(JsonText& text, const DEVICE_IS04_ST& device, const DeviceSelection& selection,
                  DeviceTags tags);
/// The position decides the kind, see records/positions.h.
void write_source(JsonText& text, const SOURCE_IS04_ST& source, std::size_t position);
/// The position decides the kind, see records/positions.h.
void write_flow(JsonText& text, const FLOW_IS04_ST& flow, std::size_t position);
void write_sender(JsonText& text, const SENDER_IS04_ST& sender, SenderForm form);
void write_receiver(JsonText& text, const RECEIVER_IS04_ST& receiver);

} // namespace nmos_instrument

#endif

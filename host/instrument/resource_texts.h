// SPDX-License-Identifier: Apache-2.0
//
// What everybody sees of the resources, and whether it still reads the same.

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_RESOURCE_TEXTS_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_RESOURCE_TEXTS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "conformance/conformance.h"
#include "instrument/put_back.h"
#include "instrument/saved_state.h"
#include "records/fill_records.h"
#include "records/record_shape.h"
#include "records/record_text.h"

namespace nmos_instrument::host {

/// Advances the counter of a kind of resources.
using CountChange = void (Nmos::*)();

/// Calls `visit` with the counter of its kind, the id, the version field and the body of every
/// resource, as everybody sees it. The order never changes.
template <class Visit>
void visit_resources(Records& records, const Conformance& conformance, Visit&& visit)
{
    NodeApi api;
    NMOS_IS04_ST& node = records.node;
    const StreamSelection& selection = records.selection;
    const auto counted = [](std::int32_t count) { return static_cast<std::size_t>(count); };
    visit(&Nmos::update_txt_ver_slf, node.id, node.version, [&] { return api.make_self(&node); });
    for (int i = 0; i < node.sources_count; ++i)
        visit(&Nmos::update_txt_ver_src, node.sources[i].id, node.sources[i].version,
              [&, i] { return conformance.source(api.make_sourceid(&node, i)); });
    for (int i = 0; i < node.flows_count; ++i)
        visit(&Nmos::update_txt_ver_flw, node.flows[i].id, node.flows[i].version,
              [&, i] { return conformance.flow(api.make_flowid(&node, i)); });
    for (int i = 0; i < node.devices_count; ++i)
        visit(&Nmos::update_txt_ver_dvc, node.devices[i].id, node.devices[i].version, [&, i] {
            return api.make_deviceid(&node, i, selection.receiver_filter,
                                     selection.audio_group_filter, selection.sender_filter);
        });
    for (int i = 0; i < node.senders_count; ++i) {
        if (has_sender(node, counted(i)))
            visit(&Nmos::update_txt_ver_snd, node.senders[i].id, node.senders[i].version,
                  [&, i] { return api.make_senderid(&node, i); });
    }
    for (int i = 0; i < node.receivers_count; ++i) {
        if (has_receiver(node, counted(i)))
            visit(&Nmos::update_txt_ver_rcv, node.receivers[i].id, node.receivers[i].version,
                  [&, i] { return conformance.receiver(api.make_receiverid(&node, i)); });
    }
}

/// The hash of a body without its version.
template <std::size_t N, class MakeBody>
std::uint64_t body_hash(char (&version)[N], MakeBody&& make_body)
{
    const PutBack kept(version);
    set_text(version, "0:0"); // any constant text will do
    return stable_hash(make_body());
}

/// A sender's SDP file.
std::string sdp_text(Records& records, const Conformance& conformance, std::size_t sender);

/// The hash of a sender's SDP file without its version.
std::uint64_t sdp_hash(Records& records, const Conformance& conformance, std::size_t sender);

} // namespace nmos_instrument::host

#endif

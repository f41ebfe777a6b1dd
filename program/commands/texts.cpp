// SPDX-License-Identifier: Apache-2.0

#include "commands/texts.h"

#include <nmos_instrument/nmos_instrument.h>

#include "records/addresses.h"

namespace nmos_instrument::program {
namespace {

std::size_t sources(const host::Records& records)
{
    return static_cast<std::size_t>(records.node.sources_count);
}

std::size_t flows(const host::Records& records)
{
    return static_cast<std::size_t>(records.node.flows_count);
}

std::size_t devices(const host::Records& records)
{
    return static_cast<std::size_t>(records.node.devices_count);
}

std::size_t senders(const host::Records& records)
{
    return static_cast<std::size_t>(records.node.senders_count);
}

std::size_t receivers(const host::Records& records)
{
    return static_cast<std::size_t>(records.node.receivers_count);
}

using Input = const TextInput&;

std::string sender_constraints(Input in, int index)
{
    std::string primary = in.configuration.interfaces[0].address;
    std::string secondary = in.configuration.interfaces[1].address;
    return ConnectionApi().make_single_senderid_constraints(&in.records.connections, index,
                                                            &primary, &secondary);
}

std::string receiver_constraints(Input in, int index)
{
    std::string primary = in.configuration.interfaces[0].address;
    std::string secondary = in.configuration.interfaces[1].address;
    return ConnectionApi().make_single_receiverid_constraints(&in.records.connections, index,
                                                              &primary, &secondary);
}

std::string sdp(Input in, int index)
{
    host::set_sdp_session(in.records, static_cast<std::size_t>(index));
    return ConnectionApi().make_single_senderid_sdp(&in.records.connections, index,
                                                    &in.records.settings);
}

std::string service(Input in, int)
{
    Nmos nmos;
    nmos.update_txt_port_number(host::configured_address(in.configuration.server).port);
    return nmos.make_node_service_text(1);
}

constexpr TextForm json = TextForm::json;
constexpr TextForm fixed = TextForm::fixed_lines;

// clang-format off
constexpr Text texts[] = {
    // The IS-04 Node API.
    {"self", "the node", json, nullptr,
     [](Input in, int) { return NodeApi().make_self(&in.records.node); }},
    {"sources", "all sources", json, nullptr,
     [](Input in, int) { return NodeApi().make_sources(&in.records.node); }},
    {"source", "one source", json, sources,
     [](Input in, int index) { return NodeApi().make_sourceid(&in.records.node, index); }},
    {"flows", "all flows", json, nullptr,
     [](Input in, int) { return NodeApi().make_flows(&in.records.node); }},
    {"flow", "one flow", json, flows,
     [](Input in, int index) { return NodeApi().make_flowid(&in.records.node, index); }},
    {"devices", "all devices", json, nullptr,
     [](Input in, int) {
         const host::StreamSelection& s = in.records.selection;
         return NodeApi().make_devices(&in.records.node, s.receiver_filter, s.audio_group_filter,
                                       s.sender_filter);
     }},
    {"device", "one device", json, devices,
     [](Input in, int index) {
         const host::StreamSelection& s = in.records.selection;
         return NodeApi().make_deviceid(&in.records.node, index, s.receiver_filter,
                                        s.audio_group_filter, s.sender_filter);
     }},
    {"senders", "the senders that the node shows", json, nullptr,
     [](Input in, int) {
         return NodeApi().make_senders(&in.records.node, in.records.selection.sender_filter);
     }},
    {"sender", "one sender", json, senders,
     [](Input in, int index) { return NodeApi().make_senderid(&in.records.node, index); }},
    {"receivers", "the receivers that the node shows", json, nullptr,
     [](Input in, int) {
         const host::StreamSelection& s = in.records.selection;
         return NodeApi().make_receivers(&in.records.node, s.receiver_filter,
                                         s.audio_group_filter);
     }},
    {"receiver", "one receiver", json, receivers,
     [](Input in, int index) { return NodeApi().make_receiverid(&in.records.node, index); }},
    {"target", "one sender as the target of a receiver", json, senders,
     [](Input in, int index) {
         return NodeApi().make_receiverid_target(&in.records.node.senders[index]);
     }},

    // The IS-04 Registration API.
    {"resource-node", "registration of the node", json, nullptr,
     [](Input in, int) { return RegistrationApi().make_resource_node(&in.records.node); }},
    {"resource-sources", "registrations of all sources", json, nullptr,
     [](Input in, int) { return RegistrationApi().make_resource_sources(&in.records.node); }},
    {"resource-source", "registration of one source", json, sources,
     [](Input in, int index) {
         return RegistrationApi().make_resource_sourceid(&in.records.node, index);
     }},
    {"resource-flows", "registrations of all flows", json, nullptr,
     [](Input in, int) { return RegistrationApi().make_resource_flows(&in.records.node); }},
    {"resource-flow", "registration of one flow", json, flows,
     [](Input in, int index) {
         return RegistrationApi().make_resource_flowid(&in.records.node, index);
     }},
    {"resource-devices", "all devices, without tags or envelopes", json, nullptr,
     [](Input in, int) {
         const host::StreamSelection& s = in.records.selection;
         return RegistrationApi().make_resource_devices(&in.records.node, s.receiver_filter,
                                                        s.audio_group_filter, s.sender_filter);
     }},
    {"resource-device", "registration of one device", json, devices,
     [](Input in, int index) {
         const host::StreamSelection& s = in.records.selection;
         return RegistrationApi().make_resource_deviceid(&in.records.node, index,
                                                         s.receiver_filter, s.audio_group_filter,
                                                         s.sender_filter);
     }},
    {"resource-senders", "registrations of all senders", json, nullptr,
     [](Input in, int) { return RegistrationApi().make_resource_senders(&in.records.node); }},
    {"resource-sender", "registration of one sender", json, senders,
     [](Input in, int index) {
         return RegistrationApi().make_resource_senderid(&in.records.node, index);
     }},
    {"resource-receivers", "registrations of all receivers", json, nullptr,
     [](Input in, int) { return RegistrationApi().make_resource_receivers(&in.records.node); }},
    {"resource-receiver", "registration of one receiver", json, receivers,
     [](Input in, int index) {
         return RegistrationApi().make_resource_receiverid(&in.records.node, index);
     }},
    {"health", "heartbeat, an empty text", fixed, nullptr,
     [](Input in, int) { return RegistrationApi().make_health(&in.records.node); }},

    // The IS-05 Connection API.
    {"single-senders", "ids of the senders (not JSON if the last ones are hidden)", json, nullptr,
     [](Input in, int) {
         return ConnectionApi().make_single_senders(&in.records.node,
                                                    in.records.selection.sender_filter != 0);
     }},
    {"single-receivers", "ids of the receivers (not JSON if the last ones are hidden)", json,
     nullptr,
     [](Input in, int) {
         const host::StreamSelection& s = in.records.selection;
         return ConnectionApi().make_single_receivers(&in.records.node, s.receiver_filter,
                                                      s.audio_group_filter);
     }},
    {"senders-constraints", "constraints of one sender", json, senders, sender_constraints},
    {"senders-staged", "staged parameters of one sender", json, senders,
     [](Input in, int index) {
         return ConnectionApi().make_single_senderid_staged(&in.records.connections, index);
     }},
    {"senders-active", "active parameters of one sender", json, senders,
     [](Input in, int index) {
         return ConnectionApi().make_single_senderid_active(&in.records.connections, index);
     }},
    {"receivers-constraints", "constraints of one receiver", json, receivers,
     receiver_constraints},
    {"receivers-staged", "staged parameters of one receiver", json, receivers,
     [](Input in, int index) {
         return ConnectionApi().make_single_receiverid_staged(&in.records.connections, index);
     }},
    {"receivers-active", "active parameters of one receiver", json, receivers,
     [](Input in, int index) {
         return ConnectionApi().make_single_receiverid_active(&in.records.connections, index);
     }},
    {"sdp", "SDP file of one sender", fixed, senders, sdp},

    // Texts that belong to no NMOS API.
    {"service", "service file for the Avahi daemon", fixed, nullptr, service},
    {"params", "settings of the instrument", json, nullptr,
     [](Input in, int) { return Nmos().make_param_json(&in.records.settings, 0); }},

    // Listings of what is below a path. The second word is the path below /x-nmos/.
    {"root", "listing of /", fixed, nullptr,
     [](Input, int) { return Nmos().make_xnmos(); }},
    {"root x-nmos", "listing of /x-nmos/", fixed, nullptr,
     [](Input, int) { return Nmos().make_api(); }},
    {"root node", "versions of the Node API", fixed, nullptr,
     [](Input, int) { return NodeApi().make_version(); }},
    {"root node/v1.2", "resources of the Node API", fixed, nullptr,
     [](Input in, int) { return NodeApi().make_base(&in.records.node); }},
    {"root registration", "versions of the Registration API", fixed, nullptr,
     [](Input, int) { return RegistrationApi().make_version(); }},
    {"root registration/v1.2", "resources of the Registration API", fixed, nullptr,
     [](Input in, int) { return RegistrationApi().make_base(&in.records.node); }},
    {"root connection", "versions of the Connection API", fixed, nullptr,
     [](Input, int) { return ConnectionApi().make_version(); }},
    {"root connection/v1.0", "resources of the Connection API", fixed, nullptr,
     [](Input in, int) { return ConnectionApi().make_base(&in.records.connections); }},
    {"root connection/v1.0/bulk", "resources for bulk requests", fixed, nullptr,
     [](Input in, int) { return ConnectionApi().make_bulk(&in.records.connections); }},
    {"root connection/v1.0/bulk/senders", "an empty listing", fixed, nullptr,
     [](Input in, int) { return ConnectionApi().make_bulk_senders(&in.records.connections); }},
    {"root connection/v1.0/bulk/receivers", "an empty listing", fixed, nullptr,
     [](Input in, int) { return ConnectionApi().make_bulk_receivers(&in.records.connections); }},
    {"root connection/v1.0/single", "resources for single requests", fixed, nullptr,
     [](Input in, int) { return ConnectionApi().make_single(&in.records.connections); }},
    {"root connection/v1.0/single/senders/id", "resources of one sender", fixed, nullptr,
     [](Input in, int) { return ConnectionApi().make_single_senderid(&in.records.connections); }},
    {"root connection/v1.0/single/receivers/id", "resources of one receiver", fixed, nullptr,
     [](Input in, int) {
         return ConnectionApi().make_single_receiverid(&in.records.connections);
     }},
};
// clang-format on

} // namespace

std::span<const Text> all_texts()
{
    return texts;
}

const Text* find_text(std::string_view name)
{
    for (const Text& text : texts) {
        if (text.name == name)
            return &text;
    }
    return nullptr;
}

} // namespace nmos_instrument::program

// SPDX-License-Identifier: Apache-2.0

#include "support/all_operations.h"

#include <cstring>

namespace {

using Input = OperationInput;

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + '\n';
    return text;
}

std::string analysed(Input& in)
{
    sdp_str found = sdp_str();
    std::string errors;
    const int status = ConnectionApi().analyze_sdp_file(in.text, in.first_selector != 0,
                                                        static_cast<short>(in.index),
                                                        in.third_selector != 0, &errors, &found);
    return std::to_string(status) + '\n' + errors + found.source_ip[0] + found.multicast_ip[1] +
           found.rtp_payload_type;
}

std::string split(Input& in)
{
    std::string parts[8];
    int count = 0;
    ConnectionApi::split_string(in.text, " ", parts, 8, &count);
    std::string text = std::to_string(count);
    for (const std::string& part : parts)
        text += '|' + part;
    return text;
}

std::string replaced(Input& in)
{
    std::string subject = in.text;
    return Nmos().replaceAll(subject, "a", "bb");
}

std::string counters(Input&)
{
    Nmos nmos;
    nmos.update_txt_port_number(8080);
    nmos.update_txt_protocol(1);
    nmos.update_txt_ver_slf();
    nmos.update_txt_ver_src();
    nmos.update_txt_ver_flw();
    nmos.update_txt_ver_dvc();
    nmos.update_txt_ver_snd();
    nmos.update_txt_ver_rcv();
    return nmos.make_node_service_text(1);
}

std::string memberships(Input& in)
{
    Nmos nmos;
    return std::to_string(
        nmos.is_insert_node_senders(in.first_selector, in.index) * 2 +
        nmos.is_insert_node_receivers(in.first_selector, in.second_selector, in.index));
}

std::string updated_version(Input& in)
{
    RegistrationApi().update_version(in.node);
    return {in.node->version, strnlen(in.node->version, sizeof in.node->version)};
}

std::string updated_address(Input& in)
{
    RegistrationApi().update_ipAddress(in.node, "10.0.0.5", "8080");
    return {in.node->href, strnlen(in.node->href, sizeof in.node->href)};
}

std::string sender_constraints(Input& in)
{
    return ConnectionApi().make_single_senderid_constraints(nullptr, in.index, &in.text, &in.text);
}

std::string receiver_constraints(Input& in)
{
    return ConnectionApi().make_single_receiverid_constraints(nullptr, in.index, &in.text,
                                                              &in.text);
}

std::string nothing(Input&)
{
    NodeApi().init();
    ConnectionApi().init();
    const NetworkControlApi network_control;
    static_cast<void>(network_control);
    return {};
}

#define OPERATION(is_json, api, operation, ...)                                                    \
    {                                                                                              \
#api "::" #operation, [](Input& in) {                                                         \
         static_cast<void>(in);                                                                    \
         return api().operation(__VA_ARGS__);                                                      \
     },                                                                                            \
     false, is_json    \
    }
#define TEXT(...) OPERATION(false, __VA_ARGS__)
#define JSON(...) OPERATION(true, __VA_ARGS__)

const Operation operations[] = {
    {"init and empty classes", nothing},
    TEXT(NodeApi, make_version),
    TEXT(NodeApi, make_base, in.node),
    JSON(NodeApi, make_self, in.node),
    JSON(NodeApi, make_sources, in.node),
    JSON(NodeApi, make_sourceid, in.node, in.index),
    JSON(NodeApi, make_flows, in.node),
    JSON(NodeApi, make_flowid, in.node, in.index),
    JSON(NodeApi, make_devices, in.node, in.first_selector, in.second_selector, in.third_selector),
    JSON(NodeApi, make_deviceid, in.node, in.index, in.first_selector, in.second_selector,
         in.third_selector),
    JSON(NodeApi, make_senders, in.node, in.third_selector),
    JSON(NodeApi, make_senderid, in.node, in.index),
    JSON(NodeApi, make_receivers, in.node, in.first_selector, in.second_selector),
    JSON(NodeApi, make_receiverid, in.node, in.index),
    JSON(NodeApi, make_receiverid_target, &in.node->senders[0]),
    TEXT(RegistrationApi, make_version),
    TEXT(RegistrationApi, make_base, in.node),
    TEXT(RegistrationApi, make_health, in.node),
    {"RegistrationApi::make_resource_node",
     [](Input& in) { return RegistrationApi().make_resource_node(in.node); }, true, true},
    JSON(RegistrationApi, make_resource_devices, in.node, in.first_selector, in.second_selector,
         in.third_selector),
    JSON(RegistrationApi, make_resource_deviceid, in.node, in.index, in.first_selector,
         in.second_selector, in.third_selector),
    JSON(RegistrationApi, make_resource_sources, in.node),
    JSON(RegistrationApi, make_resource_sourceid, in.node, in.index),
    JSON(RegistrationApi, make_resource_flows, in.node),
    JSON(RegistrationApi, make_resource_flowid, in.node, in.index),
    JSON(RegistrationApi, make_resource_senders, in.node),
    JSON(RegistrationApi, make_resource_senderid, in.node, in.index),
    JSON(RegistrationApi, make_resource_receivers, in.node),
    JSON(RegistrationApi, make_resource_receiverid, in.node, in.index),
    {"RegistrationApi::update_version", updated_version, true},
    {"RegistrationApi::update_ipAddress", updated_address, true},
    TEXT(ConnectionApi, make_version),
    TEXT(ConnectionApi, make_base, in.connections),
    TEXT(ConnectionApi, make_bulk, in.connections),
    TEXT(ConnectionApi, make_bulk_senders, in.connections),
    TEXT(ConnectionApi, make_bulk_receivers, in.connections),
    TEXT(ConnectionApi, make_single, in.connections),
    TEXT(ConnectionApi, make_single_senderid, in.connections),
    TEXT(ConnectionApi, make_single_receiverid, in.connections),
    TEXT(ConnectionApi, make_single_senders, in.node, in.third_selector != 0),
    TEXT(ConnectionApi, make_single_receivers, in.node, in.first_selector, in.second_selector),
    {"ConnectionApi::make_single_senderid_constraints", sender_constraints},
    {"ConnectionApi::make_single_receiverid_constraints", receiver_constraints},
    JSON(ConnectionApi, make_single_receiverid_staged, in.connections, in.index),
    JSON(ConnectionApi, make_single_receiverid_active, in.connections, in.index),
    JSON(ConnectionApi, make_single_senderid_staged, in.connections, in.index),
    JSON(ConnectionApi, make_single_senderid_active, in.connections, in.index),
    TEXT(ConnectionApi, make_single_senderid_sdp, in.connections, in.index, in.settings),
    {"ConnectionApi::analyze_sdp_file", analysed},
    {"ConnectionApi::convertCRLF",
     [](Input& in) { return ConnectionApi::convertCRLF(in.text, "\n"); }},
    {"ConnectionApi::split_string", split},
    {"ConnectionApi::make_fullpath_from_request",
     [](Input& in) { return ConnectionApi::make_fullpath_from_request(in.text); }},
    {"Nmos::replaceAll", replaced},
    TEXT(Nmos, make_xnmos),
    TEXT(Nmos, make_api),
    JSON(Nmos, make_param_json, in.settings, in.index),
    {"Nmos::make_node_service_text and the setters", counters},
    {"Nmos::is_insert_node_senders and _receivers", memberships},
    {"check_record of the node",
     [](Input& in) { return joined(nmos_instrument::check_record(*in.node)); }},
    {"check_record of the connections",
     [](Input& in) { return joined(nmos_instrument::check_record(*in.connections)); }},
    {"check_record of the settings",
     [](Input& in) { return joined(nmos_instrument::check_record(*in.settings)); }},
    {"check_records",
     [](Input& in) {
         return joined(nmos_instrument::check_records(
             *in.node, *in.connections, *in.settings,
             {in.first_selector, in.second_selector, in.third_selector}));
     }},
    {"version", [](Input&) { return std::string(nmos_instrument::version()); }},
};

#undef JSON
#undef TEXT
#undef OPERATION

} // namespace

std::span<const Operation> all_operations()
{
    return operations;
}

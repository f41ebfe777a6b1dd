// SPDX-License-Identifier: Apache-2.0

#include "all_operations.h"

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

#define CALL(api, operation, ...)                                                                  \
    {                                                                                              \
#api "::" #operation, [](Input& in) {                                                         \
         static_cast<void>(in);                                                                    \
         return api().operation(__VA_ARGS__);                                                      \
     },                                                                                            \
     false    \
    }

const Operation operations[] = {
    {"init and empty classes", nothing, false},
    CALL(NodeApi, make_version),
    CALL(NodeApi, make_base, in.node),
    CALL(NodeApi, make_self, in.node),
    CALL(NodeApi, make_sources, in.node),
    CALL(NodeApi, make_sourceid, in.node, in.index),
    CALL(NodeApi, make_flows, in.node),
    CALL(NodeApi, make_flowid, in.node, in.index),
    CALL(NodeApi, make_devices, in.node, in.first_selector, in.second_selector, in.third_selector),
    CALL(NodeApi, make_deviceid, in.node, in.index, in.first_selector, in.second_selector,
         in.third_selector),
    CALL(NodeApi, make_senders, in.node, in.third_selector),
    CALL(NodeApi, make_senderid, in.node, in.index),
    CALL(NodeApi, make_receivers, in.node, in.first_selector, in.second_selector),
    CALL(NodeApi, make_receiverid, in.node, in.index),
    CALL(NodeApi, make_receiverid_target, &in.node->senders[0]),
    CALL(RegistrationApi, make_version),
    CALL(RegistrationApi, make_base, in.node),
    CALL(RegistrationApi, make_health, in.node),
    {"RegistrationApi::make_resource_node",
     [](Input& in) { return RegistrationApi().make_resource_node(in.node); }, true},
    CALL(RegistrationApi, make_resource_devices, in.node, in.first_selector, in.second_selector,
         in.third_selector),
    CALL(RegistrationApi, make_resource_deviceid, in.node, in.index, in.first_selector,
         in.second_selector, in.third_selector),
    CALL(RegistrationApi, make_resource_sources, in.node),
    CALL(RegistrationApi, make_resource_sourceid, in.node, in.index),
    CALL(RegistrationApi, make_resource_flows, in.node),
    CALL(RegistrationApi, make_resource_flowid, in.node, in.index),
    CALL(RegistrationApi, make_resource_senders, in.node),
    CALL(RegistrationApi, make_resource_senderid, in.node, in.index),
    CALL(RegistrationApi, make_resource_receivers, in.node),
    CALL(RegistrationApi, make_resource_receiverid, in.node, in.index),
    {"RegistrationApi::update_version", updated_version, true},
    {"RegistrationApi::update_ipAddress", updated_address, true},
    CALL(ConnectionApi, make_version),
    CALL(ConnectionApi, make_base, in.connections),
    CALL(ConnectionApi, make_bulk, in.connections),
    CALL(ConnectionApi, make_bulk_senders, in.connections),
    CALL(ConnectionApi, make_bulk_receivers, in.connections),
    CALL(ConnectionApi, make_single, in.connections),
    CALL(ConnectionApi, make_single_senderid, in.connections),
    CALL(ConnectionApi, make_single_receiverid, in.connections),
    CALL(ConnectionApi, make_single_senders, in.node, in.third_selector != 0),
    CALL(ConnectionApi, make_single_receivers, in.node, in.first_selector, in.second_selector),
    {"ConnectionApi::make_single_senderid_constraints", sender_constraints, false},
    {"ConnectionApi::make_single_receiverid_constraints", receiver_constraints, false},
    CALL(ConnectionApi, make_single_receiverid_staged, in.connections, in.index),
    CALL(ConnectionApi, make_single_receiverid_active, in.connections, in.index),
    CALL(ConnectionApi, make_single_senderid_staged, in.connections, in.index),
    CALL(ConnectionApi, make_single_senderid_active, in.connections, in.index),
    CALL(ConnectionApi, make_single_senderid_sdp, in.connections, in.index, in.settings),
    {"ConnectionApi::analyze_sdp_file", analysed, false},
    {"ConnectionApi::convertCRLF",
     [](Input& in) { return ConnectionApi::convertCRLF(in.text, "\n"); }, false},
    {"ConnectionApi::split_string", split, false},
    {"ConnectionApi::make_fullpath_from_request",
     [](Input& in) { return ConnectionApi::make_fullpath_from_request(in.text); }, false},
    {"Nmos::replaceAll", replaced, false},
    CALL(Nmos, make_xnmos),
    CALL(Nmos, make_api),
    CALL(Nmos, make_param_json, in.settings, in.index),
    {"Nmos::make_node_service_text and the setters", counters, false},
    {"Nmos::is_insert_node_senders and _receivers", memberships, false},
    {"check_record of the node",
     [](Input& in) { return joined(nmos_instrument::check_record(*in.node)); }, false},
    {"check_record of the connections",
     [](Input& in) { return joined(nmos_instrument::check_record(*in.connections)); }, false},
    {"check_record of the settings",
     [](Input& in) { return joined(nmos_instrument::check_record(*in.settings)); }, false},
};

#undef CALL

} // namespace

std::span<const Operation> all_operations()
{
    return operations;
}

// SPDX-License-Identifier: Apache-2.0

#include "instrument/adopt_records.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "configuration/resource_counts.h"
#include "connection/activate_staged.h"
#include "connection/stage_patch.h"
#include "records/identity.h"
#include "records/read_back.h"
#include "records/record_findings.h"
#include "records/record_shape.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

template <class Resource, std::size_t N>
void set_versions(Resource (&resources)[N], const std::string& version)
{
    for (Resource& resource : resources)
        set_text(resource.version, version);
}

void set_versions(NMOS_IS04_ST& node, const TaiTime& now)
{
    const std::string version = to_text(now);
    set_text(node.version, version);
    set_versions(node.sources, version);
    set_versions(node.flows, version);
    set_versions(node.devices, version);
    set_versions(node.senders, version);
    set_versions(node.receivers, version);
    node.version_seconds = now.seconds;
    node.version_nanoseconds = now.nanoseconds;
}

void set_endpoint(NMOS_IS04_ST& node, const NodeAddress& address)
{
    node.endpoints_count = 1;
    set_text(node.endpoints[0].protocol, "http");
    set_address(node, address);
}

void set_interface(CONNECTION_HALF_IS05_ST& half, const Configuration& configuration)
{
    for (std::size_t i = 0; i < leg_count; ++i) {
        if (text_of(half.transport_params[i].interface_ip) == null_text)
            set_text(half.transport_params[i].interface_ip, configuration.interfaces[i].address);
    }
}

/// An id without its NUL is for check_record to find.
void follow(const CONNECTION_HALF_IS05_ST& active, Side side, SUBSCRIPTION_IS04_ST& subscription)
{
    if (text_of(active.peer_id).size() < sizeof active.peer_id)
        subscription = subscription_of(active, side);
}

/// What is not known before all is found to be right.
void finish(const FilledRecords& filled, const TaiTime& now)
{
    Records& records = *filled.records;
    for (std::size_t i = 0; i < sender_count; ++i) {
        if (!has_sender(records.node, i))
            continue;
        const std::string id(text_of(records.node.senders[i].id));
        records.sdp_sessions[i] = {sdp_session_id(id), now.seconds};
        set_activation(records.connections.senders[i].staged, ActivationTexts());
    }
    for (std::size_t i = 0; i < receiver_count; ++i) {
        if (!has_receiver(records.node, i))
            continue;
        CONNECTION_IS05_ST& receiver = records.connections.receivers[i];
        set_interface(receiver.staged, filled.configuration);
        set_interface(receiver.active, filled.configuration);
        set_activation(receiver.staged, ActivationTexts());
    }
    set_sdp_session(records, 0);
}

} // namespace

FilledRecords filled_records(const Configuration& configuration, const NodeAddress& address,
                             const TaiTime& now)
{
    return {make_records(configuration, address, now), configuration};
}

FilledRecords adopt_records(const NMOS_IS04_ST& node, const NMOS_IS05_ST& connections,
                            const st_param_sys& settings, const StreamSelection& selection,
                            const Configuration& rest, const NodeAddress& address,
                            const TaiTime& now)
{
    FilledRecords filled{std::make_unique<Records>(), {}};
    Records& records = *filled.records;
    records.node = node;
    records.connections = connections;
    records.settings = settings;
    records.selection = selection;
    RecordFindings findings;
    check_counts(node, streams_of(records, findings), findings);
    findings.expect_none(); // before anything is written up to a count
    set_versions(records.node, now);
    set_endpoint(records.node, address);
    const std::string any_session = "0"; // until the ids are known to be right
    set_text(records.connections.sdp_session_id, any_session);
    set_text(records.connections.sdp_session_version, any_session);
    follow_connections(records);
    filled.configuration = configuration_of(records, rest);
    finish(filled, now);
    return filled;
}

void follow_connections(Records& records)
{
    NMOS_IS04_ST& node = records.node;
    const NMOS_IS05_ST& connections = records.connections;
    for (std::size_t i = 0; i < sender_count; ++i) {
        if (has_sender(node, i))
            follow(connections.senders[i].active, Side::sender, node.senders[i].subscription[0]);
    }
    for (std::size_t i = 0; i < receiver_count; ++i) {
        if (has_receiver(node, i))
            follow(connections.receivers[i].active, Side::receiver,
                   node.receivers[i].subscription[0]);
    }
}

} // namespace nmos_instrument::host

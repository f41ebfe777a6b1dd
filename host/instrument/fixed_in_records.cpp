// SPDX-License-Identifier: Apache-2.0

#include "instrument/fixed_in_records.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

constexpr const char* of_the_start = ", as at the start";

template <std::size_t N>
void copy(const char (&from)[N], char (&to)[N])
{
    std::memcpy(to, from, N);
}

template <class Resource, std::size_t N>
void copy_versions(const Resource (&from)[N], Resource (&to)[N])
{
    for (std::size_t i = 0; i < N; ++i)
        copy(from[i].version, to[i].version);
}

template <std::size_t N>
void copy_scheduled(const CONNECTION_IS05_ST (&from)[N], CONNECTION_IS05_ST (&to)[N])
{
    for (std::size_t i = 0; i < N; ++i) {
        copy(from[i].staged.mode, to[i].staged.mode);
        copy(from[i].staged.requested_time, to[i].staged.requested_time);
        copy(from[i].staged.activation_time, to[i].staged.activation_time);
    }
}

class FixedParts
{
public:
    FixedParts(const Records& before, const Records& after, RecordFindings& findings)
        : before_(before.node), after_(after.node), findings_(findings)
    {}

    void check_counts()
    {
        number("node.endpoints_count", before_.endpoints_count, after_.endpoints_count);
        number("node.sources_count", before_.sources_count, after_.sources_count);
        number("node.flows_count", before_.flows_count, after_.flows_count);
        number("node.devices_count", before_.devices_count, after_.devices_count);
        number("node.senders_count", before_.senders_count, after_.senders_count);
        number("node.receivers_count", before_.receivers_count, after_.receivers_count);
        const DEVICE_IS04_ST& device = before_.devices[0];
        number("node.devices[0].sender_ids_count", device.sender_ids_count,
               after_.devices[0].sender_ids_count);
        number("node.devices[0].receiver_ids_count", device.receiver_ids_count,
               after_.devices[0].receiver_ids_count);
    }

    void check_node()
    {
        text("node.id", before_.id, after_.id);
        text("node.href", before_.href, after_.href);
        const ENDPOINT_IS04_ST& endpoint = before_.endpoints[0];
        text("node.endpoints[0].host", endpoint.host, after_.endpoints[0].host);
        number("node.endpoints[0].port", endpoint.port, after_.endpoints[0].port);
        text("node.endpoints[0].protocol", endpoint.protocol, after_.endpoints[0].protocol);
    }

    void check_device()
    {
        const DEVICE_IS04_ST& before = before_.devices[0];
        const DEVICE_IS04_ST& after = after_.devices[0];
        text("node.devices[0].id", before.id, after.id);
        text("node.devices[0].node_id", before.node_id, after.node_id);
        text("node.devices[0].controls[0].href", before.controls[0].href, after.controls[0].href);
        for (std::size_t i = 0; i < std::size(before.senders); ++i)
            text(path_of("node.devices[0].senders", i), before.senders[i], after.senders[i]);
        for (std::size_t i = 0; i < std::size(before.receivers); ++i)
            text(path_of("node.devices[0].receivers", i), before.receivers[i], after.receivers[i]);
    }

    void check_resources()
    {
        members("node.sources", before_.sources, after_.sources);
        members("node.flows", before_.flows, after_.flows);
        members("node.senders", before_.senders, after_.senders);
        members("node.receivers", before_.receivers, after_.receivers);
        for (std::size_t i = 0; i < std::size(before_.flows); ++i)
            text(path_of("node.flows", i, ".source_id"), before_.flows[i].source_id,
                 after_.flows[i].source_id);
        for (std::size_t i = 0; i < std::size(before_.senders); ++i) {
            text(path_of("node.senders", i, ".flow_id"), before_.senders[i].flow_id,
                 after_.senders[i].flow_id);
            text(path_of("node.senders", i, ".manifest_href"), before_.senders[i].manifest_href,
                 after_.senders[i].manifest_href);
        }
    }

private:
    template <std::size_t N>
    void text(const std::string& path, const char (&before)[N], const char (&after)[N])
    {
        findings_.expect_text(path, text_of(after), text_of(before), of_the_start);
    }

    void number(const std::string& path, double before, double after)
    {
        findings_.expect_number(path, after, before, of_the_start);
    }

    template <class Resource, std::size_t N>
    void members(const char* array, const Resource (&before)[N], const Resource (&after)[N])
    {
        for (std::size_t i = 0; i < N; ++i) {
            text(path_of(array, i, ".id"), before[i].id, after[i].id);
            text(path_of(array, i, ".device_id"), before[i].device_id, after[i].device_id);
        }
    }

    const NMOS_IS04_ST& before_;
    const NMOS_IS04_ST& after_;
    RecordFindings& findings_;
};

} // namespace

void check_fixed(const Records& before, const Records& after, RecordFindings& findings)
{
    const auto selector = [&](const char* path, int its_before, int its_after) {
        findings.expect_number(path, its_after, its_before, of_the_start);
    };
    selector("selection.receiver_filter", before.selection.receiver_filter,
             after.selection.receiver_filter);
    selector("selection.audio_group_filter", before.selection.audio_group_filter,
             after.selection.audio_group_filter);
    selector("selection.sender_filter", before.selection.sender_filter,
             after.selection.sender_filter);
    FixedParts parts(before, after, findings);
    parts.check_counts();
    parts.check_node();
    parts.check_device();
    parts.check_resources();
}

void put_back_own(const Records& before, Records& after)
{
    const NMOS_IS04_ST& from = before.node;
    NMOS_IS04_ST& to = after.node;
    copy(from.version, to.version);
    to.version_seconds = from.version_seconds;
    to.version_nanoseconds = from.version_nanoseconds;
    copy_versions(from.sources, to.sources);
    copy_versions(from.flows, to.flows);
    copy_versions(from.devices, to.devices);
    copy_versions(from.senders, to.senders);
    copy_versions(from.receivers, to.receivers);
    after.sdp_sessions = before.sdp_sessions;
    copy(before.connections.sdp_session_id, after.connections.sdp_session_id);
    copy(before.connections.sdp_session_version, after.connections.sdp_session_version);
    copy_scheduled(before.connections.senders, after.connections.senders);
    copy_scheduled(before.connections.receivers, after.connections.receivers);
}

} // namespace nmos_instrument::host

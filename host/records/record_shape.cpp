// SPDX-License-Identifier: Apache-2.0

#include "records/record_shape.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

constexpr std::int32_t every_sender = sender_count;
constexpr std::int32_t every_video_sender = stream_count;
constexpr std::int32_t every_receiver = receiver_count;

std::size_t counted(std::int32_t count)
{
    return static_cast<std::size_t>(count);
}

template <class Meaning, std::size_t N>
Meaning choose(const char* path, int found, const std::array<Meaning, N>& meanings,
               RecordFindings& findings)
{
    if (found >= 0 && counted(found) < N)
        return meanings[counted(found)];
    findings.refuse(path, std::to_string(found), "is 0 to " + std::to_string(N - 1));
    return meanings[0];
}

/// Those that are shown are there.
void check_senders_count(std::int32_t count, const StreamSettings& streams,
                         RecordFindings& findings)
{
    const bool stream_1 = streams.senders == SenderStreams::stream_1;
    const std::int32_t lowest = stream_1 ? 1 : every_video_sender;
    if (count != every_sender && (count < lowest || count > every_video_sender))
        findings.refuse("node.senders_count", std::to_string(count),
                        stream_1 ? "are 1 to 4 (video alone) and 6" : "are 4 (video alone) and 6");
}

void check_receivers_count(std::int32_t count, const StreamSettings& streams,
                           RecordFindings& findings)
{
    std::int32_t lowest = 1;
    for (std::int32_t i = 0; i < every_receiver; ++i) {
        if (why_receiver_is_hidden(streams, counted(i)) == nullptr)
            lowest = i + 1;
    }
    if (count < lowest || count > every_receiver)
        findings.refuse(
            "node.receivers_count", std::to_string(count),
            (lowest == every_receiver ? "is " : "is " + std::to_string(lowest) + " to ") +
                std::to_string(every_receiver) + " with these selectors");
}

/// Leg 0 is on the first interface, leg 1 on the second.
template <class Resource>
void check_bindings(const NMOS_IS04_ST& node, const std::string& path, const Resource& resource,
                    RecordFindings& findings)
{
    findings.expect_number(path + ".interface_bindings_count", resource.interface_bindings_count,
                           interface_count);
    for (std::size_t i = 0; i < interface_count; ++i)
        findings.expect_text(path + path_of(".interface_bindings", i),
                             text_of(resource.interface_bindings[i]),
                             text_of(node.interfaces[i].name),
                             ", the name of node.interfaces[" + std::to_string(i) + ']');
}

} // namespace

bool has_sender(const NMOS_IS04_ST& node, std::size_t sender)
{
    return sender < counted(node.senders_count) && !text_of(node.senders[sender].id).empty();
}

bool has_receiver(const NMOS_IS04_ST& node, std::size_t receiver)
{
    return receiver < counted(node.receivers_count) &&
           !text_of(node.receivers[receiver].id).empty();
}

StreamSettings streams_of(const Records& records, RecordFindings& findings)
{
    const StreamSelection& selection = records.selection;
    StreamSettings streams;
    streams.receiver_essences = choose("selection.receiver_filter", selection.receiver_filter,
                                       std::array{Essences::all, Essences::video_only}, findings);
    streams.audio_groups = choose(
        "selection.audio_group_filter", selection.audio_group_filter,
        std::array{AudioGroups::g1, AudioGroups::g1_and_g2, AudioGroups::all_four}, findings);
    streams.senders = choose("selection.sender_filter", selection.sender_filter,
                             std::array{SenderStreams::stream_1, SenderStreams::all}, findings);
    streams.sender_essences =
        records.node.senders_count == every_sender ? Essences::all : Essences::video_only;
    return streams;
}

void check_counts(const NMOS_IS04_ST& node, const StreamSettings& streams, RecordFindings& findings)
{
    const bool all = streams.sender_essences == Essences::all;
    const char* const why = all ? ", with senders of all kinds" : ", with senders of video alone";
    findings.expect_number("node.versions_count", node.versions_count, 1);
    findings.expect_number("node.clocks_count", node.clocks_count, 1);
    findings.expect_number("node.interfaces_count", node.interfaces_count, interface_count);
    findings.expect_number("node.sources_count", node.sources_count, all ? source_count : 1, why);
    findings.expect_number("node.flows_count", node.flows_count, all ? flow_count : 1, why);
    findings.expect_number("node.devices_count", node.devices_count, 1);
    check_senders_count(node.senders_count, streams, findings);
    check_receivers_count(node.receivers_count, streams, findings);
    const DEVICE_IS04_ST& device = node.devices[0];
    findings.expect_number("node.devices[0].sender_ids_count", device.sender_ids_count,
                           node.senders_count, ", as node.senders_count");
    findings.expect_number("node.devices[0].receiver_ids_count", device.receiver_ids_count,
                           node.receivers_count, ", as node.receivers_count");
    const std::size_t most_controls = std::size(device.controls);
    if (device.controls_count < 1 || counted(device.controls_count) > most_controls)
        findings.refuse("node.devices[0].controls_count", std::to_string(device.controls_count),
                        "is 1 to " + std::to_string(most_controls));
}

std::vector<std::string> findings_in(const Records& records)
{
    const StreamSelection& selection = records.selection;
    std::vector<std::string> findings = nmos_instrument::check_records(
        records.node, records.connections, records.settings,
        {selection.receiver_filter, selection.audio_group_filter, selection.sender_filter});
    // Connections of hidden slots too, if they are in use: they are saved like the others.
    for (const std::string& finding : nmos_instrument::check_record(records.connections)) {
        const std::string line = "connections." + finding;
        if (std::find(findings.begin(), findings.end(), line) == findings.end())
            findings.push_back(line);
    }
    return findings;
}

void check_references(const NMOS_IS04_ST& node, RecordFindings& findings)
{
    const auto id_of = [](const char* array, std::size_t index) {
        return ", the id of node." + path_of(array, index);
    };
    const DEVICE_IS04_ST& device = node.devices[0];
    findings.expect_text("node.versions[0]", text_of(node.versions[0]), "v1.2");
    findings.expect_text("node.devices[0].controls[0].type", text_of(device.controls[0].type),
                         "urn:x-nmos:control:sr-ctrl/v1.0");
    for (std::size_t i = 0; i < counted(node.flows_count); ++i)
        findings.expect_text(path_of("node.flows", i, ".source_id"),
                             text_of(node.flows[i].source_id), text_of(node.sources[i].id),
                             id_of("sources", i));
    for (std::size_t i = 0; i < counted(node.senders_count); ++i) {
        const SENDER_IS04_ST& sender = node.senders[i];
        findings.expect_text(path_of("node.devices[0].senders", i), text_of(device.senders[i]),
                             text_of(sender.id), id_of("senders", i));
        if (!has_sender(node, i))
            continue;
        const std::size_t flow = index_of(essence_of_sender(i));
        findings.expect_text(path_of("node.senders", i, ".flow_id"), text_of(sender.flow_id),
                             text_of(node.flows[flow].id), id_of("flows", flow));
        check_bindings(node, path_of("node.senders", i), sender, findings);
    }
    for (std::size_t i = 0; i < counted(node.receivers_count); ++i) {
        const RECEIVER_IS04_ST& receiver = node.receivers[i];
        findings.expect_text(path_of("node.devices[0].receivers", i), text_of(device.receivers[i]),
                             text_of(receiver.id), id_of("receivers", i));
        if (has_receiver(node, i))
            check_bindings(node, path_of("node.receivers", i), receiver, findings);
    }
}

} // namespace nmos_instrument::host

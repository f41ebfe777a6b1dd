// SPDX-License-Identifier: Apache-2.0
//
// The fields are visited in the order of the record, and only those that a body
// shows. A record without findings gives bodies that the schemas of IS-04 v1.2 accept.

#include "nmos_instrument/record_check.h"

#include "record_check/checks.h"
#include "record_check/rules.h"
#include "records/membership.h"
#include "records/positions.h"
#include "records/record_fields.h"

namespace nmos_instrument {

namespace {

/// One text field of all valid entries of an array, as the `id` of all `senders`.
struct TextColumn
{
    const char* array; ///< null when the field is the record's own
    const char* field;
    const char* first; ///< the field of entry 0
    std::size_t width;
    std::size_t stride;
    std::size_t count;

    FieldBytes entry(std::size_t i) const { return {first + i * stride, width}; }

    bool contains(std::string_view text) const
    {
        for (std::size_t i = 0; i < count; ++i) {
            if (field_text(entry(i)) == text)
                return true;
        }
        return false;
    }

    std::string entry_path(std::size_t i) const
    {
        std::string path;
        if (array != nullptr) {
            append_field_name(path, {array, i});
            append_field_name(path, ".");
        }
        append_field_name(path, field);
        return path;
    }
};

template <typename Entry, std::size_t N, std::size_t Width>
TextColumn column_of(const char* array, const Entry (&entries)[N], std::int32_t count,
                     const char* field, const char (&of_first)[Width])
{
    const char* const start = reinterpret_cast<const char*>(&entries);
    return {array, field,         start + (of_first - start),
            Width, sizeof(Entry), valid_entries(entries, count).size()};
}

/// What fields of one entry may refer to, and what must be unique.
struct Names
{
    explicit Names(const NMOS_IS04_ST& record)
        : ids{{nullptr, "id", record.id, sizeof record.id, 0, 1},
              column_of("sources", record.sources, record.sources_count, "id",
                        record.sources[0].id),
              column_of("flows", record.flows, record.flows_count, "id", record.flows[0].id),
              column_of("devices", record.devices, record.devices_count, "id",
                        record.devices[0].id),
              column_of("senders", record.senders, record.senders_count, "id",
                        record.senders[0].id),
              column_of("receivers", record.receivers, record.receivers_count, "id",
                        record.receivers[0].id)},
          clocks(column_of("clocks", record.clocks, record.clocks_count, "name",
                           record.clocks[0].name)),
          interfaces(column_of("interfaces", record.interfaces, record.interfaces_count, "name",
                               record.interfaces[0].name))
    {}

    const TextColumn& node() const { return ids[0]; }
    const TextColumn& sources() const { return ids[1]; }
    const TextColumn& flows() const { return ids[2]; }
    const TextColumn& devices() const { return ids[3]; }
    const TextColumn& senders() const { return ids[4]; }
    const TextColumn& receivers() const { return ids[5]; }

    TextColumn ids[6]; ///< in the order of the record
    TextColumn clocks;
    TextColumn interfaces;
};

/// Of two equal texts the later one is reported.
void check_unique(const RecordPart& part, FieldName field, FieldBytes bytes,
                  std::span<const TextColumn> columns)
{
    for (const TextColumn& column : columns) {
        for (std::size_t i = 0; i < column.count; ++i) {
            if (column.entry(i).data() == bytes.data())
                return;
            if (field_text(column.entry(i)) == field_text(bytes)) {
                part.report(field, bytes, {column.entry_path(i), " is the same"});
                return;
            }
        }
    }
}

void check_reference(const RecordPart& part, FieldName field, FieldBytes id,
                     const TextColumn& column, const char* rule_when_absent)
{
    if (part.text(field, id, uuid) && !column.contains(field_text(id)))
        part.report(field, id, {rule_when_absent});
}

void check_device_reference(const RecordPart& part, FieldBytes device_id, const Names& names)
{
    check_reference(part, "device_id", device_id, names.devices(),
                    "no device of the record has this id");
}

/// What every resource begins with (IS-04 v1.2, resource_core.json).
void check_core(const RecordPart& resource, FieldBytes id, FieldBytes version, FieldBytes label,
                FieldBytes description, const Names& names)
{
    if (resource.text("id", id, uuid))
        check_unique(resource, "id", id, names.ids);
    resource.text("version", version, version_time);
    resource.text("label", label, any_text);
    resource.text("description", description, any_text);
}

/// The media type that goes with a format (IS-04 v1.2, the "media_type" and "media_types" of
/// flow_video_raw.json, flow_audio_raw.json, receiver_video.json and so on).
const TextRule& media_type_rule(std::string_view format)
{
    if (format == "urn:x-nmos:format:video")
        return video_media_type;
    if (format == "urn:x-nmos:format:audio")
        return audio_media_type;
    return media_type;
}

constexpr std::string_view transports =
    "urn:x-nmos:transport:rtp, urn:x-nmos:transport:rtp.ucast, urn:x-nmos:transport:rtp.mcast, "
    "urn:x-nmos:transport:dash";
constexpr std::string_view all_formats =
    "urn:x-nmos:format:video, urn:x-nmos:format:audio, urn:x-nmos:format:data, "
    "urn:x-nmos:format:mux";
constexpr std::string_view all_formats_but_audio =
    "urn:x-nmos:format:video, urn:x-nmos:format:data, urn:x-nmos:format:mux";
constexpr std::string_view all_formats_but_video =
    "urn:x-nmos:format:audio, urn:x-nmos:format:data, urn:x-nmos:format:mux";
constexpr std::string_view data_formats = "urn:x-nmos:format:data, urn:x-nmos:format:mux";

constexpr std::int32_t largest_number = 2147483647;

void check_interface_bindings(const RecordPart& part, const char (&bindings)[10][64],
                              std::size_t count, const Names& names)
{
    for (std::size_t i = 0; i < count; ++i) {
        const FieldName field = {"interface_bindings", i};
        if (part.text(field, bindings[i], any_text) &&
            !names.interfaces.contains(field_text(bindings[i])))
            part.report(field, bindings[i], {"no interface of the record has this name"});
    }
}

void check_subscription(const RecordPart& part, const SUBSCRIPTION_IS04_ST* entries,
                        std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        RecordPart(part, {"subscription", i}).text_or_null("peer_id", entries[i].peer_id, uuid);
}

void check_endpoint(const RecordPart& part, const ENDPOINT_IS04_ST& endpoint)
{
    part.text("host", endpoint.host, ipv4_address);
    part.number("port", endpoint.port, 1, 65535);
    part.one_of("protocol", endpoint.protocol, "http, https");
}

void check_clock(const RecordPart& part, const CLOCK_IS04_ST& clock, const Names& names)
{
    if (part.text("name", clock.name, clock_name))
        check_unique(part, "name", clock.name, {&names.clocks, 1});
    part.one_of("ref_type", clock.ref_type, "internal, ptp");
    if (!holds(clock.ref_type, "ptp"))
        return;
    part.one_of("version", clock.version, "IEEE1588-2008");
    part.text("gmid", clock.gmid, lower_case_eui64);
}

void check_interface(const RecordPart& part, const INTERFACE_IS04_ST& interface, const Names& names)
{
    part.text("chassis_id", interface.chassis_id, some_text);
    part.text("port_id", interface.port_id, mac_address);
    if (part.text("name", interface.name, some_text))
        check_unique(part, "name", interface.name, {&names.interfaces, 1});
}

void check_source(const RecordPart& part, const SOURCE_IS04_ST& source, std::size_t index,
                  const Names& names)
{
    check_core(part, source.id, source.version, source.label, source.description, names);
    check_device_reference(part, source.device_id, names);
    if (part.text("clock_name", source.clock_name, clock_name) &&
        !names.clocks.contains(field_text(source.clock_name)))
        part.report("clock_name", source.clock_name, {"no clock of the record has this name"});
    // An audio source needs "channels", and only source 1 gets them.
    part.one_of("format", source.format,
                index == audio_source ? all_formats : all_formats_but_audio);
}

void check_flow(const RecordPart& part, const FLOW_IS04_ST& flow, std::size_t index,
                const Names& names)
{
    const bool has_video_members = index == video_flow;
    const bool has_audio_members = index == audio_flow;
    check_core(part, flow.id, flow.version, flow.label, flow.description, names);
    // A video flow needs the members that only flow 0 gets, an audio flow those of flow 1.
    part.one_of("format", flow.format,
                has_video_members   ? all_formats_but_audio
                : has_audio_members ? all_formats_but_video
                                    : data_formats);
    if (has_video_members) {
        part.number("frame_width", flow.frame_width, 1, largest_number);
        part.number("frame_height", flow.frame_height, 1, largest_number);
        if (holds(flow.format, "urn:x-nmos:format:video")) {
            part.one_of("interlace_mode", flow.interlace_mode,
                        "progressive, interlaced_tff, interlaced_bff, interlaced_psf");
            part.one_of("colorspace", flow.colorspace, "BT601, BT709, BT2020, BT2100");
            part.one_of("transfer_characteristic", flow.transfer_characteristic, "SDR, HLG, PQ");
        } else {
            part.text("interlace_mode", flow.interlace_mode, any_text);
            part.text("colorspace", flow.colorspace, any_text);
            part.text("transfer_characteristic", flow.transfer_characteristic, any_text);
        }
    }
    part.text("media_type", flow.media_type, media_type_rule(field_text(flow.format)));
    if (has_video_members || has_audio_members) {
        part.number("bit_depth", flow.bit_depth, 1, largest_number);
        part.number("grain_rate_denominator", flow.grain_rate_denominator, 1, largest_number);
        part.number("grain_rate_numerator", flow.grain_rate_numerator, 1, largest_number);
    }
    if (has_audio_members)
        part.number("sample_rate_numerator", flow.sample_rate_numerator, 1, largest_number);
    check_reference(part, "source_id", flow.source_id, names.sources(),
                    "no source of the record has this id");
    check_device_reference(part, flow.device_id, names);
}

/// Slot j of a device is shown or hidden as sender or receiver j is.
void check_device(const RecordPart& part, const DEVICE_IS04_ST& device, const Names& names,
                  const Selection& selection)
{
    check_core(part, device.id, device.version, device.label, device.description, names);
    const std::size_t receivers =
        part.count("receiver_ids_count", device.receiver_ids_count, device.receivers);
    const std::size_t senders =
        part.count("sender_ids_count", device.sender_ids_count, device.senders);
    const std::size_t controls =
        part.count("controls_count", device.controls_count, device.controls);
    part.nmos_word_or_foreign_uri("type", device.type,
                                  "urn:x-nmos:device:generic, urn:x-nmos:device:pipeline");
    check_reference(part, "node_id", device.node_id, names.node(), "the node has another id");
    for (std::size_t i = 0; i < senders; ++i) {
        if (shows_sender(selection, i))
            check_reference(part, {"senders", i}, device.senders[i], names.senders(),
                            "no sender of the record has this id");
    }
    for (std::size_t i = 0; i < receivers; ++i) {
        if (shows_receiver(selection, i))
            check_reference(part, {"receivers", i}, device.receivers[i], names.receivers(),
                            "no receiver of the record has this id");
    }
    for (std::size_t i = 0; i < controls; ++i) {
        const RecordPart control(part, {"controls", i});
        control.text("href", device.controls[i].href, uri);
        control.text("type", device.controls[i].type, uri);
    }
}

void check_sender(const RecordPart& part, const SENDER_IS04_ST& sender, const Names& names)
{
    check_core(part, sender.id, sender.version, sender.label, sender.description, names);
    const std::size_t bindings = part.count(
        "interface_bindings_count", sender.interface_bindings_count, sender.interface_bindings);
    // Without an entry, "subscription" lacks the members that IS-04 demands.
    const std::size_t subscriptions =
        part.count("subscription_count", sender.subscription_count, sender.subscription, 1);
    // "null" is not allowed here: the sender body would show it as a string.
    check_reference(part, "flow_id", sender.flow_id, names.flows(),
                    "no flow of the record has this id");
    part.nmos_word_or_foreign_uri("transport", sender.transport, transports);
    check_device_reference(part, sender.device_id, names);
    part.text("manifest_href", sender.manifest_href, http_url);
    check_interface_bindings(part, sender.interface_bindings, bindings, names);
    check_subscription(part, sender.subscription, subscriptions);
}

void check_receiver(const RecordPart& part, const RECEIVER_IS04_ST& receiver, const Names& names)
{
    check_core(part, receiver.id, receiver.version, receiver.label, receiver.description, names);
    const std::size_t bindings = part.count(
        "interface_bindings_count", receiver.interface_bindings_count, receiver.interface_bindings);
    const std::size_t subscriptions =
        part.count("subscription_count", receiver.subscription_count, receiver.subscription, 1);
    check_device_reference(part, receiver.device_id, names);
    part.nmos_word_or_foreign_uri("transport", receiver.transport, transports);
    check_interface_bindings(part, receiver.interface_bindings, bindings, names);
    check_subscription(part, receiver.subscription, subscriptions);
    // A receiver accepts one media type at least (IS-04 v1.2, "minItems" in receiver_*.json).
    const std::size_t media_types =
        part.count("media_types_count", receiver.media_types_count, receiver.media_types, 1);
    part.one_of("format", receiver.format, all_formats);
    for (std::size_t i = 0; i < media_types; ++i)
        part.text({"media_types", i}, receiver.media_types[i],
                  media_type_rule(field_text(receiver.format)));
}

} // namespace

void check_node(const RecordPart& node, const NMOS_IS04_ST& record, const Selection& selection)
{
    const Names names(record);

    check_core(node, record.id, record.version, record.label, record.description, names);
    node.text("href", record.href, http_url);
    node.text("hostname", record.hostname, any_text);

    const std::size_t versions =
        node.count("versions_count", record.versions_count, record.versions);
    // Without an entry, "api" lacks the member "endpoints" that IS-04 demands.
    const std::size_t endpoints =
        node.count("endpoints_count", record.endpoints_count, record.endpoints, 1);
    for (std::size_t i = 0; i < versions; ++i)
        node.text({"versions", i}, record.versions[i], api_version);
    for (std::size_t i = 0; i < endpoints; ++i)
        check_endpoint(RecordPart(node, {"endpoints", i}), record.endpoints[i]);

    const std::size_t clocks = node.count("clocks_count", record.clocks_count, record.clocks);
    for (std::size_t i = 0; i < clocks; ++i)
        check_clock(RecordPart(node, {"clocks", i}), record.clocks[i], names);

    const std::size_t interfaces =
        node.count("interfaces_count", record.interfaces_count, record.interfaces);
    for (std::size_t i = 0; i < interfaces; ++i)
        check_interface(RecordPart(node, {"interfaces", i}), record.interfaces[i], names);

    const std::size_t sources = node.count("sources_count", record.sources_count, record.sources);
    for (std::size_t i = 0; i < sources; ++i)
        check_source(RecordPart(node, {"sources", i}), record.sources[i], i, names);

    const std::size_t flows = node.count("flows_count", record.flows_count, record.flows);
    for (std::size_t i = 0; i < flows; ++i)
        check_flow(RecordPart(node, {"flows", i}), record.flows[i], i, names);

    const std::size_t devices = node.count("devices_count", record.devices_count, record.devices);
    for (std::size_t i = 0; i < devices; ++i)
        check_device(RecordPart(node, {"devices", i}), record.devices[i], names, selection);

    const std::size_t senders = node.count("senders_count", record.senders_count, record.senders);
    for (std::size_t i = 0; i < senders; ++i) {
        if (shows_sender(selection, i))
            check_sender(RecordPart(node, {"senders", i}), record.senders[i], names);
    }

    const std::size_t receivers =
        node.count("receivers_count", record.receivers_count, record.receivers);
    for (std::size_t i = 0; i < receivers; ++i) {
        if (shows_receiver(selection, i))
            check_receiver(RecordPart(node, {"receivers", i}), record.receivers[i], names);
    }

    node.number("version_nanoseconds", record.version_nanoseconds, 0, 999999999);
}

std::vector<std::string> check_record(const NMOS_IS04_ST& record)
{
    std::vector<std::string> findings;
    check_node(RecordPart(findings), record, everything_shown);
    return findings;
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0
//
// Members are added in any order; picojson sorts them.

#include "oracle/json_oracle.h"

#include <utility>

namespace oracle {

namespace {

template <std::size_t Capacity, std::size_t N>
picojson::value valid_strings(const char (&fields)[Capacity][N], int count)
{
    picojson::array strings;
    for (int i = 0; i < bounded(count, Capacity); ++i)
        strings.push_back(string_of(fields[i]));
    return picojson::value(strings);
}

template <std::size_t Capacity>
picojson::value subscription(const SUBSCRIPTION_IS04_ST (&entries)[Capacity], int count,
                             const char* peer_key)
{
    picojson::object object;
    for (int j = 0; j < bounded(count, Capacity); ++j) {
        add(object, "active", boolean(entries[j].active));
        add(object, peer_key, string_or_null(entries[j].peer_id));
    }
    return picojson::value(object);
}

template <class Resource>
void add_core(picojson::object& object, const Resource& resource)
{
    add(object, "id", string_of(resource.id));
    add(object, "version", string_of(resource.version));
    add(object, "label", string_of(resource.label));
    add(object, "description", string_of(resource.description));
}

template <class Resource>
void add_bindings(picojson::object& object, const Resource& resource, const char* peer_key)
{
    add(object, "interface_bindings",
        valid_strings(resource.interface_bindings, resource.interface_bindings_count));
    add(object, "subscription",
        subscription(resource.subscription, resource.subscription_count, peer_key));
}

picojson::value rate(picojson::value numerator, picojson::value denominator)
{
    picojson::object object;
    add(object, "numerator", std::move(numerator));
    add(object, "denominator", std::move(denominator));
    return picojson::value(object);
}

picojson::value endpoint(const ENDPOINT_IS04_ST& entry)
{
    picojson::object object;
    add(object, "host", string_of(entry.host));
    add(object, "port", number(entry.port));
    add(object, "protocol", string_of(entry.protocol));
    return picojson::value(object);
}

picojson::value clock(const CLOCK_IS04_ST& entry)
{
    picojson::object object;
    add(object, "name", string_of(entry.name));
    add(object, "ref_type", string_of(entry.ref_type));
    if (std::memcmp(entry.ref_type, "ptp", 4) == 0) {
        add(object, "traceable", boolean(entry.traceable));
        add(object, "version", string_of(entry.version));
        add(object, "gmid", string_of(entry.gmid));
        add(object, "locked", boolean(entry.locked));
    }
    return picojson::value(object);
}

picojson::value interface(const INTERFACE_IS04_ST& entry)
{
    picojson::object object;
    add(object, "chassis_id", string_or_null(entry.chassis_id));
    add(object, "name", string_of(entry.name));
    add(object, "port_id", string_of(entry.port_id));
    return picojson::value(object);
}

picojson::value component(const char* name, const FLOW_IS04_ST& flow)
{
    picojson::object object;
    add(object, "name", picojson::value(name));
    add(object, "width", number(flow.frame_width));
    add(object, "height", number(flow.frame_height));
    add(object, "bit_depth", number(flow.bit_depth));
    return picojson::value(object);
}

picojson::value control(const CONTROL_IS04_ST& entry)
{
    picojson::object object;
    add(object, "href", string_of(entry.href));
    add(object, "type", string_of(entry.type));
    return picojson::value(object);
}

} // namespace

picojson::value node(const NMOS_IS04_ST& record)
{
    picojson::object object;
    add(object, "description", string_of(record.description));
    add(object, "hostname", string_of(record.hostname));
    add(object, "href", string_of(record.href));
    add(object, "label", string_of(record.label));
    add(object, "version", string_of(record.version));
    add(object, "id", string_of(record.id));

    picojson::object api;
    for (int i = 0; i < bounded(record.endpoints_count, 26); ++i) {
        picojson::array endpoints;
        endpoints.push_back(endpoint(record.endpoints[i]));
        add(api, "endpoints", picojson::value(endpoints));
    }
    add(api, "versions", valid_strings(record.versions, record.versions_count));
    add(object, "api", picojson::value(api));

    add(object, "caps", empty_object());
    add(object, "tags", empty_object());

    picojson::array clocks;
    for (int i = 0; i < bounded(record.clocks_count, 6); ++i)
        clocks.push_back(clock(record.clocks[i]));
    add(object, "clocks", picojson::value(clocks));
    add(object, "services", empty_array());

    picojson::array interfaces;
    for (int i = 0; i < bounded(record.interfaces_count, 12); ++i)
        interfaces.push_back(interface(record.interfaces[i]));
    add(object, "interfaces", picojson::value(interfaces));
    add(object, "services", empty_array());
    return picojson::value(object);
}

picojson::value device(const DEVICE_IS04_ST& device, int receiver_filter, int audio_group_filter,
                       int sender_filter, Tags tags)
{
    picojson::object object;
    add_core(object, device);
    add(object, "type", string_of(device.type));
    add(object, "node_id", string_of(device.node_id));

    picojson::array senders;
    for (int j = 0; j < bounded(device.sender_ids_count, 6); ++j)
        if (is_insert_node_senders(sender_filter, j + 13))
            senders.push_back(string_of(device.senders[j]));
    add(object, "senders", picojson::value(senders));

    picojson::array receivers;
    for (int j = 0; j < bounded(device.receiver_ids_count, 24); ++j)
        if (is_insert_node_receivers(receiver_filter, audio_group_filter, j + 17))
            receivers.push_back(string_of(device.receivers[j]));
    add(object, "receivers", picojson::value(receivers));

    if (tags == Tags::present)
        add(object, "tags", empty_object());

    picojson::array controls;
    for (int j = 0; j < bounded(device.controls_count, 8); ++j)
        controls.push_back(control(device.controls[j]));
    add(object, "controls", picojson::value(controls));
    return picojson::value(object);
}

picojson::value source(const NMOS_IS04_ST& record, int index)
{
    check_index(index, 4);
    const SOURCE_IS04_ST& source = record.sources[index];
    picojson::object object;
    add_core(object, source);
    add(object, "tags", empty_object());
    add(object, "caps", empty_object());
    add(object, "device_id", string_of(source.device_id));
    add(object, "parents", empty_array());
    add(object, "clock_name", string_of(source.clock_name));
    add(object, "format", string_of(source.format));
    if (index == 1) {
        picojson::object channel;
        add(channel, "label", picojson::value(""));
        picojson::array channels;
        channels.push_back(picojson::value(channel));
        add(object, "channels", picojson::value(channels));
    }
    return picojson::value(object);
}

picojson::value flow(const NMOS_IS04_ST& record, int index)
{
    check_index(index, 4);
    const FLOW_IS04_ST& flow = record.flows[index];
    picojson::object object;
    add_core(object, flow);
    add(object, "tags", empty_object());
    add(object, "source_id", string_of(flow.source_id));
    add(object, "device_id", string_of(flow.device_id));
    add(object, "parents", empty_array());
    add(object, "format", string_of(flow.format));
    add(object, "media_type", string_of(flow.media_type));
    if (index == 0) {
        add(object, "frame_width", number(flow.frame_width));
        add(object, "frame_height", number(flow.frame_height));
        add(object, "interlace_mode", string_of(flow.interlace_mode));
        add(object, "colorspace", string_of(flow.colorspace));
        add(object, "transfer_characteristic", string_of(flow.transfer_characteristic));
        picojson::array components;
        for (const char* const name : {"Y", "Cb", "Cr"})
            components.push_back(component(name, flow));
        add(object, "components", picojson::value(components));
        add(object, "grain_rate",
            rate(number(flow.grain_rate_numerator), number(flow.grain_rate_denominator)));
    }
    if (index == 1) {
        add(object, "bit_depth", number(flow.bit_depth));
        add(object, "sample_rate", rate(number(flow.sample_rate_numerator), number(1)));
        add(object, "grain_rate",
            rate(number(flow.grain_rate_numerator), number(flow.grain_rate_denominator)));
    }
    return picojson::value(object);
}

picojson::value sender(const SENDER_IS04_ST& sender)
{
    picojson::object object;
    add_core(object, sender);
    add(object, "tags", empty_object());
    add(object, "flow_id", string_of(sender.flow_id));
    add(object, "transport", string_of(sender.transport));
    add(object, "device_id", string_of(sender.device_id));
    add(object, "manifest_href", string_of(sender.manifest_href));
    add_bindings(object, sender, "receiver_id");
    return picojson::value(object);
}

picojson::value receiver(const RECEIVER_IS04_ST& receiver)
{
    picojson::object object;
    add_core(object, receiver);
    add(object, "format", string_of(receiver.format));
    add(object, "device_id", string_of(receiver.device_id));
    add(object, "transport", string_of(receiver.transport));
    picojson::object caps;
    add(caps, "media_types", valid_strings(receiver.media_types, receiver.media_types_count));
    add(object, "caps", picojson::value(caps));
    add(object, "tags", empty_object());
    add_bindings(object, receiver, "sender_id");
    return picojson::value(object);
}

picojson::value receiver_target(const SENDER_IS04_ST& sender)
{
    picojson::object object;
    add(object, "label", string_of(sender.label));
    add(object, "description", string_of(sender.description));
    add(object, "version", string_of(sender.version));
    add(object, "transport", string_of(sender.transport));
    add(object, "manifest_href", string_of(sender.manifest_href));
    add(object, "id", string_or_null(sender.id));
    add(object, "device_id", string_or_null(sender.device_id));
    add(object, "flow_id", string_or_null(sender.flow_id));
    add(object, "caps", empty_object());
    add(object, "tags", empty_object());
    add_bindings(object, sender, "receiver_id");
    return picojson::value(object);
}

} // namespace oracle

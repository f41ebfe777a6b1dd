// SPDX-License-Identifier: Apache-2.0
//
// "/layout": all senders and receivers that the instrument has, stream by stream, also those that its
// configuration hides.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "configuration/resource_counts.h"
#include "records/record_shape.h"
#include "records/record_text.h"
#include "records/stream_selection.h"
#include "routes/routes.h"
#include "text/json_output.h"

namespace nmos_instrument::host {
namespace {

using OptionalText = std::optional<std::string_view>;

constexpr std::string_view group_names[audio_group_count] = {"G1", "G2", "G3", "G4"};

OptionalText text_or_nothing(const char* text)
{
    return text == nullptr ? OptionalText() : text;
}

void add(JsonOutput& json, std::string_view key, const OptionalText& text)
{
    json.key(key);
    if (text)
        json.text(*text);
    else
        json.null();
}

void add_resource(JsonOutput& json, const OptionalText& id, Essence essence,
                  const OptionalText& group, const OptionalText& label, const OptionalText& hidden)
{
    json.element().begin_object();
    add(json, "id", id);
    add(json, "essence", name_of(essence));
    add(json, "group", group);
    add(json, "label", label);
    add(json, "hidden", hidden);
    json.end_object();
}

void add_sender(JsonOutput& json, const Records& records, const StreamSettings& streams,
                std::size_t sender)
{
    OptionalText id;
    OptionalText label;
    // Of senders that are not there at all, the records know nothing.
    if (has_sender(records.node, sender)) {
        id = text_of(records.node.senders[sender].id);
        label = text_of(records.node.senders[sender].label);
    }
    add_resource(json, id, essence_of_sender(sender), std::nullopt, label,
                 text_or_nothing(why_sender_is_hidden(streams, sender)));
}

void add_receiver(JsonOutput& json, const Records& records, const StreamSettings& streams,
                  std::size_t receiver)
{
    const RECEIVER_IS04_ST& record = records.node.receivers[receiver];
    const Essence essence = essence_of_receiver(receiver);
    OptionalText id;
    OptionalText label;
    OptionalText group;
    if (has_receiver(records.node, receiver)) {
        id = text_of(record.id);
        label = text_of(record.label);
    }
    if (essence == Essence::audio)
        group = group_names[audio_group_of(receiver)];
    add_resource(json, id, essence, group, label,
                 text_or_nothing(why_receiver_is_hidden(streams, receiver)));
}

void add_stream(JsonOutput& json, const Records& records, const StreamSettings& streams,
                std::size_t stream)
{
    json.element().begin_object();
    json.key("stream").number(stream + 1);
    json.key("senders").begin_array();
    add_sender(json, records, streams, stream);
    if (stream == 0) {
        add_sender(json, records, streams, audio_sender);
        add_sender(json, records, streams, ancillary_sender);
    }
    json.end_array();
    json.key("receivers").begin_array();
    add_receiver(json, records, streams, stream);
    for (std::size_t group = 0; group < audio_group_count; ++group)
        add_receiver(json, records, streams,
                     first_audio_receiver + stream * audio_group_count + group);
    add_receiver(json, records, streams, first_ancillary_receiver + stream);
    json.end_array();
    json.end_object();
}

void add_interfaces(JsonOutput& json, const Configuration& configuration)
{
    json.begin_array();
    for (const MediaInterface& interface : configuration.interfaces) {
        json.element().begin_object();
        json.key("name").text(interface.name);
        json.key("address").text(interface.address);
        json.end_object();
    }
    json.end_array();
}

HttpResponse layout(const Services& services, std::size_t)
{
    const Configuration& configuration = services.instrument.configuration();
    JsonOutput json(JsonForm::indented);
    json.begin_object();
    json.key("streams").begin_array();
    services.instrument.read([&](const Records& records) {
        for (std::size_t stream = 0; stream < stream_count; ++stream)
            add_stream(json, records, configuration.streams, stream);
    });
    json.end_array();
    add_interfaces(json.key("interfaces"), configuration);
    json.end_object();
    return json_response(json.take() + '\n');
}

constexpr Route table[] = {
    {"GET", "/layout", layout},
};

} // namespace

std::span<const Route> layout_routes()
{
    return table;
}

} // namespace nmos_instrument::host

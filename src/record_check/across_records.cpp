// SPDX-License-Identifier: Apache-2.0
//
// What each record may say alone, but not beside the others.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nmos_instrument/record_check.h"
#include "record_check/checks.h"
#include "record_check/rules.h"
#include "records/membership.h"
#include "records/positions.h"
#include "records/record_fields.h"
#include "records/video_formats.h"
#include "text/ipv4_text.h"
#include "text/number_text.h"
#include "text/text_rules.h"

namespace nmos_instrument {

namespace {

// ---- The video flow and the SDP file -----------------------------------------------------------

void check_picture_size(const RecordPart& part, FieldName field, double value, int in_sdp_file)
{
    if (value != in_sdp_file)
        part.report_value(
            field, NumberText(value),
            {"the SDP file says ", NumberText(in_sdp_file), ", see settings.sdp_video_system"});
}

void check_picture_rate(const RecordPart& part, const FLOW_IS04_ST& flow, const PictureRate& rate)
{
    // As fractions, so that 120/2 is 60.
    if (flow.grain_rate_numerator * rate.denominator !=
        rate.numerator * flow.grain_rate_denominator)
        part.report_value("grain_rate_numerator", NumberText(flow.grain_rate_numerator),
                          {"over ", NumberText(flow.grain_rate_denominator), ": the SDP file says ",
                           NumberText(rate.numerator), "/", NumberText(rate.denominator),
                           ", see settings.sdp_video_frame_rate"});
    if (holds(flow.interlace_mode, "progressive") == rate.is_interlaced)
        part.report("interlace_mode", flow.interlace_mode,
                    {"the SDP file says ", rate.is_interlaced ? "interlaced" : "progressive",
                     ", see settings.sdp_video_frame_rate"});
}

void check_video_flow(const RecordPart& node_part, const NMOS_IS04_ST& node,
                      const st_param_sys& settings)
{
    const FLOW_IS04_ST& flow = node.flows[video_flow];
    if (valid_entries(node.flows, node.flows_count).size() <= video_flow ||
        !holds(flow.format, "urn:x-nmos:format:video"))
        return;
    const RecordPart part(node_part, {"flows", video_flow});
    const PictureSize size = picture_size(settings.sdp_video_system);
    check_picture_size(part, "frame_width", flow.frame_width, size.width);
    check_picture_size(part, "frame_height", flow.frame_height, size.height);
    check_picture_rate(part, flow, picture_rate(settings.sdp_video_frame_rate));
}

// ---- The grandmaster ---------------------------------------------------------------------------

constexpr char lower_case(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same_in_any_case(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower_case(a[i]) != lower_case(b[i]))
            return false;
    }
    return true;
}

void check_grandmaster(const RecordPart& part, const NMOS_IS04_ST& node,
                       const NMOS_IS05_ST& connections)
{
    const std::string_view grandmaster = field_text(connections.ptp_grandmaster_id);
    bool has_ptp_clock = false;
    for (const CLOCK_IS04_ST& clock : valid_entries(node.clocks, node.clocks_count)) {
        if (!holds(clock.ref_type, "ptp"))
            continue;
        if (same_in_any_case(field_text(clock.gmid), grandmaster))
            return;
        has_ptp_clock = true;
    }
    if (has_ptp_clock)
        part.report("ptp_grandmaster_id", connections.ptp_grandmaster_id,
                    {"no PTP clock of the node has this gmid"});
}

// ---- Where the node is reached -----------------------------------------------------------------

/// What a URL of an API is reached at.
struct Place
{
    std::string_view protocol;
    std::string_view host;
    long long port;

    bool operator==(const Place&) const = default;
};

/// Nothing for a text that is not an HTTP URL: check_record reports it where it must be one.
std::optional<Place> place_of(FieldBytes url)
{
    std::string_view text = field_text(url);
    if (!is_http_url(text))
        return std::nullopt;
    constexpr std::string_view after_protocol = "://";
    const std::size_t colon = text.find(after_protocol);
    const std::string_view protocol = text.substr(0, colon);
    text.remove_prefix(colon + after_protocol.size());
    text = text.substr(0, text.find_first_of("/?#"));
    const std::size_t port = text.rfind(':');
    if (port != std::string_view::npos && is_digits(text.substr(port + 1)))
        return Place{protocol, text.substr(0, port), leading_integer(text.substr(port + 1))};
    return Place{protocol, text, protocol == "https" ? 443 : 80};
}

bool is_at(const ENDPOINT_IS04_ST& endpoint, const Place& place)
{
    return field_text(endpoint.protocol) == place.protocol &&
           field_text(endpoint.host) == place.host &&
           endpoint.port == static_cast<double>(place.port);
}

bool has_endpoint_at(const NMOS_IS04_ST& node, const Place& place)
{
    for (const ENDPOINT_IS04_ST& endpoint : valid_entries(node.endpoints, node.endpoints_count)) {
        if (is_at(endpoint, place))
            return true;
    }
    return false;
}

constexpr const char* no_endpoint = "no endpoint of the node has this protocol, host and port";

void check_node_href(const RecordPart& part, const NMOS_IS04_ST& node)
{
    const std::optional<Place> place = place_of(node.href);
    // The endpoints hold addresses only, so a name cannot be compared.
    if (place && is_dotted_quad(place->host) && !has_endpoint_at(node, *place))
        part.report("href", node.href, {no_endpoint});
}

void check_href(const RecordPart& part, FieldName field, FieldBytes href, const NMOS_IS04_ST& node)
{
    const std::optional<Place> place = place_of(href);
    if (place && place != place_of(node.href) && !has_endpoint_at(node, *place))
        part.report(field, href,
                    {"node.href has another protocol, host or port, and ", no_endpoint});
}

void check_controls(const RecordPart& part, const DEVICE_IS04_ST& device, const NMOS_IS04_ST& node)
{
    const auto controls = valid_entries(device.controls, device.controls_count);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        // Other controls are other servers' perhaps; this one is the Connection API.
        if (field_text(controls[i].type).starts_with("urn:x-nmos:control:sr-ctrl/"))
            check_href(RecordPart(part, {"controls", i}), "href", controls[i].href, node);
    }
}

void check_places(const RecordPart& part, const NMOS_IS04_ST& node, const Selection& selection)
{
    check_node_href(part, node);
    const auto devices = valid_entries(node.devices, node.devices_count);
    for (std::size_t i = 0; i < devices.size(); ++i)
        check_controls(RecordPart(part, {"devices", i}), devices[i], node);
    const auto senders = valid_entries(node.senders, node.senders_count);
    for (std::size_t i = 0; i < senders.size(); ++i) {
        if (shows_sender(selection, i))
            check_href(RecordPart(part, {"senders", i}), "manifest_href", senders[i].manifest_href,
                       node);
    }
}

// ---- A sender or receiver and its connection ---------------------------------------------------

/// What IS-04 says of a sender's or receiver's connection.
struct Facts
{
    std::int32_t interface_bindings;
    const SUBSCRIPTION_IS04_ST* subscription; ///< null when there is none
    bool names_every_peer;                    ///< a receiver does; a sender only when unicast
};

template <typename Resource>
Facts facts_of(const Resource& resource, bool names_every_peer)
{
    const auto entries = valid_entries(resource.subscription, resource.subscription_count);
    return {resource.interface_bindings_count, entries.empty() ? nullptr : entries.data(),
            names_every_peer};
}

/// IS-05 v1.0 has one element of "transport_params" for each leg, IS-04 v1.2 one of
/// "interface_bindings".
void check_legs(const RecordPart& part, const CONNECTION_HALF_IS05_ST& half, const Facts& facts)
{
    if (half.leg_count != facts.interface_bindings)
        part.report_value("leg_count", NumberText(half.leg_count),
                          {"interface_bindings_count is ", NumberText(facts.interface_bindings)});
}

/// IS-04 v1.2, sender.json and receiver.json: the peer is named while active only, by a sender that
/// sends unicast only.
void check_subscription(const RecordPart& part, const CONNECTION_HALF_IS05_ST& active,
                        const Facts& facts)
{
    const SUBSCRIPTION_IS04_ST& subscription = *facts.subscription;
    const bool enabled = active.master_enable != 0;
    if ((subscription.active != 0) != enabled)
        part.report_value("active", NumberText(int{subscription.active != 0}),
                          {"master_enable of the active half is ", NumberText(int{enabled})});

    const std::string_view peer = field_text(subscription.peer_id);
    const std::string_view right = enabled ? field_text(active.peer_id) : "null";
    if (peer != right && (facts.names_every_peer || peer != "null"))
        part.report("peer_id", subscription.peer_id,
                    {enabled ? "the active half has another"
                             : "it must be \"null\" while master_enable of the active half is 0"});
}

/// All senders, or all receivers, that the node has and shows.
template <typename Resource, std::size_t N>
void check_pairs(const RecordPart& node, const RecordPart& connections, const char* array,
                 const Resource (&resources)[N], std::int32_t count,
                 const CONNECTION_IS05_ST (&all)[N], bool names_every_peer,
                 bool (*shows)(const Selection&, std::size_t), const Selection& selection)
{
    const std::size_t present = valid_entries(resources, count).size();
    for (std::size_t i = 0; i < present; ++i) {
        if (!shows(selection, i))
            continue;
        const Facts facts = facts_of(resources[i], names_every_peer);
        const RecordPart resource(node, {array, i});
        const RecordPart connection(connections, {array, i});
        const RecordPart active(connection, "active");
        if (!is_in_use(all[i])) {
            active.report_value("leg_count", NumberText(all[i].active.leg_count),
                                {"the node shows it, but both halves are cleared"});
            continue;
        }
        check_legs(RecordPart(connection, "staged"), all[i].staged, facts);
        check_legs(active, all[i].active, facts);
        if (facts.subscription != nullptr)
            check_subscription(RecordPart(resource, {"subscription", 0}), all[i].active, facts);
    }
}

} // namespace

std::vector<std::string> check_records(const NMOS_IS04_ST& node, const NMOS_IS05_ST& connections,
                                       const st_param_sys& settings, const Selection& selection)
{
    std::vector<std::string> findings;
    const RecordPart whole(findings);
    const RecordPart node_part(whole, "node");
    const RecordPart connections_part(whole, "connections");

    check_node(node_part, node, selection);
    check_connections(connections_part, connections, selection);
    check_settings(RecordPart(whole, "settings"), settings);

    check_video_flow(node_part, node, settings);
    if (has_sdp_files(connections, selection))
        check_grandmaster(connections_part, node, connections);
    check_places(node_part, node, selection);
    check_pairs(node_part, connections_part, "senders", node.senders, node.senders_count,
                connections.senders, false, shows_sender, selection);
    check_pairs(node_part, connections_part, "receivers", node.receivers, node.receivers_count,
                connections.receivers, true, shows_receiver, selection);
    return findings;
}

} // namespace nmos_instrument

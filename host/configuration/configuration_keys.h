// SPDX-License-Identifier: Apache-2.0
//
// The keys of the configuration file: the name of each, where its value goes, what it may hold and
// what it does. The reader and the writer of configuration files both walk this one description.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_KEYS_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_KEYS_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "configuration/network_rules.h"
#include "configuration/value_rules.h"

namespace nmos_instrument::host {

inline constexpr std::array<Choice<Advertise>, 3> advertising_times = {{
    {R"("peer to peer")", Advertise::peer_to_peer},
    {R"("always")", Advertise::always},
    {R"("never")", Advertise::never},
}};

inline constexpr std::array<Choice<ClockReference>, 2> clock_references = {{
    {R"("ptp")", ClockReference::ptp},
    {R"("internal")", ClockReference::internal},
}};

inline constexpr std::array<Choice<SenderStreams>, 2> sender_streams = {{
    {R"("all")", SenderStreams::all},
    {R"("stream 1")", SenderStreams::stream_1},
}};

inline constexpr std::array<Choice<Essences>, 2> essences = {{
    {R"("all")", Essences::all},
    {R"("video only")", Essences::video_only},
}};

inline constexpr std::array<Choice<AudioGroups>, 3> audio_groups = {{
    {"1", AudioGroups::g1},
    {"2", AudioGroups::g1_and_g2},
    {"4", AudioGroups::all_four},
}};

inline constexpr std::array<Choice<Carriage>, 2> carriages = {{
    {R"("ST 2110")", Carriage::st2110},
    {R"("ST 2022-6")", Carriage::st2022_6},
}};

inline constexpr std::array<Choice<Scan>, 2> scans = {{
    {R"("progressive")", Scan::progressive},
    {R"("interlaced")", Scan::interlaced},
}};

/// The choices that a table of formats offers.
template <class Row, std::size_t N, class Meaning>
constexpr std::array<Choice<Meaning>, N> choices_of(const std::array<Row, N>& table,
                                                    Meaning Row::*meaning)
{
    std::array<Choice<Meaning>, N> choices{};
    for (std::size_t i = 0; i < N; ++i)
        choices[i] = {table[i].json, table[i].*meaning};
    return choices;
}

inline constexpr auto picture_size_choices = choices_of(picture_sizes, &PictureSizeFacts::size);
inline constexpr auto frame_rate_choices = choices_of(frame_rates, &FrameRateFacts::rate);
inline constexpr auto packet_time_choices = choices_of(packet_times, &PacketTimeFacts::time);

constexpr int highest_port = 65535;
constexpr std::size_t most_registries = 16;

template <class Visitor, class DestinationType>
void visit_destination(Visitor& visitor, std::string_view key, DestinationType& destination,
                       std::string_view explanation)
{
    visitor.object(key, explanation, [&] {
        visitor.text("address", destination.address, multicast_address(), "Multicast group.");
        visitor.number("port", destination.port, 1, highest_port, "UDP port.");
    });
}

template <class Visitor, class LabelArray>
void visit_labels(Visitor& visitor, std::string_view key, LabelArray& labels,
                  std::size_t field_size, const std::string& explanation)
{
    const TextRule rule = text_for_field(field_size);
    visitor.array(
        key, labels, explanation + " Allowed: each a " + rule.allowed + ".",
        [&](std::string_view index, auto& label) { visitor.text(index, label, rule, {}); });
}

/// `configuration` is a Configuration; it is const if the visitor only reads it.
template <class Visitor, class ConfigurationType>
void visit_keys(Visitor& visitor, ConfigurationType& configuration)
{
    auto& c = configuration;

    visitor.text("serial_number", c.serial_number, name_for_field(64),
                 "All ids are made from it: the same serial number gives the same ids after every "
                 "restart, on every machine. Give each instrument on a network its own.");

    visitor.object("node", "The IS-04 node.", [&] {
        visitor.text("label", c.node.label, text_for_field(sizeof NMOS_IS04_ST::label),
                     "The name that controllers show.");
        visitor.text("description", c.node.description,
                     text_for_field(sizeof NMOS_IS04_ST::description), "One sentence about it.");
        visitor.text("hostname", c.node.hostname,
                     host_name_for_field(sizeof NMOS_IS04_ST::hostname), "Its host name.");
    });

    visitor.object(
        "server", "Where the HTTP APIs are served, and where others are told that they are.", [&] {
            visitor.text_or_null(
                "listen", c.server.listen, listening_place(),
                "Where to listen: at one address, at every address of an interface, "
                "or at every address of the machine. Null: at \"address\", or else at "
                "127.0.0.1, which no other machine reaches.");
            visitor.text_or_null("address", c.server.address, own_address(),
                                 "The address that all bodies name, or the interface whose address "
                                 "they name. Null: the address at which it listens.");
            visitor.number("port", c.server.port, 1, highest_port, "The TCP port to listen at.");
            visitor.number_or_null(
                "advertised_port", c.server.advertised_port, 1, highest_port,
                "The TCP port that all bodies name. Null: that at which it listens.");
        });

    visitor.object("registration", "How the node registers with a registry (IS-04).", [&] {
        visitor.flag("enabled", c.registration.enabled, "Whether it registers at all.");
        visitor.texts("registries", c.registration.registries, registry_address(), most_registries,
                      "The registries to register with: the first that answers. Empty: those that "
                      "DNS-SD finds.");
        visitor.text_or_null(
            "ca_file", c.registration.ca_file, file_path(),
            "Certificates (PEM) of the authorities that are trusted for registries "
            "at https. Null: those of the system.");
        visitor.text_or_null("dns_domain", c.registration.dns_domain, domain_name(),
                             "The domain in which DNS-SD looks for registries. Null: the search "
                             "domain of the machine.");
        visitor.flag("development_registries", c.registration.development_registries,
                     "Whether registries of priority 100 and more, which are there for "
                     "development, are used too.");
    });

    visitor.object("advertisement", "How the node shows itself to its neighbours by mDNS.", [&] {
        visitor.text_or_null("service_file", c.advertisement.service_file, service_file_path(),
                             "The file of avahi-daemon that advertises the node, such as "
                             "\"/etc/avahi/services/nmos-node.service\". Null: none.");
        visitor.choice("when", c.advertisement.when, advertising_times,
                       "When it is advertised: \"peer to peer\" is while there is no registry.");
    });

    visitor.array(
        "interfaces", c.interfaces,
        "The two media network interfaces: first that of the primary leg, then that of the "
        "secondary.",
        [&](std::string_view index, auto& interface) {
            visitor.object(index, {}, [&] {
                visitor.text("name", interface.name, name_for_field(sizeof INTERFACE_IS04_ST::name),
                             "The name that senders and receivers are bound to. The two "
                             "names must differ.");
                visitor.text("mac", interface.mac, octets(6, "00-00-5e-00-53-01"),
                             "Its MAC address.");
                visitor.text_or_null(
                    "chassis_id", interface.chassis_id,
                    name_for_field(sizeof INTERFACE_IS04_ST::chassis_id),
                    "The chassis that the interface belongs to, as LLDP reports it; null if "
                    "there is none.");
                visitor.text("address", interface.address, unicast_address(),
                             "The address that media streams are sent from and received at.");
            });
        });

    visitor.object("clock", "The clock that times all sources.", [&] {
        visitor.text("name", c.clock.name, clock_name_for_field(sizeof SOURCE_IS04_ST::clock_name),
                     "Its name.");
        visitor.choice("reference", c.clock.reference, clock_references,
                       "What the clock follows. If it is internal, the SDP files name it by "
                       "the MAC addresses of the interfaces.");
        visitor.text("grandmaster", c.clock.grandmaster, octets(8, "00-00-5e-ff-fe-00-53-ff"),
                     "The identity of the PTP grandmaster.");
        visitor.number("domain", c.clock.domain, 127, 127,
                       "The PTP domain. The SDP files of this instrument always name this one.");
        visitor.flag("traceable", c.clock.traceable,
                     "Whether the PTP reference is traceable to TAI.");
        visitor.flag("locked", c.clock.locked,
                     "Whether the instrument is locked to the PTP reference.");
    });

    visitor.object("streams", "Which senders and receivers the node shows.", [&] {
        visitor.choice("senders", c.streams.senders, sender_streams,
                       "Which video senders: those of all IP streams, or only that of stream 1.");
        visitor.choice("sender_essences", c.streams.sender_essences, essences,
                       "With \"video only\" there are no senders, sources or flows for audio and "
                       "ancillary data.");
        visitor.choice("receiver_essences", c.streams.receiver_essences, essences,
                       "With \"video only\" the audio and ancillary receivers are hidden.");
        visitor.choice(
            "audio_groups", c.streams.audio_groups, audio_groups,
            "Audio receivers of each IP stream: 1 is group G1, 2 is G1 and G2, 4 is G1 to G4.");
    });

    visitor.choice("carriage", c.carriage, carriages,
                   "How video is sent: SMPTE ST 2110, or SMPTE ST 2022-6.");

    visitor.object("video", "The video format that is sent.", [&] {
        visitor.choice("lines", c.video.lines, picture_size_choices,
                       "Picture height: 3840x2160, 1920x1080 or 1280x720.");
        visitor.choice("scan", c.video.scan, scans, "Interlaced video must have 1080 lines.");
        visitor.choice("frame_rate", c.video.frame_rate, frame_rate_choices,
                       "Frames per second: 60, 59.94 and 50 are progressive; 30, 29.97 and 25 are "
                       "interlaced.");
        visitor.text("sampling", c.video.sampling, exactly("YCbCr-4:2:2"),
                     "The SDP files of this instrument always say this.");
        visitor.number("bit_depth", c.video.bit_depth, 10, 10,
                       "The SDP files of this instrument always say this.");
        visitor.text("colorimetry", c.video.colorimetry, exactly("BT709"),
                     "The SDP files of this instrument always say this.");
        visitor.text("transfer_characteristic", c.video.transfer_characteristic, exactly("SDR"),
                     "The SDP files of this instrument always say this.");
    });

    visitor.object("audio", "The audio format that is sent.", [&] {
        visitor.text("encoding", c.audio.encoding, exactly("L24"),
                     "The SDP files of this instrument always say this.");
        visitor.number("sample_rate", c.audio.sample_rate, 48000, 48000,
                       "The SDP files of this instrument always say this.");
        visitor.number("channels", c.audio.channels, 16, 16,
                       "The SDP files of this instrument always say this.");
        visitor.choice(
            "packet_time", c.audio.packet_time, packet_time_choices,
            "Milliseconds of audio in a packet. With 16 channels only 0.125 ms fits into "
            "an ordinary Ethernet frame.");
    });

    visitor.object("payload_types", "RTP payload types.", [&] {
        visitor.number(
            "video", c.payload_types.video, 96, 127,
            "Video. In ST 2022-6 carriage it must be 98, as the SDP files then always say.");
        visitor.number("audio", c.payload_types.audio, 96, 127, "Audio.");
        visitor.number("ancillary", c.payload_types.ancillary, 96, 127, "Ancillary data.");
    });

    visitor.object(
        "format_switching",
        "Whether receivers accept 2K while the instrument is set to 4K, and 4K while it is "
        "set to 2K.",
        [&] {
            visitor.flag("capable", c.format_switching.capable,
                         "Whether the instrument can switch.");
            visitor.flag("allowed", c.format_switching.allowed,
                         "Whether its settings permit the switch.");
        });

    visitor.array("destinations", c.destinations,
                  "Where the six senders send to at first: video of IP streams 1 to 4, audio, "
                  "ancillary data.",
                  [&](std::string_view index, auto& sender) {
                      visitor.object(index, {}, [&] {
                          visit_destination(visitor, "primary", sender.primary, "Primary leg.");
                          visit_destination(visitor, "secondary", sender.secondary,
                                            "Secondary leg.");
                      });
                  });

    visitor.object("labels", "The names of the resources.", [&] {
        visitor.text("device", c.labels.device, text_for_field(sizeof DEVICE_IS04_ST::label),
                     "The device.");
        visit_labels(visitor, "sources", c.labels.sources, sizeof SOURCE_IS04_ST::label,
                     "Video, audio, ancillary data.");
        visit_labels(visitor, "flows", c.labels.flows, sizeof FLOW_IS04_ST::label,
                     "Video, audio, ancillary data.");
        visit_labels(visitor, "senders", c.labels.senders, sizeof SENDER_IS04_ST::label,
                     "Video of IP streams 1 to 4, audio, ancillary data.");
        visit_labels(visitor, "receivers", c.labels.receivers, sizeof RECEIVER_IS04_ST::label,
                     "Video of IP streams 1 to 4; audio groups G1 to G4 of stream 1, of stream 2, "
                     "of stream 3 and of stream 4; ancillary data of streams 1 to 4.");
    });
}

} // namespace nmos_instrument::host

#endif

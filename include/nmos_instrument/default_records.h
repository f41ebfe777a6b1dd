// SPDX-License-Identifier: Apache-2.0
//
// Records that are right as they come: an instrument that sends 1080p59.94 video (SMPTE ST 2110-20),
// audio and ancillary data, receives with all 24 receivers, and is connected to nothing yet. A host
// fills them once and changes from there what is different. Header only.
//
// ```cpp
// using namespace nmos_instrument;
// RecordsDescription about;
// about.seed = "QX0000001"; // the serial number, so that the ids survive a restart
// about.label = "Rack 4";
// about.interfaces[0] = {"media1", "00:00:5e:00:53:01", "192.0.2.10"};
// about.interfaces[1] = {"media2", "00:00:5e:00:53:02", "198.51.100.10"};
// about.address = "192.0.2.1";
// about.port = 8080;
// about.grandmaster = "00-00-5E-FF-FE-00-53-01";
// about.version_seconds = 1541234567; // now, TAI
//
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST());        // 80 KB
// std::unique_ptr<NMOS_IS05_ST> connections(new NMOS_IS05_ST()); // 414 KB
// st_param_sys settings;
// Selection selection;
// std::vector<std::string> findings =
//     fill_default_records(about, *node, *connections, settings, selection);
// assert(findings.empty());
//
// const std::string sdp =
//     ConnectionApi().make_single_senderid_sdp(connections.get(), sender_video_1, &settings);
// assert(sdp.find("c=IN IP4 239.255.1.1/64\r\n") != std::string::npos);
//
// // What is changed in one record must be changed in the others:
// settings.sdp_video_system = video_system_2160;
// findings = check_records(*node, *connections, settings, selection);
// assert(findings.size() == 2);
// assert(findings[0] == "node.flows[0].frame_width is 1920, the SDP file says 3840, "
//                       "see settings.sdp_video_system");
//
// // A description that cannot be used is found at once:
// about.interfaces[0].mac = "5e-00-53-01";
// findings = fill_default_records(about, *node, *connections, settings, selection);
// assert(findings[0] == "node.interfaces[0].port_id is \"5e-00-53-01\", it must be like "
//                       "00-00-5e-00-53-01, in lower case");
// ```

#ifndef NMOS_INSTRUMENT_DEFAULT_RECORDS_H
#define NMOS_INSTRUMENT_DEFAULT_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "nmos_instrument/codes.h"
#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/record_check.h"
#include "nmos_instrument/record_text.h"
#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument {

namespace default_records_detail {

/// FNV-1a, its bits stirred.
inline std::uint64_t hash(const std::string& text, std::uint64_t start)
{
    std::uint64_t value = start;
    for (const char c : text)
        value = (value ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
    value = (value ^ (value >> 30U)) * 0xbf58476d1ce4e5b9ULL;
    value = (value ^ (value >> 27U)) * 0x94d049bb133111ebULL;
    return value ^ (value >> 31U);
}

} // namespace default_records_detail

/// The id that fill_default_records gives resource `number` of a kind: "node", "device", "source",
/// "flow", "sender" or "receiver".
///
/// A UUID in form only: version 4 says random (RFC 4122, 4.4), here it is 122 bits of a hash of the
/// three arguments, so that the library needs nothing for it. Different arguments give different
/// ids as surely as random numbers differ, but whoever wants two equal ones can make them. A host
/// that has a library for UUIDs gives name-based ones (version 5) instead, see
/// RecordsDescription::make_id.
inline std::string default_id(const std::string& seed, const std::string& kind, std::size_t number)
{
    const std::string name = seed + '/' + kind + '/' + std::to_string(number);
    // The second start is the first's digits backwards; any other number would do.
    std::uint64_t halves[2] = {default_records_detail::hash(name, 0xcbf29ce484222325ULL),
                               default_records_detail::hash(name, 0x523222484ec92fbcULL)};
    halves[0] = (halves[0] & ~0xF000ULL) | 0x4000ULL;                     // version 4
    halves[1] = (halves[1] & ~(3ULL << 62U)) | (std::uint64_t(2) << 62U); // RFC 4122's variant
    std::string id;
    for (std::size_t digit = 0; digit < 32; ++digit) {
        if (digit == 8 || digit == 12 || digit == 16 || digit == 20)
            id += '-';
        id += "0123456789abcdef"[halves[digit / 16] >> (60 - 4 * (digit % 16)) & 0xFU];
    }
    return id;
}

/// One media interface.
struct InterfaceDescription
{
    std::string name;    ///< as the operating system calls it, "eth0"
    std::string mac;     ///< either case, dashes or colons
    std::string address; ///< IPv4, where media streams are sent from and received at
};

/// What only the host knows about its instrument.
struct RecordsDescription
{
    /// All ids are made from it: the same seed gives the same ids, on every machine. Each
    /// instrument on a network needs one of its own.
    std::string seed;
    /// Makes them. Whatever it gives, check_records looks at it.
    std::string (*make_id)(const std::string& seed, const std::string& kind,
                           std::size_t number) = default_id;
    std::string label;                  ///< of the node
    InterfaceDescription interfaces[2]; ///< of the primary leg, of the secondary
    std::string address;                ///< IPv4, where the APIs are reached
    int port = 80;                      ///< TCP port of the APIs
    std::string grandmaster;            ///< of PTP, "00-00-5E-FF-FE-00-53-01", either case
    std::uint64_t version_seconds = 0;  ///< now, TAI; see node_state.h
    std::int32_t version_nanoseconds = 0;
};

namespace default_records_detail {

/// As octets are written in IS-04: lower case with dashes. In SDP files they are upper case.
inline std::string octets(const std::string& text, bool upper_case)
{
    std::string result = text;
    for (char& c : result) {
        if (c == ':')
            c = '-';
        else if (upper_case && c >= 'a' && c <= 'f')
            c = static_cast<char>(c - 'a' + 'A');
        else if (!upper_case && c >= 'A' && c <= 'F')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

/// What the resources of one essence have in common; 0 video, 1 audio, 2 ancillary data.
struct Essence
{
    const char* name;
    const char* format;
    const char* media_type;
};

inline Essence essence(std::size_t position)
{
    static const Essence all[] = {
        {"Video", "urn:x-nmos:format:video", "video/raw"},
        {"Audio", "urn:x-nmos:format:audio", "audio/L24"},
        {"Ancillary data", "urn:x-nmos:format:data", "video/smpte291"},
    };
    return all[position];
}

inline std::size_t essence_of_sender(std::size_t sender)
{
    return sender < sender_audio ? 0 : sender == sender_audio ? 1 : 2;
}

inline std::size_t essence_of_receiver(std::size_t receiver)
{
    return receiver < receiver_audio_1_g1 ? 0 : receiver < receiver_ancillary_1 ? 1 : 2;
}

/// "Audio of IP stream 2, group G3"
inline std::string receiver_name(std::size_t receiver)
{
    const std::string name = essence(essence_of_receiver(receiver)).name;
    const std::size_t groups = audio_group_count_of_a_stream;
    const std::size_t audio = receiver - receiver_audio_1_g1; // of an audio receiver
    switch (essence_of_receiver(receiver)) {
    case 0:
        return name + " of IP stream " + std::to_string(receiver + 1);
    case 1:
        return name + " of IP stream " + std::to_string(audio / groups + 1) + ", group G" +
               std::to_string(audio % groups + 1);
    default:
        return name + " of IP stream " + std::to_string(receiver - receiver_ancillary_1 + 1);
    }
}

/// Of a sender's leg: 239.255.1.1 for sender 0 on the primary leg (RFC 2365, local scope).
inline std::string destination(std::size_t sender, std::size_t leg)
{
    return "239.255." + std::to_string(leg + 1) + "." + std::to_string(sender + 1);
}

enum : int
{
    port_of_streams = 5004, ///< RTP (RFC 3551, 8)
    payload_type_of_video = 96,
    payload_type_of_audio = 97,
    payload_type_of_ancillary_data = 100
};

class Filler
{
public:
    Filler(const RecordsDescription& about, NMOS_IS04_ST& node, NMOS_IS05_ST& connections,
           st_param_sys& settings, std::vector<std::string>& findings)
        : about_(about),
          node_(node),
          connections_(connections),
          settings_(settings),
          findings_(findings)
    {}

    void fill()
    {
        clear(node_);
        clear(connections_);
        clear(settings_);
        fill_self();
        fill_sources_and_flows();
        fill_device();
        for (std::size_t i = 0; i < sender_position_count; ++i)
            fill_sender(i);
        for (std::size_t i = 0; i < receiver_position_count; ++i)
            fill_receiver(i);
        fill_sdp_texts();
        fill_settings();
    }

private:
    /// In place: a temporary of 414 KB is too much for many stacks.
    template <class Record>
    static void clear(Record& record)
    {
        std::memset(static_cast<void*>(&record), 0, sizeof record);
    }

    /// Of what the host has given; all other texts fit.
    template <std::size_t N>
    void set(char (&field)[N], const char* path, const std::string& text)
    {
        if (!set_text(field, text))
            findings_.push_back(std::string(path) + " has room for " + std::to_string(N - 1) +
                                " bytes without NUL, the text has " + std::to_string(text.size()));
    }

    std::string id(const char* kind, std::size_t number) const
    {
        return about_.make_id(about_.seed, kind, number);
    }

    std::string base_url() const
    {
        return "http://" + about_.address + ':' + std::to_string(about_.port) + '/';
    }

    template <class Resource>
    void fill_core(Resource& resource, const char* kind, std::size_t number,
                   const std::string& label, const std::string& description)
    {
        set_text(resource.id, id(kind, number));
        set_version(resource, about_.version_seconds, about_.version_nanoseconds);
        set_text(resource.label, label);
        set_text(resource.description, description);
    }

    void fill_self()
    {
        fill_core(node_, "node", 0, "", "IP video, audio and ancillary data measuring instrument");
        set(node_.label, "node.label", about_.label);
        set(node_.href, "node.href", base_url());
        set_count(node_.versions_count, node_.versions, 1);
        set_text(node_.versions[0], "v1.2");
        set_count(node_.endpoints_count, node_.endpoints, 1);
        set(node_.endpoints[0].host, "node.endpoints[0].host", about_.address);
        node_.endpoints[0].port = about_.port;
        set_text(node_.endpoints[0].protocol, "http");
        set_count(node_.clocks_count, node_.clocks, 1);
        set_text(node_.clocks[0].name, "clk0");
        set_text(node_.clocks[0].ref_type, "ptp");
        set_text(node_.clocks[0].version, "IEEE1588-2008");
        set(node_.clocks[0].gmid, "node.clocks[0].gmid", octets(about_.grandmaster, false));
        set_count(node_.interfaces_count, node_.interfaces, 2);
        for (std::size_t i = 0; i < 2; ++i) {
            const std::string path = "node.interfaces[" + std::to_string(i) + "].";
            INTERFACE_IS04_ST& interface = node_.interfaces[i];
            set_text(interface.chassis_id, "null");
            set(interface.port_id, (path + "port_id").c_str(),
                octets(about_.interfaces[i].mac, false));
            set(interface.name, (path + "name").c_str(), about_.interfaces[i].name);
        }
        node_.version_seconds = about_.version_seconds;
        node_.version_nanoseconds = about_.version_nanoseconds;
    }

    void fill_sources_and_flows()
    {
        set_count(node_.sources_count, node_.sources, 3);
        set_count(node_.flows_count, node_.flows, 3);
        for (std::size_t i = 0; i < 3; ++i) {
            const Essence what = essence(i);
            const std::string name = what.name;
            SOURCE_IS04_ST& source = node_.sources[i];
            fill_core(source, "source", i, name, name + " made by the instrument");
            set_text(source.device_id, id("device", 0));
            set_text(source.clock_name, "clk0");
            set_text(source.format, what.format);

            FLOW_IS04_ST& flow = node_.flows[i];
            fill_core(flow, "flow", i, name, name + " as it is sent");
            set_text(flow.source_id, source.id);
            set_text(flow.device_id, source.device_id);
            set_text(flow.format, what.format);
            set_text(flow.media_type, what.media_type);
            flow.grain_rate_numerator = 60000;
            flow.grain_rate_denominator = 1001;
        }
        FLOW_IS04_ST& video = node_.flows[flow_video];
        video.frame_width = 1920;
        video.frame_height = 1080;
        video.bit_depth = 10;
        set_text(video.interlace_mode, "progressive");
        set_text(video.colorspace, "BT709");
        set_text(video.transfer_characteristic, "SDR");
        node_.flows[flow_audio].bit_depth = 24;
        node_.flows[flow_audio].sample_rate_numerator = 48000;
    }

    void fill_device()
    {
        set_count(node_.devices_count, node_.devices, 1);
        DEVICE_IS04_ST& device = node_.devices[0];
        fill_core(device, "device", 0, "Instrument", "All senders and receivers");
        set_text(device.type, "urn:x-nmos:device:generic");
        set_text(device.node_id, node_.id);
        set_count(device.sender_ids_count, device.senders, sender_position_count);
        set_count(device.receiver_ids_count, device.receivers, receiver_position_count);
        set_count(device.controls_count, device.controls, 1);
        set_text(device.controls[0].href, base_url() + "x-nmos/connection/v1.0/");
        set_text(device.controls[0].type, "urn:x-nmos:control:sr-ctrl/v1.0");
    }

    /// What senders and receivers have in common.
    template <class Resource>
    void bind(Resource& resource)
    {
        set_text(resource.device_id, node_.devices[0].id);
        set_count(resource.interface_bindings_count, resource.interface_bindings, 2);
        for (std::size_t i = 0; i < 2; ++i)
            set_text(resource.interface_bindings[i], node_.interfaces[i].name);
        set_count(resource.subscription_count, resource.subscription, 1);
        set_text(resource.subscription[0].peer_id, "null");
    }

    void fill_sender(std::size_t i)
    {
        const std::string name = std::string(essence(essence_of_sender(i)).name) +
                                 " of IP stream " + std::to_string(i < sender_audio ? i + 1 : 1);
        set_count(node_.senders_count, node_.senders, sender_position_count);
        SENDER_IS04_ST& sender = node_.senders[i];
        fill_core(sender, "sender", i, name, name + ", sent");
        bind(sender);
        set_text(node_.devices[0].senders[i], sender.id);
        set_text(sender.flow_id, node_.flows[essence_of_sender(i)].id);
        set_text(sender.transport, "urn:x-nmos:transport:rtp.mcast");
        set_text(sender.manifest_href, base_url() + "x-nmos/connection/v1.0/single/senders/" +
                                           text_of(sender.id) + "/transportfile");

        CONNECTION_HALF_IS05_ST& half = connections_.senders[i].active;
        fill_idle(half);
        for (std::size_t leg = 0; leg < 2; ++leg) {
            set_text(half.transport_params[leg].source_ip, about_.interfaces[leg].address);
            set_text(half.transport_params[leg].destination_ip, destination(i, leg));
        }
        connections_.senders[i].staged = half;
    }

    void fill_receiver(std::size_t i)
    {
        const Essence what = essence(essence_of_receiver(i));
        const std::string name = receiver_name(i);
        set_count(node_.receivers_count, node_.receivers, receiver_position_count);
        RECEIVER_IS04_ST& receiver = node_.receivers[i];
        fill_core(receiver, "receiver", i, name, name + ", received");
        bind(receiver);
        set_text(node_.devices[0].receivers[i], receiver.id);
        set_text(receiver.transport, "urn:x-nmos:transport:rtp");
        set_text(receiver.format, what.format);
        set_count(receiver.media_types_count, receiver.media_types, 1);
        set_text(receiver.media_types[0], what.media_type);

        CONNECTION_HALF_IS05_ST& half = connections_.receivers[i].active;
        fill_idle(half);
        for (std::size_t leg = 0; leg < 2; ++leg) {
            set_text(half.transport_params[leg].source_ip, "null");
            set_text(half.transport_params[leg].destination_ip, "null");
            set_text(half.transport_params[leg].interface_ip, about_.interfaces[leg].address);
        }
        connections_.receivers[i].staged = half;
    }

    /// Two legs, not enabled, no activation, no peer and no transport file.
    static void fill_idle(CONNECTION_HALF_IS05_ST& half)
    {
        half.leg_count = 2;
        set_text(half.peer_id, "null");
        set_text(half.mode, "null");
        set_text(half.requested_time, "null");
        set_text(half.activation_time, "null");
        set_text(half.transport_file_data, "null");
        set_text(half.transport_file_type, "null");
        for (CONNECTION_LEG_IS05_ST& leg : half.transport_params) {
            leg.destination_port = port_of_streams;
            leg.rtp_enabled = 1;
        }
    }

    void fill_sdp_texts()
    {
        // RFC 7273, 4.8: upper case.
        set(connections_.ptp_grandmaster_id, "connections.ptp_grandmaster_id",
            octets(about_.grandmaster, true));
        set_text(connections_.sdp_session_id, std::to_string(about_.version_seconds));
        set_text(connections_.sdp_session_version, std::to_string(about_.version_seconds));
    }

    void fill_settings()
    {
        settings_.sdp_st2110_mode = stream_mode_st2110;
        settings_.sdp_video_system = video_system_1080;
        settings_.sdp_video_frame_rate = frame_rate_59_94;
        settings_.sdp_audio_ptime = packet_time_1_ms;
        settings_.sdp_rtp_payload_video = payload_type_of_video;
        settings_.sdp_rtp_payload_audio = payload_type_of_audio;
        settings_.sdp_rtp_payload_anc = payload_type_of_ancillary_data;
        for (std::size_t i = 0; i < ip_stream_count; ++i) {
            settings_.st2110_vfmt_system[i] = video_system_1080;
            settings_.st2110_vfmt_frame_rate[i] = frame_rate_59_94;
            settings_.st2110_vfmt_rtp_payload_video[i] = payload_type_of_video;
            settings_.st2110_vfmt_rtp_payload_audio[i] = payload_type_of_audio;
            settings_.st2110_vfmt_rtp_payload_anc[i] = payload_type_of_ancillary_data;
            set_path(i, 0, settings_.pri_video_addresses[i], settings_.pri_video_dst_port[i]);
            set_path(i, 1, settings_.sec_video_addresses[i], &settings_.sec_video_dst_port[i * 4]);
        }
        set_path(sender_audio, 0, settings_.pri_audio_addresses[0][0],
                 settings_.pri_audio_dst_port[0]);
        set_path(sender_audio, 1, settings_.sec_audio_addresses[0][0],
                 &settings_.sec_audio_dst_port[0]);
        set_path(sender_ancillary, 0, settings_.pri_anc_addresses[0],
                 settings_.pri_anc_dst_port[0]);
        set_path(sender_ancillary, 1, settings_.sec_anc_addresses[0],
                 settings_.sec_anc_dst_port[0]);
    }

    /// Where a sender's leg comes from and goes to, as its connection says.
    void set_path(std::size_t sender, std::size_t leg, st_param_addresses& addresses,
                  std::int16_t* port) const
    {
        set_octets(addresses.src_ip, about_.interfaces[leg].address);
        set_octets(addresses.dst_ip, destination(sender, leg));
        port[0] = port_of_streams & 0xFF;
        port[1] = port_of_streams >> 8;
    }

    /// What is no address, check_record finds in the connections.
    static void set_octets(std::int16_t (&octets_of_address)[4], const std::string& address)
    {
        std::size_t i = 0;
        for (const char c : address) {
            if (c == '.' && i < 3)
                ++i;
            else if (c >= '0' && c <= '9' && octets_of_address[i] < 256)
                octets_of_address[i] =
                    static_cast<std::int16_t>(octets_of_address[i] * 10 + (c - '0'));
        }
    }

    const RecordsDescription& about_;
    NMOS_IS04_ST& node_;
    NMOS_IS05_ST& connections_;
    st_param_sys& settings_;
    std::vector<std::string>& findings_;
};

} // namespace default_records_detail

/// Fills all four, whatever they hold. Returns what is wrong with the result: a text that does not
/// fit its field, then the findings of check_records. Empty for every description that is right.
///
/// - The node: one PTP clock, two interfaces, three sources and flows, one device with all 6
///   senders and 24 receivers. `selection` hides senders 1 to 3 (video of IP streams 2 to 4), and no
///   receiver; sender_filter_all shows the three, which are filled like the others.
/// - The connections: both halves alike, two legs, nothing enabled, no peer. Senders go to
///   239.255.1.1 to .6, and to 239.255.2.1 to .6 on the secondary leg, UDP port 5004.
/// - `sdp_session_id` and `sdp_session_version` are `version_seconds`. The record has one for all
///   senders: a host that means RFC 4566, 5.2 writes those of a sender before each
///   ConnectionApi::make_single_senderid_sdp.
/// - The settings: what SDP files are written from, the video format and payload types of the
///   streams, and the addresses and ports of the senders. Codes that only the instrument knows are 0.
///
/// Do not keep the records on a stack, 494 KB in all: static storage and the heap are their places.
inline std::vector<std::string> fill_default_records(const RecordsDescription& about,
                                                     NMOS_IS04_ST& node, NMOS_IS05_ST& connections,
                                                     st_param_sys& settings, Selection& selection)
{
    std::vector<std::string> findings;
    default_records_detail::Filler(about, node, connections, settings, findings).fill();
    selection = {receiver_filter_all, audio_group_filter_all, sender_filter_stream_1};
    const std::vector<std::string> more = check_records(node, connections, settings, selection);
    findings.insert(findings.end(), more.begin(), more.end());
    return findings;
}

} // namespace nmos_instrument

#endif

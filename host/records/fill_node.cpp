// SPDX-License-Identifier: Apache-2.0

#include "records/fill_node.h"

#include <string>

#include "configuration/video_format.h"
#include "records/addresses.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

/// What the resources of one essence have in common.
struct EssenceFacts
{
    const char* format;
    const char* media_type;
    const char* name; ///< in descriptions
};

constexpr EssenceFacts essence_facts[] = {
    // This is the media type in SMPTE ST 2022-6 carriage too, as in the library's SDP file: a
    // receiver's field has no room for "video/SMPTE2022-6". Conformance puts that right.
    {"urn:x-nmos:format:video", "video/raw", "Video"},
    {"urn:x-nmos:format:audio", "audio/L24", "Audio"},
    {"urn:x-nmos:format:data", "video/smpte291", "Ancillary data"},
};

const EssenceFacts& facts_of_essence(Essence essence)
{
    return essence_facts[index_of(essence)];
}

std::string stream_name(std::size_t stream)
{
    return "IP stream " + std::to_string(stream + 1);
}

/// "Video sent by IP stream 2"
std::string sender_description(std::size_t sender)
{
    const Essence essence = essence_of_sender(sender);
    const std::size_t stream = essence == Essence::video ? sender : 0;
    return std::string(facts_of_essence(essence).name) + " sent by " + stream_name(stream);
}

/// "Audio group G3 received by IP stream 2"
std::string receiver_description(std::size_t receiver)
{
    const Essence essence = essence_of_receiver(receiver);
    const std::string name = facts_of_essence(essence).name;
    if (essence == Essence::video)
        return name + " received by " + stream_name(receiver);
    if (essence == Essence::ancillary)
        return name + " received by " + stream_name(receiver - first_ancillary_receiver);
    const std::size_t stream = (receiver - first_audio_receiver) / audio_group_count;
    return name + " group G" + std::to_string(audio_group_of(receiver) + 1) + " received by " +
           stream_name(stream);
}

/// How many of the kinds video, audio and ancillary data the instrument sends.
std::size_t sent_essences(const Configuration& configuration)
{
    return configuration.streams.sender_essences == Essences::all ? 3 : 1;
}

std::size_t senders_present(const Configuration& configuration)
{
    return configuration.streams.sender_essences == Essences::all ? sender_count : stream_count;
}

class NodeFiller
{
public:
    NodeFiller(const Configuration& configuration, const NodeAddress& address,
               const Identity& identity, const TaiTime& now, NMOS_IS04_ST& node)
        : configuration_(configuration),
          address_(address),
          identity_(identity),
          version_(to_text(now)),
          node_(node)
    {}

    void fill()
    {
        fill_self();
        fill_clock();
        fill_interfaces();
        fill_sources();
        fill_flows();
        fill_device();
        fill_senders();
        fill_receivers();
        set_address(node_, address_);
    }

private:
    /// The members that every IS-04 resource has.
    template <class Resource>
    void fill_core(Resource& resource, const std::string& id, const std::string& label,
                   const std::string& description) const
    {
        set_text(resource.id, id);
        set_text(resource.version, version_);
        set_text(resource.label, label);
        set_text(resource.description, description);
    }

    void fill_self()
    {
        fill_core(node_, identity_.node, configuration_.node.label,
                  configuration_.node.description);
        set_text(node_.hostname, configuration_.node.hostname);

        node_.versions_count = 1;
        set_text(node_.versions[0], "v1.2");
        node_.endpoints_count = 1;
        set_text(node_.endpoints[0].protocol, "http");
    }

    void fill_clock()
    {
        const ClockSettings& settings = configuration_.clock;
        CLOCK_IS04_ST& clock = node_.clocks[0];
        node_.clocks_count = 1;
        set_text(clock.name, settings.name);
        if (settings.reference == ClockReference::internal) {
            set_text(clock.ref_type, "internal");
            return;
        }
        set_text(clock.ref_type, "ptp");
        clock.traceable = settings.traceable;
        set_text(clock.version, "IEEE1588-2008");
        set_text(clock.gmid, settings.grandmaster); // IS-04 v1.2, clock_ptp.json: lower case
        clock.locked = settings.locked;
    }

    void fill_interfaces()
    {
        node_.interfaces_count = interface_count;
        for (std::size_t i = 0; i < interface_count; ++i) {
            const MediaInterface& settings = configuration_.interfaces[i];
            INTERFACE_IS04_ST& interface = node_.interfaces[i];
            set_text(interface.name, settings.name);
            set_text(interface.port_id, settings.mac);
            set_text(interface.chassis_id,
                     settings.chassis_id ? std::string_view(*settings.chassis_id) : null_text);
        }
    }

    void fill_sources()
    {
        const std::size_t count = sent_essences(configuration_);
        node_.sources_count = static_cast<std::int32_t>(count);
        for (std::size_t i = 0; i < count; ++i) {
            const EssenceFacts& essence = essence_facts[i];
            SOURCE_IS04_ST& source = node_.sources[i];
            fill_core(source, identity_.sources[i], configuration_.labels.sources[i],
                      std::string(essence.name) + " generated by the instrument");
            set_text(source.device_id, identity_.device);
            set_text(source.clock_name, configuration_.clock.name);
            set_text(source.format, essence.format);
        }
    }

    void fill_flows()
    {
        const std::size_t count = sent_essences(configuration_);
        node_.flows_count = static_cast<std::int32_t>(count);
        for (std::size_t i = 0; i < count; ++i) {
            const EssenceFacts& essence = essence_facts[i];
            FLOW_IS04_ST& flow = node_.flows[i];
            fill_core(flow, identity_.flows[i], configuration_.labels.flows[i],
                      std::string(essence.name) + " as it is sent");
            set_text(flow.source_id, identity_.sources[i]);
            set_text(flow.device_id, identity_.device);
            set_text(flow.format, essence.format);
            set_text(flow.media_type, essence.media_type);
            // A grain of any essence belongs to one video frame.
            const FrameRateFacts& rate = facts_of(configuration_.video.frame_rate);
            flow.grain_rate_numerator = rate.numerator;
            flow.grain_rate_denominator = rate.denominator;
        }
        fill_video_format(node_.flows[index_of(Essence::video)]);
        if (count > index_of(Essence::audio)) {
            FLOW_IS04_ST& audio = node_.flows[index_of(Essence::audio)];
            audio.bit_depth = 24;
            audio.sample_rate_numerator = configuration_.audio.sample_rate;
        }
    }

    void fill_video_format(FLOW_IS04_ST& flow) const
    {
        const VideoSettings& video = configuration_.video;
        const PictureSizeFacts& size = facts_of(video.lines);
        flow.frame_width = size.width;
        flow.frame_height = size.height;
        flow.bit_depth = video.bit_depth;
        set_text(flow.interlace_mode,
                 video.scan == Scan::progressive ? "progressive" : "interlaced_tff");
        set_text(flow.colorspace, video.colorimetry);
        set_text(flow.transfer_characteristic, video.transfer_characteristic);
    }

    void fill_device()
    {
        node_.devices_count = 1;
        DEVICE_IS04_ST& device = node_.devices[0];
        fill_core(device, identity_.device, configuration_.labels.device,
                  "All senders and receivers of the instrument");
        set_text(device.type, "urn:x-nmos:device:generic");
        set_text(device.node_id, identity_.node);
        device.sender_ids_count = static_cast<std::int32_t>(senders_present(configuration_));
        for (std::size_t i = 0; i < senders_present(configuration_); ++i)
            set_text(device.senders[i], identity_.senders[i]);
        device.receiver_ids_count = receiver_count;
        for (std::size_t i = 0; i < receiver_count; ++i)
            set_text(device.receivers[i], identity_.receivers[i]);
        device.controls_count = 1;
        set_text(device.controls[0].type, "urn:x-nmos:control:sr-ctrl/v1.0");
    }

    /// One binding for each leg.
    template <class Resource>
    void bind_interfaces(Resource& resource) const
    {
        resource.interface_bindings_count = interface_count;
        for (std::size_t i = 0; i < interface_count; ++i)
            set_text(resource.interface_bindings[i], configuration_.interfaces[i].name);
    }

    template <class Resource>
    static void subscribe(Resource& resource, bool active)
    {
        resource.subscription_count = 1;
        set_text(resource.subscription[0].peer_id, null_text);
        resource.subscription[0].active = active;
    }

    void fill_senders()
    {
        const std::size_t count = senders_present(configuration_);
        node_.senders_count = static_cast<std::int32_t>(count);
        for (std::size_t i = 0; i < count; ++i) {
            SENDER_IS04_ST& sender = node_.senders[i];
            const std::string& id = identity_.senders[i];
            fill_core(sender, id, configuration_.labels.senders[i], sender_description(i));
            set_text(sender.flow_id, identity_.flows[index_of(essence_of_sender(i))]);
            set_text(sender.transport, "urn:x-nmos:transport:rtp.mcast");
            set_text(sender.device_id, identity_.device);
            bind_interfaces(sender);
            subscribe(sender, true);
        }
    }

    void fill_receivers()
    {
        node_.receivers_count = receiver_count;
        for (std::size_t i = 0; i < receiver_count; ++i) {
            const EssenceFacts& essence = facts_of_essence(essence_of_receiver(i));
            RECEIVER_IS04_ST& receiver = node_.receivers[i];
            fill_core(receiver, identity_.receivers[i], configuration_.labels.receivers[i],
                      receiver_description(i));
            set_text(receiver.device_id, identity_.device);
            set_text(receiver.transport, "urn:x-nmos:transport:rtp"); // multicast and unicast
            set_text(receiver.format, essence.format);
            receiver.media_types_count = 1;
            set_text(receiver.media_types[0], essence.media_type);
            bind_interfaces(receiver);
            subscribe(receiver, false);
        }
    }

    const Configuration& configuration_;
    const NodeAddress& address_;
    const Identity& identity_;
    const std::string version_;
    NMOS_IS04_ST& node_;
};

} // namespace

void fill_node(const Configuration& configuration, const NodeAddress& address,
               const Identity& identity, const TaiTime& now, NMOS_IS04_ST& node)
{
    NodeFiller(configuration, address, identity, now, node).fill();
    node.version_seconds = now.seconds;
    node.version_nanoseconds = now.nanoseconds;
}

} // namespace nmos_instrument::host

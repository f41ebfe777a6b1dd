// SPDX-License-Identifier: Apache-2.0

#include "records/read_back.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "configuration/configuration_keys.h"
#include "configuration/video_format.h"
#include "records/record_findings.h"
#include "records/record_shape.h"
#include "records/record_text.h"
#include "text/ascii.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

constexpr const char* in_all_sdp_files = ", as all SDP files say";

/// For each leg the one address of its interface, as the first connection tells it.
using LegAddresses = std::array<std::optional<std::string>, leg_count>;

/// The row of `table` that has this code; a finding and null if none has.
template <class Row, std::size_t N>
const Row* row_of(const std::array<Row, N>& table, std::int16_t Row::*code, const char* path,
                  std::int16_t found, const char* unit, RecordFindings& findings)
{
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&](const Row& one) { return one.*code == found; });
    if (row != table.end())
        return &*row;
    const auto word = [&](const Row& one) {
        return std::to_string(one.*code) + " (" + std::string(one.json) + unit + ')';
    };
    findings.refuse(path, std::to_string(found), "are " + word_list(table, word));
    return nullptr;
}

class ReadBack
{
public:
    ReadBack(const Records& records, Configuration rest)
        : records_(records), node_(records.node), result_(std::move(rest))
    {}

    Configuration read()
    {
        result_.streams = streams_of(records_, findings_);
        check_counts(node_, result_.streams, findings_);
        findings_.expect_none(); // before anything is read up to a count
        check_references(node_, findings_);
        read_node();
        read_clock();
        read_interfaces();
        read_carriage();
        read_video();
        read_audio();
        read_connections();
        read_labels();
        findings_.add(findings_in(records_));
        findings_.expect_none();
        return std::move(result_);
    }

private:
    void read_node()
    {
        result_.node.label = text_of(node_.label);
        result_.node.description = text_of(node_.description);
        result_.node.hostname = text_of(node_.hostname);
    }

    void read_clock()
    {
        const CLOCK_IS04_ST& clock = node_.clocks[0];
        const std::string grandmaster(text_of(records_.connections.ptp_grandmaster_id));
        ClockSettings& settings = result_.clock;
        settings.name = text_of(clock.name);
        settings.grandmaster = lower_case(grandmaster);
        settings.domain = records_.settings.ptp_domain_num_pri;
        settings.reference =
            text_of(clock.ref_type) == "ptp" ? ClockReference::ptp : ClockReference::internal;
        if (settings.reference == ClockReference::internal)
            return;
        settings.traceable = clock.traceable != 0;
        settings.locked = clock.locked != 0;
    }

    void read_interfaces()
    {
        for (std::size_t i = 0; i < interface_count; ++i) {
            const INTERFACE_IS04_ST& interface = node_.interfaces[i];
            MediaInterface& settings = result_.interfaces[i];
            settings.name = text_of(interface.name);
            settings.mac = text_of(interface.port_id);
            settings.chassis_id = text_of(interface.chassis_id);
            if (settings.chassis_id == null_text)
                settings.chassis_id.reset();
        }
    }

    void read_carriage()
    {
        const st_param_sys& settings = records_.settings;
        result_.carriage = settings.sdp_st2110_mode == 0 ? Carriage::st2022_6 : Carriage::st2110;
        result_.payload_types = {settings.sdp_rtp_payload_video, settings.sdp_rtp_payload_audio,
                                 settings.sdp_rtp_payload_anc};
        if (result_.carriage == Carriage::st2022_6)
            result_.payload_types.video = st2022_6_payload_type;
    }

    void read_video()
    {
        const st_param_sys& settings = records_.settings;
        // The library takes 1 for 3840x2160 too.
        const auto system = static_cast<std::int16_t>(
            settings.sdp_video_system == 1 ? 0 : settings.sdp_video_system);
        const PictureSizeFacts* const size =
            row_of(picture_sizes, &PictureSizeFacts::system_code, "settings.sdp_video_system",
                   system, " lines", findings_);
        const FrameRateFacts* const rate =
            row_of(frame_rates, &FrameRateFacts::rate_code, "settings.sdp_video_frame_rate",
                   settings.sdp_video_frame_rate, "", findings_);
        if (size == nullptr || rate == nullptr)
            return;
        result_.video.lines = size->size;
        result_.video.scan = rate->scan;
        result_.video.frame_rate = rate->rate;
        if (rate->scan == Scan::interlaced && size->size != PictureSize::lines_1080)
            findings_.refuse("settings.sdp_video_frame_rate",
                             std::to_string(rate->rate_code) + ", which is interlaced",
                             "with " + std::string(size->json) + " lines are 0, 1, 2");
        else
            check_video_flow();
    }

    /// What check_records leaves open: the SDP files of this instrument always say the same.
    void check_video_flow()
    {
        const FLOW_IS04_ST& flow = node_.flows[index_of(Essence::video)];
        const VideoSettings& video = result_.video;
        findings_.expect_text("node.flows[0].colorspace", text_of(flow.colorspace),
                              video.colorimetry, in_all_sdp_files);
        findings_.expect_text("node.flows[0].transfer_characteristic",
                              text_of(flow.transfer_characteristic), video.transfer_characteristic,
                              in_all_sdp_files);
        findings_.expect_number("node.flows[0].bit_depth", flow.bit_depth, video.bit_depth,
                                in_all_sdp_files);
    }

    void read_audio()
    {
        AudioSettings& audio = result_.audio;
        const PacketTimeFacts* const time =
            row_of(packet_times, &PacketTimeFacts::ptime_code, "settings.sdp_audio_ptime",
                   records_.settings.sdp_audio_ptime, " ms", findings_);
        if (time != nullptr)
            audio.packet_time = time->time;
        if (result_.streams.sender_essences != Essences::all)
            return;
        constexpr int bits = 24; // of L24
        const FLOW_IS04_ST& flow = node_.flows[index_of(Essence::audio)];
        findings_.expect_number("node.flows[1].bit_depth", flow.bit_depth, bits, in_all_sdp_files);
        findings_.expect_number("node.flows[1].sample_rate_numerator", flow.sample_rate_numerator,
                                audio.sample_rate, in_all_sdp_files);
    }

    void read_connections()
    {
        LegAddresses addresses;
        for (std::size_t i = 0; i < sender_count; ++i) {
            if (!has_sender(node_, i))
                continue;
            const CONNECTION_IS05_ST& sender = records_.connections.senders[i];
            read_addresses(path_of("connections.senders", i, ".active"), sender.active,
                           Side::sender, addresses);
            read_addresses(path_of("connections.senders", i, ".staged"), sender.staged,
                           Side::sender, addresses);
            result_.destinations[i] = {destination(sender.active.transport_params[0]),
                                       destination(sender.active.transport_params[1])};
        }
        for (std::size_t i = 0; i < receiver_count; ++i) {
            if (!has_receiver(node_, i))
                continue;
            const CONNECTION_IS05_ST& receiver = records_.connections.receivers[i];
            read_addresses(path_of("connections.receivers", i, ".active"), receiver.active,
                           Side::receiver, addresses);
            read_addresses(path_of("connections.receivers", i, ".staged"), receiver.staged,
                           Side::receiver, addresses);
        }
        for (std::size_t i = 0; i < leg_count; ++i) {
            if (addresses[i])
                result_.interfaces[i].address = *addresses[i];
        }
    }

    /// check_record finds a port that is none.
    static Destination destination(const CONNECTION_LEG_IS05_ST& leg)
    {
        const double port = leg.destination_port;
        return {std::string(text_of(leg.destination_ip)),
                port >= 0 && port <= highest_port ? static_cast<int>(port) : 0};
    }

    enum class Side
    {
        sender,
        receiver
    };

    /// "auto" is the address of the interface. So is "null" in a receiver that was never connected.
    void read_addresses(const std::string& path, const CONNECTION_HALF_IS05_ST& half, Side side,
                        LegAddresses& addresses)
    {
        findings_.expect_number(path + ".leg_count", half.leg_count, leg_count);
        for (std::size_t i = 0; i < leg_count; ++i) {
            const CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
            const std::string_view found =
                side == Side::sender ? text_of(leg.source_ip) : text_of(leg.interface_ip);
            if (found == auto_text || (side == Side::receiver && found == null_text))
                continue;
            const std::string field = path + path_of(".transport_params", i) +
                                      (side == Side::sender ? ".source_ip" : ".interface_ip");
            if (found == null_text) {
                findings_.refuse(field, "\"null\"", "is the address of its interface");
                continue;
            }
            if (!addresses[i])
                addresses[i] = found;
            findings_.expect_text(field, found, *addresses[i],
                                  ", as in all others: the address of their interface");
        }
    }

    void read_labels()
    {
        Labels& labels = result_.labels;
        labels.device = text_of(node_.devices[0].label);
        for (std::int32_t i = 0; i < node_.sources_count; ++i)
            labels.sources.at(static_cast<std::size_t>(i)) = text_of(node_.sources[i].label);
        for (std::int32_t i = 0; i < node_.flows_count; ++i)
            labels.flows.at(static_cast<std::size_t>(i)) = text_of(node_.flows[i].label);
        for (std::size_t i = 0; i < sender_count; ++i) {
            if (has_sender(node_, i))
                labels.senders[i] = text_of(node_.senders[i].label);
        }
        for (std::size_t i = 0; i < receiver_count; ++i) {
            if (has_receiver(node_, i))
                labels.receivers[i] = text_of(node_.receivers[i].label);
        }
    }

    const Records& records_;
    const NMOS_IS04_ST& node_;
    Configuration result_;
    RecordFindings findings_;
};

} // namespace

Configuration configuration_of(const Records& records, const Configuration& rest)
{
    return ReadBack(records, rest).read();
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "records/fill_settings.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "configuration/video_format.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

void set_octets(std::int16_t (&octets)[4], const std::string& address)
{
    const std::optional<std::uint32_t> number = ipv4_from_dotted_quad(address);
    if (!number)
        throw std::logic_error("\"" + address + "\" is not an IPv4 address");
    for (int i = 0; i < 4; ++i)
        octets[i] = static_cast<std::int16_t>(*number >> (24 - 8 * i) & 0xff);
}

void set_port(std::int16_t* low_and_high_byte, int port)
{
    low_and_high_byte[0] = static_cast<std::int16_t>(port & 0xff);
    low_and_high_byte[1] = static_cast<std::int16_t>(port >> 8);
}

} // namespace

void fill_settings(const Configuration& configuration, st_param_sys& settings)
{
    // These codes are the instrument's own.
    constexpr std::int16_t redundant = 1;        // both legs (SMPTE ST 2022-7)
    constexpr std::int16_t profile_st2059_2 = 1; // SMPTE ST 2059-2
    constexpr std::int16_t eight_a_second = -3;  // logarithm of the interval (IEEE 1588-2008 7.7)
    constexpr std::int16_t whole_address = 32;   // bits of an address that matter

    const PictureSizeFacts& size = facts_of(configuration.video.lines);
    const FrameRateFacts& rate = facts_of(configuration.video.frame_rate);
    const auto domain = static_cast<std::int16_t>(configuration.clock.domain);
    const auto payload_video = static_cast<std::int16_t>(configuration.payload_types.video);
    const auto payload_audio = static_cast<std::int16_t>(configuration.payload_types.audio);
    const auto payload_anc = static_cast<std::int16_t>(configuration.payload_types.ancillary);

    settings.redundancy = redundant;
    settings.ptp_profile = profile_st2059_2;
    settings.ptp_domain_num_pri = domain;
    settings.ptp_domain_num_sec = domain;
    settings.ptp_delay_msg_rate = eight_a_second;

    const auto set_leg = [&](st_param_masks& masks, st_param_addresses& addresses,
                             std::int16_t* port, std::size_t leg, const Destination& destination) {
        masks = {whole_address, whole_address};
        set_octets(addresses.src_ip, configuration.interfaces[leg].address);
        set_octets(addresses.dst_ip, destination.address);
        set_port(port, destination.port);
    };

    for (std::size_t s = 0; s < stream_count; ++s) {
        const SenderDestinations& video = configuration.destinations[s];
        set_leg(settings.pri_video_masks[s], settings.pri_video_addresses[s],
                settings.pri_video_dst_port[s], 0, video.primary);
        set_leg(settings.sec_video_masks[s], settings.sec_video_addresses[s],
                &settings.sec_video_dst_port[s * 4], 1, video.secondary);

        settings.st2110_vfmt_rtp_payload_video[s] = payload_video;
        settings.st2110_vfmt_rtp_payload_audio[s] = payload_audio;
        settings.st2110_vfmt_rtp_payload_anc[s] = payload_anc;
        settings.st2110_vfmt_system[s] = size.system_code;
        settings.st2110_vfmt_struct[s] = rate.scan == Scan::interlaced ? 1 : 0;
        settings.st2110_vfmt_frame_rate[s] = rate.rate_code;
    }

    // Only IP stream 1 sends audio and ancillary data; the other streams keep zeros.
    if (configuration.streams.sender_essences == Essences::all) {
        const SenderDestinations& audio = configuration.destinations[audio_sender];
        set_leg(settings.pri_audio_masks[0][0], settings.pri_audio_addresses[0][0],
                settings.pri_audio_dst_port[0], 0, audio.primary);
        set_leg(settings.sec_audio_masks[0][0], settings.sec_audio_addresses[0][0],
                &settings.sec_audio_dst_port[0], 1, audio.secondary);
        const SenderDestinations& ancillary = configuration.destinations[ancillary_sender];
        set_leg(settings.pri_anc_masks[0], settings.pri_anc_addresses[0],
                settings.pri_anc_dst_port[0], 0, ancillary.primary);
        set_leg(settings.sec_anc_masks[0], settings.sec_anc_addresses[0],
                settings.sec_anc_dst_port[0], 1, ancillary.secondary);
    }

    settings.sdp_st2110_mode = configuration.carriage == Carriage::st2110 ? 1 : 0;
    settings.sdp_video_system = size.system_code;
    settings.sdp_video_frame_rate = rate.rate_code;
    settings.sdp_audio_ptime = facts_of(configuration.audio.packet_time).ptime_code;
    settings.sdp_rtp_payload_video = payload_video;
    settings.sdp_rtp_payload_audio = payload_audio;
    settings.sdp_rtp_payload_anc = payload_anc;
}

} // namespace nmos_instrument::host

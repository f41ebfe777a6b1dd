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

/// One leg of one stream: where it comes from and where it goes.
void set_leg(st_param_masks& masks, st_param_addresses& addresses, std::int16_t* port,
             const std::string& source, const Destination& destination)
{
    constexpr std::int16_t whole_address = 32; // bits of an address that matter
    masks = {whole_address, whole_address};
    set_octets(addresses.src_ip, source);
    set_octets(addresses.dst_ip, destination.address);
    set_port(port, destination.port);
}

// The codes below are the instrument's own.

void fill_network(const Configuration& configuration, st_param_sys& settings)
{
    constexpr std::int16_t redundant = 1;        // both legs (SMPTE ST 2022-7)
    constexpr std::int16_t profile_st2059_2 = 1; // SMPTE ST 2059-2
    constexpr std::int16_t eight_a_second = -3;  // logarithm of the interval (IEEE 1588-2008 7.7)
    const auto domain = static_cast<std::int16_t>(configuration.clock.domain);
    settings.redundancy = redundant;
    settings.ptp_profile = profile_st2059_2;
    settings.ptp_domain_num_pri = domain;
    settings.ptp_domain_num_sec = domain;
    settings.ptp_delay_msg_rate = eight_a_second;
}

void fill_video(const Configuration& configuration, std::size_t stream, st_param_sys& settings)
{
    constexpr std::size_t ports_of_a_stream = 4; // elements of the flat table of secondary ports
    const SenderDestinations& to = configuration.destinations[stream];
    const auto& from = configuration.interfaces;
    set_leg(settings.pri_video_masks[stream], settings.pri_video_addresses[stream],
            settings.pri_video_dst_port[stream], from[0].address, to.primary);
    set_leg(settings.sec_video_masks[stream], settings.sec_video_addresses[stream],
            &settings.sec_video_dst_port[stream * ports_of_a_stream], from[1].address,
            to.secondary);

    const PictureSizeFacts& size = facts_of(configuration.video.lines);
    const FrameRateFacts& rate = facts_of(configuration.video.frame_rate);
    settings.st2110_vfmt_system[stream] = size.system_code;
    settings.st2110_vfmt_struct[stream] = rate.scan == Scan::interlaced ? 1 : 0;
    settings.st2110_vfmt_frame_rate[stream] = rate.rate_code;
}

void fill_payload_types(const PayloadTypes& types, std::size_t stream, st_param_sys& settings)
{
    settings.st2110_vfmt_rtp_payload_video[stream] = static_cast<std::int16_t>(types.video);
    settings.st2110_vfmt_rtp_payload_audio[stream] = static_cast<std::int16_t>(types.audio);
    settings.st2110_vfmt_rtp_payload_anc[stream] = static_cast<std::int16_t>(types.ancillary);
}

/// Only IP stream 1 sends audio and ancillary data; the other streams keep zeros.
void fill_audio_and_ancillary(const Configuration& configuration, st_param_sys& settings)
{
    const auto& from = configuration.interfaces;
    const SenderDestinations& audio = configuration.destinations[audio_sender];
    set_leg(settings.pri_audio_masks[0][0], settings.pri_audio_addresses[0][0],
            settings.pri_audio_dst_port[0], from[0].address, audio.primary);
    set_leg(settings.sec_audio_masks[0][0], settings.sec_audio_addresses[0][0],
            &settings.sec_audio_dst_port[0], from[1].address, audio.secondary);
    const SenderDestinations& ancillary = configuration.destinations[ancillary_sender];
    set_leg(settings.pri_anc_masks[0], settings.pri_anc_addresses[0], settings.pri_anc_dst_port[0],
            from[0].address, ancillary.primary);
    set_leg(settings.sec_anc_masks[0], settings.sec_anc_addresses[0], settings.sec_anc_dst_port[0],
            from[1].address, ancillary.secondary);
}

/// What SDP files are written from.
void fill_sdp_members(const Configuration& configuration, st_param_sys& settings)
{
    settings.sdp_st2110_mode = configuration.carriage == Carriage::st2110 ? 1 : 0;
    settings.sdp_video_system = facts_of(configuration.video.lines).system_code;
    settings.sdp_video_frame_rate = facts_of(configuration.video.frame_rate).rate_code;
    settings.sdp_audio_ptime = facts_of(configuration.audio.packet_time).ptime_code;
    const PayloadTypes& types = configuration.payload_types;
    settings.sdp_rtp_payload_video = static_cast<std::int16_t>(types.video);
    settings.sdp_rtp_payload_audio = static_cast<std::int16_t>(types.audio);
    settings.sdp_rtp_payload_anc = static_cast<std::int16_t>(types.ancillary);
}

} // namespace

void fill_settings(const Configuration& configuration, st_param_sys& settings)
{
    fill_network(configuration, settings);
    for (std::size_t stream = 0; stream < stream_count; ++stream) {
        fill_video(configuration, stream, settings);
        fill_payload_types(configuration.payload_types, stream, settings);
    }
    if (configuration.streams.sender_essences == Essences::all)
        fill_audio_and_ancillary(configuration, settings);
    fill_sdp_members(configuration, settings);
}

} // namespace nmos_instrument::host

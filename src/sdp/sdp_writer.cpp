// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_writer.h"

#include <cstdint>
#include <string_view>

#include "nmos_instrument/codes.h"
#include "records/record_fields.h"
#include "records/video_formats.h"
#include "text/number_text.h"
#include "text/text_buffer.h"

namespace nmos_instrument {
namespace {

std::string_view packet_time(std::int16_t code)
{
    switch (code) {
    case packet_time_8_ms:
        return "8";
    case packet_time_125_us:
        return "0.125";
    default:
        return "1";
    }
}

constexpr std::int16_t payload_type_of_2022_6 = 98;

std::int16_t payload_type(Essence essence, const st_param_sys& sys)
{
    switch (essence) {
    case Essence::audio:
        return sys.sdp_rtp_payload_audio;
    case Essence::ancillary:
        return sys.sdp_rtp_payload_anc;
    case Essence::video:
        break;
    }
    return sys.sdp_st2110_mode != stream_mode_st2022_6 ? sys.sdp_rtp_payload_video
                                                       : payload_type_of_2022_6;
}

class SdpWriter
{
public:
    SdpWriter(const NMOS_IS05_ST& state, const CONNECTION_HALF_IS05_ST& active, Essence essence,
              const st_param_sys& sys)
        : state_(state),
          primary_(active.transport_params[0]),
          secondary_(active.transport_params[1]),
          essence_(essence),
          sys_(sys),
          payload_type_(payload_type(essence, sys))
    {}

    std::string write()
    {
        write_session();

        write_media(primary_);
        switch (essence_) {
        case Essence::video: // leg 1: rtpmap before fmtp
            write_rtpmap("raw/90000");
            write_video_format();
            break;
        case Essence::audio:
            write_audio_format();
            break;
        case Essence::ancillary:
            write_rtpmap("smpte291/90000");
            break;
        }
        write_leg_end(primary_, "primary");

        write_media(secondary_);
        switch (essence_) {
        case Essence::video: // leg 2: fmtp before rtpmap
            write_video_format();
            write_rtpmap("raw/90000");
            break;
        case Essence::audio:
            write_audio_format();
            break;
        case Essence::ancillary:
            write_rtpmap("smpte291/90000");
            break;
        }
        write_leg_end(secondary_, "secondary");
        return text_.take();
    }

private:
    void write_session()
    {
        text_.append("v=0\r\n"
                     "o=HALDEN ",
                     field_text(state_.sdp_session_id), " ", field_text(state_.sdp_session_version),
                     " IN IP4 ", field_text(primary_.source_ip),
                     "\r\n"
                     "s=QX3100 OPT21/22\r\n"
                     "t=0 0\r\n"
                     "a=group:DUP primary secondary\r\n");
    }

    void write_media(const CONNECTION_LEG_IS05_ST& leg)
    {
        char port[rounded_text_size];
        const char* const end = write_rounded(port, leg.destination_port);
        text_.append(essence_ == Essence::audio ? "m=audio " : "m=video ",
                     std::string_view(port, static_cast<std::size_t>(end - port)), " RTP/AVP ",
                     payload_type_, "\r\n", "c=IN IP4 ", field_text(leg.destination_ip), "/64\r\n");
    }

    void write_rtpmap(std::string_view encoding)
    {
        text_.append("a=rtpmap:", payload_type_, " ", encoding, "\r\n");
    }

    void write_video_format()
    {
        const PictureSize size = picture_size(sys_.sdp_video_system);
        text_.append("a=fmtp:", payload_type_, " sampling=YCbCr-4:2:2; width=", size.width_text,
                     "; height=", size.height_text,
                     "; depth=10; exactframerate=", picture_rate(sys_.sdp_video_frame_rate).text,
                     " colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; PM=",
                     sys_.sdp_st2110_mode != stream_mode_st2022_6 ? "2110BPM" : "2022-6", "; \r\n");
    }

    void write_audio_format()
    {
        write_rtpmap("L24/48000/16");
        text_.append("a=ptime:", packet_time(sys_.sdp_audio_ptime), "\r\n");
    }

    /// Intentional: the PTP domain is always 127, whatever the instrument's settings say.
    void write_leg_end(const CONNECTION_LEG_IS05_ST& leg, std::string_view media_id)
    {
        text_.append("a=source-filter: incl IN IP4 ", field_text(leg.destination_ip), " ",
                     field_text(leg.source_ip),
                     "\r\n"
                     "a=ts-refclk:ptp=IEEE1588-2008:",
                     field_text(state_.ptp_grandmaster_id),
                     ":127\r\n"
                     "a=mediaclk:direct=0\r\n"
                     "a=mid:",
                     media_id, "\r\n");
    }

    const NMOS_IS05_ST& state_;
    const CONNECTION_LEG_IS05_ST& primary_;
    const CONNECTION_LEG_IS05_ST& secondary_;
    const Essence essence_;
    const st_param_sys& sys_;
    const NumberText payload_type_;
    TextBuffer text_;
};

} // namespace

std::string write_sdp(const NMOS_IS05_ST& state, const CONNECTION_HALF_IS05_ST& active,
                      Essence essence, const st_param_sys& sys)
{
    return SdpWriter(state, active, essence, sys).write();
}

} // namespace nmos_instrument

// SPDX-License-Identifier: Apache-2.0
//
// Settings are read by element number: whether the record's members lie there is compared too.

#include "oracle/sdp_oracle.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace oracle {

namespace {

int setting(const st_param_sys& parameters, std::size_t element)
{
    std::int16_t value;
    std::memcpy(&value, reinterpret_cast<const char*>(&parameters) + 2 * element, sizeof value);
    return value;
}

std::string text_of(const char (&field)[32])
{
    return std::string(field, strnlen(field, sizeof field));
}

std::string port_text(double port)
{
    char text[400]; // the largest double has 309 digits
    std::snprintf(text, sizeof text, "%.0f", port);
    return text;
}

std::string frame_rate_text(int code)
{
    switch (code) {
    case 1:
        return "60000/1001;";
    case 2:
        return "50;";
    case 10:
        return "30; interlace;";
    case 11:
        return "30000/1001; interlace;";
    case 12:
        return "25; interlace;";
    default:
        return "60;";
    }
}

std::string video_format(const st_param_sys& parameters)
{
    std::string width = "1920";
    std::string height = "1080";
    const int system = setting(parameters, 908);
    if (system == 0 || system == 1) {
        width = "3840";
        height = "2160";
    } else if (system == 4) {
        width = "1280";
        height = "720";
    }
    return " sampling=YCbCr-4:2:2; width=" + width + "; height=" + height +
           "; depth=10; exactframerate=" + frame_rate_text(setting(parameters, 910)) +
           " colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; " +
           (setting(parameters, 906) != 0 ? "PM=2110BPM; " : "PM=2022-6; ");
}

std::string packet_time(const st_param_sys& parameters)
{
    const int code = setting(parameters, 931);
    return code == 0 ? "ptime:8" : code == 2 ? "ptime:0.125" : "ptime:1";
}

std::string payload_type(const st_param_sys& parameters, int index)
{
    if (index == 4)
        return std::to_string(setting(parameters, 935));
    if (index == 5)
        return std::to_string(setting(parameters, 936));
    return setting(parameters, 906) != 0 ? std::to_string(setting(parameters, 934)) : "98";
}

std::string media_block(const st_param_sys& parameters, int index, int leg_number,
                        const CONNECTION_LEG_IS05_ST& leg)
{
    const std::string pt = payload_type(parameters, index);
    const std::string port = port_text(leg.destination_port);
    const std::string connection = "c=IN IP4 " + text_of(leg.destination_ip) + "/64\r\n";
    if (index == 4)
        return "m=audio " + port + " RTP/AVP " + pt + "\r\n" + connection + "a=rtpmap:" + pt +
               " L24/48000/16\r\n" + "a=" + packet_time(parameters) + "\r\n";

    const std::string media = "m=video " + port + " RTP/AVP " + pt + "\r\n";
    if (index == 5)
        return media + connection + "a=rtpmap:" + pt + " smpte291/90000\r\n";

    const std::string map = "a=rtpmap:" + pt + " raw/90000\r\n";
    const std::string format = "a=fmtp:" + pt + video_format(parameters) + "\r\n";
    return media + connection + (leg_number == 1 ? map + format : format + map);
}

std::string behind_media(const NMOS_IS05_ST& state, const CONNECTION_LEG_IS05_ST& leg,
                         const char* name)
{
    return "a=source-filter: incl IN IP4 " + text_of(leg.destination_ip) + " " +
           text_of(leg.source_ip) + "\r\n" +
           "a=ts-refclk:ptp=IEEE1588-2008:" + text_of(state.ptp_grandmaster_id) + ":127\r\n" +
           "a=mediaclk:direct=0\r\n" + "a=mid:" + name + "\r\n";
}

} // namespace

std::string make_single_senderid_sdp(const NMOS_IS05_ST& state, int index,
                                     const st_param_sys& parameters)
{
    if (index < 0 || index > 5)
        throw std::out_of_range("5");
    const CONNECTION_LEG_IS05_ST& leg_1 = state.senders[index].active.transport_params[0];
    const CONNECTION_LEG_IS05_ST& leg_2 = state.senders[index].active.transport_params[1];
    return "v=0\r\n"
           "o=HALDEN " +
           text_of(state.sdp_session_id) + " " + text_of(state.sdp_session_version) + " IN IP4 " +
           text_of(leg_1.source_ip) + "\r\n" +
           "s=QX3100 OPT21/22\r\n"
           "t=0 0\r\n"
           "a=group:DUP primary secondary\r\n" +
           media_block(parameters, index, 1, leg_1) + behind_media(state, leg_1, "primary") +
           media_block(parameters, index, 2, leg_2) + behind_media(state, leg_2, "secondary");
}

} // namespace oracle

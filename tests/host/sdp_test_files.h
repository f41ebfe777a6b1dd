// SPDX-License-Identifier: Apache-2.0
//
// SDP files for tests, receivers that they are offered to, and what is expected of the reader.

#ifndef NMOS_INSTRUMENT_TESTS_HOST_SDP_TEST_FILES_H
#define NMOS_INSTRUMENT_TESTS_HOST_SDP_TEST_FILES_H

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "sdp/read_sdp.h"

namespace nmos_instrument::host {

using Lines = std::vector<std::string>;

inline std::string sdp_text(const Lines& lines, const std::string& line_break = "\r\n")
{
    std::string text;
    for (const std::string& line : lines)
        text.append(line).append(line_break);
    return text;
}

/// New lines in the place of one line of a file, counted from 1.
struct Edit
{
    std::size_t line;
    Lines lines; ///< none: it is taken out
};

/// The numbers are those of `file`, whatever else is edited.
Lines edited(const Lines& file, std::initializer_list<Edit> edits);

inline const std::string hd_interlaced = "sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
                                         "interlace; exactframerate=25; TCS=SDR; "
                                         "colorimetry=BT709; PM=2110GPM; SSN=ST2110-20:2017; "
                                         "TP=2110TPN; ";

inline const Lines one_path = {
    /*  1 */ "v=0",
    /*  2 */ "o=- 1 1 IN IP4 203.0.113.9",
    /*  3 */ "s=camera",
    /*  4 */ "t=0 0",
    /*  5 */ "m=video 5004 RTP/AVP 96",
    /*  6 */ "c=IN IP4 233.252.0.1/64",
    /*  7 */ "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1",
    /*  8 */ "a=rtpmap:96 raw/90000",
    /*  9 */ "a=fmtp:96 " + hd_interlaced,
};

inline const Lines two_paths = {
    /*  1 */ "v=0",
    /*  2 */ "o=- 1 1 IN IP4 203.0.113.9",
    /*  3 */ "s=camera",
    /*  4 */ "t=0 0",
    /*  5 */ "a=group:DUP one two",
    /*  6 */ "m=video 5004 RTP/AVP 96",
    /*  7 */ "c=IN IP4 233.252.0.1/64",
    /*  8 */ "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1",
    /*  9 */ "a=rtpmap:96 raw/90000",
    /* 10 */ "a=fmtp:96 " + hd_interlaced,
    /* 11 */ "a=mid:one",
    /* 12 */ "m=video 5006 RTP/AVP 96",
    /* 13 */ "c=IN IP4 233.252.0.2/64",
    /* 14 */ "a=source-filter: incl IN IP4 233.252.0.2 203.0.113.2",
    /* 15 */ "a=rtpmap:96 raw/90000",
    /* 16 */ "a=fmtp:96 " + hd_interlaced,
    /* 17 */ "a=mid:two",
};

inline const Lines audio_path = {
    /*  1 */ "v=0",
    /*  2 */ "o=- 1 1 IN IP4 203.0.113.9",
    /*  3 */ "s=stage box",
    /*  4 */ "t=0 0",
    /*  5 */ "m=audio 5004 RTP/AVP 97",
    /*  6 */ "c=IN IP4 233.252.0.1/64",
    /*  7 */ "a=rtpmap:97 L24/48000/2",
    /*  8 */ "a=ptime:0.125",
};

/// A receiver with the interfaces 192.0.2.10 and 198.51.100.10.
SdpReceiver receiver_of(const std::string& media_type);

inline const SdpReceiver video_receiver = receiver_of("video/raw");
inline const SdpReceiver audio_receiver = receiver_of("audio/L24");
inline const SdpReceiver ancillary_receiver = receiver_of("video/smpte291");
inline const SdpReceiver st2022_6_receiver = receiver_of("video/SMPTE2022-6");

/// For each leg the line of its medium, and what is joined: "6: 233.252.0.1:5004 from 203.0.113.1"
/// or "6: unicast 192.0.2.10:5004"; "off" if it is not there. Nothing if the file is refused.
Lines legs_of(const SdpReading& reading);

inline const std::string off = "off";

// The legs of `two_paths`, and the one of `one_path`.
inline const std::string path_1 = "6: 233.252.0.1:5004 from 203.0.113.1";
inline const std::string path_2 = "12: 233.252.0.2:5006 from 203.0.113.2";
inline const std::string alone = "5: 233.252.0.1:5004 from 203.0.113.1";

/// A finding that is expected.
struct Mark
{
    SdpCode code;
    std::size_t line;
};

/// A file, and what a receiver makes of it.
struct SdpCase
{
    std::string name;
    Lines file;
    Lines legs; ///< as legs_of has them; none: the file is refused
    std::vector<Mark> findings = {};
    const SdpReceiver& receiver = video_receiver;
};

void expect_reading(const SdpCase& expected);
void expect_readings(std::initializer_list<SdpCase> cases);

} // namespace nmos_instrument::host

#endif

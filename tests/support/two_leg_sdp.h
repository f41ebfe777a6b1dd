// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_TWO_LEG_SDP_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_TWO_LEG_SDP_H

#include <string>

/// The SDP file of a video sender with two legs, as the instrument writes and reads it. Tests of
/// other files vary it, see varied.h.
inline const std::string two_leg_video =
    "v=0\r\n"
    "o=HALDEN 1234567890 1234567891 IN IP4 192.168.10.1\r\n"
    "s=QX3100 OPT21/22\r\n"
    "t=0 0\r\n"
    "a=group:DUP primary secondary\r\n"
    "m=video 5004 RTP/AVP 96\r\n"
    "c=IN IP4 239.10.0.1/64\r\n"
    "a=rtpmap:96 raw/90000\r\n"
    "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
    "exactframerate=60000/1001; colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; "
    "TP=2110TPN; PM=2110BPM; \r\n"
    "a=source-filter: incl IN IP4 239.10.0.1 192.168.10.1\r\n"
    "a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:127\r\n"
    "a=mediaclk:direct=0\r\n"
    "a=mid:primary\r\n"
    "m=video 5014 RTP/AVP 96\r\n"
    "c=IN IP4 239.20.0.1/64\r\n"
    "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
    "exactframerate=60000/1001; colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; "
    "TP=2110TPN; PM=2110BPM; \r\n"
    "a=rtpmap:96 raw/90000\r\n"
    "a=source-filter: incl IN IP4 239.20.0.1 192.168.20.1\r\n"
    "a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:127\r\n"
    "a=mediaclk:direct=0\r\n"
    "a=mid:secondary\r\n";

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What random SDP files are made of: real files, and the parser's keys with values on both sides of
// every limit.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_SDP_VOCABULARY_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_SDP_VOCABULARY_H

#include <string>
#include <string_view>
#include <vector>

namespace sdp_vocabulary {

using namespace std::string_view_literals;

using Lines = std::vector<std::string>;

// ST 2110-20, two legs.
inline const Lines video_of_two_legs = {
    "v=0",
    "o=- 1443716955 1443716955 IN IP4 192.168.10.2",
    "s=Camera 1",
    "t=0 0",
    "a=group:DUP primary secondary",
    "m=video 5000 RTP/AVP 96",
    "c=IN IP4 239.100.9.10/64",
    "a=source-filter: incl IN IP4 239.100.9.10 192.168.10.2",
    "a=rtpmap:96 raw/90000",
    "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=60000/1001; depth=10; "
    "TCS=SDR; colorimetry=BT709; PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPN; ",
    "a=ts-refclk:ptp=IEEE1588-2008:39-A7-94-FF-FE-07-CB-D0:127",
    "a=mediaclk:direct=0",
    "a=mid:primary",
    "m=video 5002 RTP/AVP 97",
    "c=IN IP4 239.101.9.10/64",
    "a=source-filter: incl IN IP4 239.101.9.10 192.168.11.2",
    "a=fmtp:97 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=60000/1001; depth=10; "
    "TCS=SDR; colorimetry=BT709; PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPN; ",
    "a=rtpmap:97 raw/90000",
    "a=ts-refclk:ptp=IEEE1588-2008:39-A7-94-FF-FE-07-CB-D0:127",
    "a=mediaclk:direct=0",
    "a=mid:secondary",
};

// ST 2110-20, one leg, interlaced.
inline const Lines video_of_one_leg = {
    "v=0",
    "o=- 123456 11 IN IP4 192.168.100.2",
    "s=Example of a SMPTE ST2110-20 signal",
    "i=this example is for 1080i video at 29.97",
    "t=0 0",
    "m=video 50000 RTP/AVP 112",
    "c=IN IP4 239.100.9.10/32",
    "a=source-filter: incl IN IP4 239.100.9.10 192.168.100.2",
    "a=rtpmap:112 raw/90000",
    "a=fmtp:112 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=30000/1001; "
    "interlace; depth=10; TCS=HLG; colorimetry=BT2020; PM=2110BPM; SSN=ST2110-20:2017; "
    "TP=2110TPW; ",
    "a=ts-refclk:ptp=IEEE1588-2008:39-A7-94-FF-FE-07-CB-D0:37",
    "a=mediaclk:direct=0",
};

// ST 2110-20, 2160p, line attributes before the media line's own.
inline const Lines video_of_4k = {
    "v=0",
    "o=user 1 2 IN IP4 10.0.0.9",
    "s=4K",
    "t=0 0",
    "a=group:DUP one two",
    "m=video 5004 RTP/AVP 96",
    "c=IN IP4 232.1.2.3/64",
    "a=source-filter: incl IN IP4 232.1.2.3 10.0.0.9",
    "a=rtpmap:96 raw/90000",
    "a=fmtp:96 sampling=YCbCr-4:2:2; width=3840; height=2160; exactframerate=50; depth=10; TCS=PQ; "
    "colorimetry=BT2100; PM=2110BPM; SSN=ST2110-20:2017; TP=2110TPNL;",
    "a=mid:one",
    "m=video 5004 RTP/AVP 96",
    "c=IN IP4 232.1.2.4/64",
    "a=mid:two",
};

// ST 2110-30.
inline const Lines audio = {
    "v=0",
    "o=- 1311738121 1311738121 IN IP4 192.168.1.1",
    "s=Stage left I/O",
    "t=0 0",
    "a=group:DUP primary secondary",
    "m=audio 5008 RTP/AVP 98",
    "c=IN IP4 239.0.0.1/32",
    "a=source-filter: incl IN IP4 239.0.0.1 192.168.1.1",
    "a=rtpmap:98 L24/48000/8",
    "a=fmtp:98 channel-order=SMPTE2110.(ST,ST,51); SSN=ST2110-30:2017;",
    "a=ptime:1",
    "a=mid:primary",
    "m=audio 5010 RTP/AVP 98",
    "c=IN IP4 239.1.0.1/32",
    "a=source-filter: incl IN IP4 239.1.0.1 192.168.2.1",
    "a=rtpmap:98 L24/48000/8",
    "a=ptime:1",
    "a=mid:secondary",
};

// ST 2110-40.
inline const Lines ancillary = {
    "v=0",
    "o=- 123456 11 IN IP4 192.168.100.2",
    "s=Ancillary data",
    "t=0 0",
    "m=video 20000 RTP/AVP 100",
    "c=IN IP4 239.100.9.12/64",
    "a=source-filter: incl IN IP4 239.100.9.12 192.168.100.2",
    "a=rtpmap:100 smpte291/90000",
    "a=fmtp:100 DID_SDID={0x61,0x02};VPID_Code=133; SSN=ST2110-40:2017;",
    "a=mediaclk:direct=0",
};

// ST 2022-6 beside a text stream.
inline const Lines hbrmt = {
    "v=0",
    "o=- 7 7 IN IP4 172.16.0.5",
    "s=HBRMT",
    "t=0 0",
    "m=video 10000 RTP/AVP 98",
    "c=IN IP4 225.5.5.5/127",
    "a=rtpmap:98 SMPTE2022-6/27000000",
    "a=fmtp:98 width=1280; height=720; exactframerate=60; TCS=SDR; colorimetry=BT709; PM=2022-6; "
    "TP=2110TPN;",
    "m=text 11000 RTP/AVP 102",
    "a=rtpmap:102 t140/1000",
};

inline const Lines* const real_files[] = {
    &video_of_two_legs, &video_of_one_leg, &video_of_4k, &audio, &ancillary, &hbrmt,
};

// Lists of words, not one word a line.
// clang-format off

inline constexpr std::string_view keys[] = {
    "v="sv, "o="sv, "s="sv, "c="sv, "t="sv, "m="sv, "a="sv, "IN IP4 "sv, "video "sv, "audio "sv,
    "text "sv, "RTP/AVP "sv, "group:DUP "sv, "mid:"sv, "source-filter:"sv, "incl IN IP4 "sv,
    "rtpmap:"sv, "fmtp:"sv, "sampling="sv, "depth="sv, "width="sv, "height="sv,
    "exactframerate="sv, "interlace"sv, "TCS="sv, "colorimetry="sv, "PM="sv, "SSN="sv, "TP="sv,
};

/// Openings that make the key behind them count.
inline constexpr std::string_view openings[] = {
    "o=- 1 1 IN IP4 "sv,
    "c=IN IP4 "sv,
    "m=video "sv,
    "m=audio "sv,
    "m=text "sv,
    "m=video 5004 RTP/AVP "sv,
    "a=group:DUP "sv,
    "a=mid:"sv,
    "a=source-filter: incl IN IP4 "sv,
    "a=rtpmap:"sv,
    "a=fmtp:"sv,
    "a=fmtp:96 sampling=YCbCr-4:2:2; depth="sv,
    "a=fmtp:96 interlace; width="sv,
    "a=width="sv,
    "a=interlace; exactframerate="sv,
};

inline constexpr std::string_view terminators[] = {
    " "sv, ";"sv, "; "sv, "/"sv, "/64"sv, "\n"sv, "\r\n"sv, "\r"sv, "\n\r"sv, "\n"sv, ""sv,
};

inline constexpr std::string_view addresses[] = {
    "192.168.0.1"sv, "239.0.0.1"sv, "239.0.0.1/64"sv, "0.0.0.0"sv, "255.255.255.255"sv,
    "256.1.1.1"sv, "1.2.3.256"sv, "1.2.3"sv, "1.2.65535"sv, "1.2.65536"sv, "1.16777215"sv,
    "1.16777216"sv, "10.1"sv, "1"sv, "4294967295"sv, "4294967296"sv, "010.0.0.1"sv,
    "08.1.1.1"sv, "0x7f.0.0.1"sv, "0X7F000001"sv, "0x"sv, "0x.1"sv, "00"sv, " 1.2.3.4"sv,
    "1.2.3.4 junk"sv, "1.2.3.4\tx"sv, "1.2.3.4."sv, "1.2.3.4.5"sv, "1..2"sv, "."sv, ""sv,
    "1.2.3.4x"sv, "-1.2.3.4"sv, "+1.2.3.4"sv, "1.2.3.4\0x"sv, "1.2.3.4\x80"sv, "1.2.3.4\v"sv,
    "1.2.3.4 5.6.7.8"sv, "1.2.3.4  5.6.7.8"sv, "auto"sv, "18446744073709551616"sv, "1.-2"sv,
    "1.2.3.4 \n"sv, "1.+2.3.4"sv, "1. 2.3.4"sv,
};

inline constexpr std::string_view numbers[] = {
    "96"sv, "127"sv, "95"sv, "128"sv, "0"sv, "-0"sv, "+96"sv, "096"sv, "0x60"sv, " 96"sv,
    "\t100"sv, "5004"sv, "65535"sv, "65536"sv, "-1"sv, "+5004"sv, "96 junk"sv, "96abc"sv,
    "96.9"sv, "9 6"sv, ""sv, "4294967300"sv, "4294967392"sv, "18446744073709551712"sv,
    "9223372036854775807"sv, "99999999999999999999999"sv, "-99999999999999999999"sv,
    "2147483648"sv, "-4294967200"sv, "96\0junk"sv, "\0" "96"sv, "--96"sv, "+ 96"sv, "\v\f96"sv,
    "\x80" "96"sv, "127\x80"sv,
};

inline constexpr std::string_view format_values[] = {
    "YCbCr-4:2:2"sv, "YCbCr-4:2:0"sv, "10"sv, "10.0"sv, "8"sv, "1920"sv, "1080"sv, "1280"sv,
    "720"sv, "3840"sv, "2160"sv, "01920"sv, "1920 "sv, "60"sv, "60000/1001"sv, "50"sv, "30"sv,
    "30000/1001"sv, "25"sv, "24"sv, "SDR"sv, "HLG"sv, "PQ"sv, "sdr"sv, "BT709"sv, "BT2020"sv,
    "BT2100"sv, "BT601"sv, "2110GPM"sv, "2110BPM"sv, "2022-6"sv, "2110BPMx"sv,
    "ST2110-20:2017"sv, "ST2110-30:2017"sv, "ST2110-40:2017"sv, "ST2110-20:2022"sv,
    "2110TPNL"sv, "2110TPN"sv, "2110TPW"sv, "2110TP"sv, "primary"sv, "secondary"sv,
    "interlace"sv, "one"sv, "10\0"sv, "SDR\0x"sv, "%s%n%d"sv, "raw/90000"sv, "PQ "sv,
};

inline constexpr std::string_view whole_parameters[] = {
    "sampling=YCbCr-4:2:2; depth=10;"sv,
    "exactframerate=60;"sv,
    "exactframerate=25; interlace;"sv,
    "TCS=SDR;"sv,
    "TCS=HLG"sv,
    "colorimetry=BT2020;"sv,
    "PM=2110GPM;"sv,
    "PM=2022-6"sv,
    "SSN=ST2110-20:2017;"sv,
    "TP=2110TPN;"sv,
    "width=1920; height=1080;"sv,
    "width=1280; height=720;"sv,
    "width=3840; height=2160;"sv,
    "width=1920; height=720;"sv,
    "height=2160; width=3840;"sv,
    "width=3840; height=1080;"sv,
};

// clang-format on

} // namespace sdp_vocabulary

#endif

// SPDX-License-Identifier: Apache-2.0
//
// Whole files in the shapes that cameras, gateways, generators and audio devices write, and those of
// the examples in the standards.

#include "sdp/read_sdp.h"

#include <gtest/gtest.h>

#include "sdp_test_files.h"

namespace nmos_instrument::host {
namespace {

using enum SdpCode;

// Each maker has an order of its own.
const std::string progressive_720 =
    "sampling=YCbCr-4:2:2; width=1280; height=720; "
    "exactframerate=60000/1001; depth=10; TCS=SDR; colorimetry=BT709; "
    "PM=2110GPM; TP=2110TPN; SSN=ST2110-20:2017; ";
const std::string interlaced_1080 =
    "sampling=YCbCr-4:2:2; width=1920; height=1080; "
    "exactframerate=30000/1001; depth=10; TCS=SDR; colorimetry=BT709; "
    "PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPN; interlace;";

// RFC 7104 4.1, with a video format that is measured
TEST(ReadSdpShapes, SeparateSourceAddresses)
{
    expect_reading(
        {"",
         {
             "v=0",
             "o=ann 1122334455 1122334466 IN IP4 dup.example.com",
             "s=DUP Grouping Semantics",
             "t=0 0",
             "m=video 30000 RTP/AVP 100",
             "c=IN IP4 233.252.0.1/127",
             "a=source-filter:incl IN IP4 233.252.0.1 198.51.100.1 198.51.100.2",
             "a=rtpmap:100 raw/90000",
             "a=fmtp:100 sampling=YCbCr-4:2:2; depth=10",
             "a=ssrc:1000 cname:ch1@example.com",
             "a=ssrc:1010 cname:ch1@example.com",
             "a=ssrc-group:DUP 1000 1010",
             "a=mid:Ch1",
         },
         {"5: 233.252.0.1:30000 from 198.51.100.1", "5: 233.252.0.1:30000 from 198.51.100.2"}});
}

// RFC 7104 4.2
TEST(ReadSdpShapes, SeparateDestinationAddresses)
{
    expect_reading(
        {"",
         {
             "v=0",
             "o=ann 1122334455 1122334466 IN IP4 dup.example.com",
             "s=DUP Grouping Semantics",
             "t=0 0",
             "a=group:DUP S1a S1b",
             "m=video 30000 RTP/AVP 100",
             "c=IN IP4 233.252.0.1/127",
             "a=source-filter:incl IN IP4 233.252.0.1 198.51.100.1",
             "a=rtpmap:100 raw/90000",
             "a=fmtp:100 sampling=YCbCr-4:2:2; depth=10",
             "a=mid:S1a",
             "m=video 30000 RTP/AVP 101",
             "c=IN IP4 233.252.0.2/127",
             "a=source-filter:incl IN IP4 233.252.0.2 198.51.100.1",
             "a=rtpmap:101 raw/90000",
             "a=fmtp:101 sampling=YCbCr-4:2:2; depth=10",
             "a=mid:S1b",
         },
         {"6: 233.252.0.1:30000 from 198.51.100.1", "12: 233.252.0.2:30000 from 198.51.100.1"},
         {{legs_differ_slightly, 12}}});
}

// RFC 4566 5
TEST(ReadSdpShapes, ASeminar)
{
    const Lines file = {"v=0",
                        "o=ann 2890844526 2890842807 IN IP4 192.0.2.1",
                        "s=SDP Seminar",
                        "i=A Seminar on the session description protocol",
                        "u=http://www.example.com/seminars/sdp.pdf",
                        "e=ann@example.com (Ann Doe)",
                        "c=IN IP4 233.252.0.7/127",
                        "t=2873397496 2873404696",
                        "a=recvonly",
                        "m=audio 49170 RTP/AVP 0",
                        "m=video 51372 RTP/AVP 99",
                        "a=rtpmap:99 h263-1998/90000"};
    expect_readings({
        {"video", file, {}, {{no_medium, 0}}},
        {"audio", file, {}, {{no_rtpmap, 10}, {payload_type, 10}}, audio_receiver},
    });
}

// SMPTE ST 2110-20: one path with a bandwidth, a clock and no source in its origin
TEST(ReadSdpShapes, AProgressiveCamera)
{
    expect_reading({"",
                    {
                        "v=0",
                        "o=- 123456 11 IN IP4 203.0.113.2",
                        "s=Camera 4",
                        "i=720p at 59.94 in the hall",
                        "t=0 0",
                        "a=recvonly",
                        "m=video 50000 RTP/AVP 112",
                        "c=IN IP4 233.252.0.10/32",
                        "b=AS:1219336",
                        "a=source-filter:incl IN IP4 233.252.0.10 203.0.113.2",
                        "a=rtpmap:112 raw/90000",
                        "a=fmtp:112 " + progressive_720,
                        "a=ts-refclk:ptp=IEEE1588-2008:39-A7-94-FF-FE-07-CB-D0:37",
                        "a=mediaclk:direct=0",
                        "a=mid:primary",
                    },
                    {"7: 233.252.0.10:50000 from 203.0.113.2", off}});
}

// Mid lines between the addresses and the format, empty session name
TEST(ReadSdpShapes, AGatewayOfTwoPaths)
{
    const Lines medium = {"a=rtpmap:96 raw/90000",
                          "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; "
                          "exactframerate=60000/1001; depth=10; colorimetry=BT709; PM=2110GPM; "
                          "SSN=ST2110-20:2017; TP=2110TPN"};
    expect_reading(
        {"",
         {
             "v=0",
             "o=- 0 0 IN IP4 203.0.113.2",
             "s= ",
             "t=0 0",
             "a=group:DUP 1 2",
             "m=video 20000 RTP/AVP 96",
             "c=IN IP4 233.252.0.1/64",
             "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.2",
             "a=mid:1",
             medium[0],
             medium[1],
             "m=video 20000 RTP/AVP 96",
             "c=IN IP4 233.252.0.2/64",
             "a=source-filter: incl IN IP4 233.252.0.2 203.0.113.3",
             "a=mid:2",
             medium[0],
             medium[1],
         },
         {"6: 233.252.0.1:20000 from 203.0.113.2", "12: 233.252.0.2:20000 from 203.0.113.3"}});
}

// All essences of a device in one file, with empty lines between them
TEST(ReadSdpShapes, EverythingInOneFile)
{
    const Lines file = {
        "v=0",
        "o=- 1443716955 1443716955 IN IP4 203.0.113.76",
        "s=all streams",
        "t=0 0",
        "",
        "m=audio 20000 RTP/AVP 97",
        "c=IN IP4 233.252.0.16/64",
        "a=source-filter: incl IN IP4 233.252.0.16 203.0.113.76",
        "a=rtpmap:97 L24/48000/8",
        "a=mediaclk:direct=0 rate=48000",
        "a=framecount:48",
        "a=ptime:1",
        "",
        "m=video 20000 RTP/AVP 100",
        "c=IN IP4 233.252.0.17/64",
        "a=rtpmap:100 smpte291/90000",
        "a=fmtp:100 VPID_Code=133",
        "",
        "m=video 20000 RTP/AVP 96",
        "c=IN IP4 233.252.0.18/64",
        "a=rtpmap:96 raw/90000",
        "a=fmtp:96 " + interlaced_1080,
    };
    expect_readings({
        {"video", file, {"19: 233.252.0.18:20000", off}, {{empty_line, 5}}},
        {"audio",
         file,
         {"6: 233.252.0.16:20000 from 203.0.113.76", off},
         {{empty_line, 5}},
         audio_receiver},
        {"ancillary data",
         file,
         {"14: 233.252.0.17:20000", off},
         {{empty_line, 5}},
         ancillary_receiver},
    });
}

// Audio networks put the address, the clock and the filter in front of the medium, and again behind.
TEST(ReadSdpShapes, AnAudioDevice)
{
    const Lines file = {"v=0",
                        "o=- 68 0 IN IP4 203.0.113.54",
                        "s=Stage 12",
                        "i=2 channels: Left, Right",
                        "c=IN IP4 233.252.0.54/15",
                        "t=0 0",
                        "a=keywds:stage",
                        "a=recvonly",
                        "a=clock-domain:PTPv2 0",
                        "a=source-filter: incl IN IP4 233.252.0.54 203.0.113.54",
                        "m=audio 5004 RTP/AVP 98",
                        "i=Channels 1-2",
                        "c=IN IP4 233.252.0.54/15",
                        "a=rtpmap:98 L24/48000/2",
                        "a=source-filter: incl IN IP4 233.252.0.54 203.0.113.54",
                        "a=sync-time:0",
                        "a=framecount:48",
                        "a=ptime:1",
                        "a=midi-pre2:50040 0,2;0,3",
                        "a=recvonly"};
    expect_reading(
        {"both", file, {"11: 233.252.0.54:5004 from 203.0.113.54", off}, {}, audio_receiver});
    expect_reading({"in front alone",
                    edited(file, {{13, {}}, {15, {}}}),
                    {"11: 233.252.0.54:5004 from 203.0.113.54", off},
                    {},
                    audio_receiver});
}

// Unicast to whoever asked for it
TEST(ReadSdpShapes, AnAudioDeviceThatSendsUnicast)
{
    const Lines file = {"v=0",
                        "o=audio 1311738121 1311738121 IN IP4 203.0.113.1",
                        "s=Stage left I/O",
                        "c=IN IP4 192.0.2.10",
                        "t=0 0",
                        "m=audio 5004 RTP/AVP 96",
                        "i=Channels 1-8",
                        "a=rtpmap:96 L24/48000/8",
                        "a=sendonly",
                        "a=ptime:0.250"};
    expect_reading({"to us", file, {"6: unicast 192.0.2.10:5004", off}, {}, audio_receiver});
    expect_reading({"to another",
                    edited(file, {{4, {"c=IN IP4 192.0.2.1"}}}),
                    {},
                    {{foreign_unicast, 4}},
                    audio_receiver});
}

TEST(ReadSdpShapes, AReplayOfSt20226)
{
    expect_reading(
        {"",
         {
             "v=0",
             "o=- 1990966629 450267930 IN IP4 203.0.113.1",
             "s=Replay",
             "i=1080i25",
             "t=0 0",
             "a=group:DUP primary secondary",
             "m=video 40000 RTP/AVP 98",
             "c=IN IP4 233.252.0.1/8",
             "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1",
             "a=rtpmap:98 SMPTE2022-6/27000000",
             "a=fmtp:98 TP=2110TPW;",
             "a=ts-refclk:localmac=02-00-5e-00-00-01",
             "a=mediaclk:direct=0",
             "a=mid:primary",
             "m=video 40000 RTP/AVP 98",
             "c=IN IP4 233.252.0.2/8",
             "a=source-filter: incl IN IP4 233.252.0.2 203.0.113.2",
             "a=rtpmap:98 SMPTE2022-6/27000000",
             "a=fmtp:98 TP=2110TPW;",
             "a=ts-refclk:localmac=02-00-5e-00-00-02",
             "a=mediaclk:direct=0",
             "a=mid:secondary",
         },
         {"7: 233.252.0.1:40000 from 203.0.113.1", "15: 233.252.0.2:40000 from 203.0.113.2"},
         {},
         st2022_6_receiver});
}

// A forward error correction stream beside its source (RFC 6364): no second path
TEST(ReadSdpShapes, ARepairFlow)
{
    expect_reading({"",
                    {
                        "v=0",
                        "o=ann 1122334455 1122334466 IN IP4 fec.example.com",
                        "s=FEC Framework Examples",
                        "t=0 0",
                        "a=group:FEC-FR S1 R1",
                        "m=video 30000 RTP/AVP 100",
                        "c=IN IP4 233.252.0.1/127",
                        "a=rtpmap:100 raw/90000",
                        "a=fmtp:100 sampling=YCbCr-4:2:2; depth=10",
                        "a=fec-source-flow: id=0",
                        "a=mid:S1",
                        "m=application 30000 UDP/FEC",
                        "c=IN IP4 233.252.0.2/127",
                        "a=fec-repair-flow: encoding-id=10; ss-fssi=n:7,k:5",
                        "a=mid:R1",
                    },
                    {"6: 233.252.0.1:30000", off}});
}

// Both paths described with the same group and source, as some do
TEST(ReadSdpShapes, ACopyOfThePath)
{
    Lines file = {"v=0", "o=- 1543226715 1543226715 IN IP4 203.0.113.66", "s=Demo", "t=0 0",
                  "a=group:DUP PRIMARY SECONDARY"};
    for (const char* name : {"PRIMARY", "SECONDARY"}) {
        for (const std::string& line :
             Lines{"m=video 5432 RTP/AVP 97", "c=IN IP4 233.252.0.7/32",
                   "a=source-filter: incl IN IP4 233.252.0.7 203.0.113.66", "a=rtpmap:97 raw/90000",
                   "a=fmtp:97 " + hd_interlaced, std::string("a=mid:") + name})
            file.push_back(line);
    }
    expect_reading(
        {"",
         file,
         {"6: 233.252.0.7:5432 from 203.0.113.66", "12: 233.252.0.7:5432 from 203.0.113.66"},
         {{same_path, 12}}});
}

// A file made for tests: no origin, little said
TEST(ReadSdpShapes, AlmostNothing)
{
    expect_reading({"",
                    {"m=video 5004 RTP/AVP 96", "c=IN IP4 233.252.0.7"},
                    {"1: 233.252.0.7:5004", off},
                    {{no_version, 1}, {no_rtpmap, 1}}});
}

} // namespace
} // namespace nmos_instrument::host

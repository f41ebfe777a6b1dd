// SPDX-License-Identifier: Apache-2.0
//
// analyze_sdp_file, line by line: addresses, ports, payload types, and which leg they belong to.

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "support/sdp_check.h"

namespace {

using namespace std::string_literals;
using namespace found;

// --- Lines that are located only ----------------------------------------------------------------

TEST(SdpParserLines, ThatSayNothingToAReceiverAreFine)
{
    for (const char* line : {"",
                             " ",
                             "v=0",
                             "v=1",
                             "v=",
                             "v=bad",
                             "s=",
                             "s=QX3100 OPT21/22",
                             "s= IN IP4 bad",
                             "t=",
                             "t=0 0",
                             "t=bad",
                             "o=",
                             "c=",
                             "m=",
                             "a=",
                             "b=AS:1000",
                             "i=what",
                             "z",
                             "=",
                             "a",
                             "=a",
                             "k=IN IP4 bad",
                             "a=ptime:1",
                             "a=mediaclk:direct=0",
                             "a=recvonly",
                             "a=framerate:25",
                             "a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:127",
                             "a=group:LS 1 2",
                             "a=group:DUP",
                             "a=source-filter:",
                             "a=source-filter: incl IN IP4",
                             "a=source-filter: excl IN IP4 bad bad",
                             "a=source-filter: incl IN IP6 bad bad",
                             "a=incl IN IP4 bad bad",
                             "a=rtpmap 95",
                             "a=fmtp 95",
                             "a=RTP/AVP 1",
                             "a=video 70000 ",
                             "video 70000 RTP/AVP 1",
                             "rtpmap:1",
                             "fmtp:1",
                             "a=depth=8;",
                             "a=width=1;",
                             "a=height=1;",
                             "a=interlace;",
                             "\xFF\x80",
                             "\t"})
        expect_line(ignored(line));
    expect_line(ignored("sampling=x; depth=y; width=1; height=2; exactframerate=3; TCS=4; "
                        "colorimetry=5; PM=6; SSN=7; TP=8"));
}

// --- o= -----------------------------------------------------------------------------------------

TEST(SdpParserOrigin, IsTheSourceAddress)
{
    const LineCase rows[] = {
        taken("o=HALDEN 1 2 IN IP4 192.168.10.1", source_ip, {{"source_ip[#]", "192.168.10.1"}}),
        taken("o=IN IP4 192.168.10.1", source_ip, {{"source_ip[#]", "192.168.10.1"}}),
        refused("o=IN IP4 300.0.0.1", "IN IP4 300.0.0.1 is invalid source address.\n"),
        refused("o=IN IP4 host.example", "IN IP4 host.example is invalid source address.\n"),
        refused("o=IN IP4 ", "IN IP4  is invalid source address.\n"),
        // To the end of the line: a slash is not a terminator here.
        refused("o=IN IP4 192.168.10.1/24", "IN IP4 192.168.10.1/24 is invalid source address.\n"),
        refused("o=IN IP4 10.0.0.1;", "IN IP4 10.0.0.1; is invalid source address.\n"),
        // Without the second key there is nothing to check.
        ignored("o=- 1 1 IN IP6 ::1"),
        ignored("o=- 1 1 IN IP4"),
        ignored("o=- 1 1 IN  IP4 bad"),
        ignored("o=- 1 1 in ip4 bad"),
        ignored("O=IN IP4 bad"),
        // Keys count wherever they stand.
        taken("xo=yIN IP4 10.0.0.1", source_ip, {{"source_ip[#]", "10.0.0.1"}}),
        taken("IN IP4 10.0.0.1 o=", source_ip, {{"source_ip[#]", "10.0.0.1 o="}}),
        refused("IN IP4 10.0.0.1o=", "IN IP4 10.0.0.1o= is invalid source address.\n"),
        // The first of two keys counts.
        taken("o=IN IP4 10.0.0.1 IN IP4 bad", source_ip, {{"source_ip[#]", "10.0.0.1 IN IP4 bad"}}),
        refused("o=IN IP4 bad IN IP4 10.0.0.1",
                "IN IP4 bad IN IP4 10.0.0.1 is invalid source address.\n"),
    };
    expect_lines(rows);
}

TEST(SdpParserOrigin, ValidAddressesAreThoseOfInetAton)
{
    const char* const valid[] = {
        "0.0.0.0",
        "255.255.255.255",
        "1.2.3.4",
        "01.02.03.04",
        "1.2.3.04",
        "001.002.003.004",
        // Fewer parts: the last one fills the rest.
        "10.1",
        "1",
        "0",
        "1.2.3",
        "1.16777215",
        "1.2.65535",
        "4294967295",
        // Octal and hexadecimal.
        "010.1",
        "0177.0.0.1",
        "037777777777",
        "0x7f.1",
        "0X7F.1",
        "0xffffffff",
        "1.2.3.0x4",
        "0x1.0x2.0x3.0x4",
        "00000000000000000000001.2",
        // White space ends the address, and anything may follow.
        "1.2.3.4 ",
        "1.2.3.4 junk",
        "1.2.3.4\tjunk",
        "1.2.3.4\vjunk",
        "1.2.3.4\fjunk",
        "1.2.3.4 / 24",
        "1 .2",
        "10.1 \xFF",
    };
    for (const char* address : valid)
        expect_line(taken("o=IN IP4 "s + address, source_ip, {{"source_ip[#]", address}}));

    const char* const invalid[] = {
        "",
        " ",
        " 1.2.3.4",
        "\t1.2.3.4",
        "256.1",
        "1.256.1",
        "1.2.256.1",
        "1.2.3.256",
        "1.2.65536",
        "1.16777216",
        "4294967296",
        "0x100000000",
        "040000000000",
        "1.2.3.0400",
        "18446744073709551616",
        "18446744073709551617",
        "99999999999999999999999",
        "1.99999999999999999999999",
        "1.2.3.4.5",
        "1.2.3.4.",
        "1.2.3.",
        "1.",
        "1..2",
        ".1",
        ".",
        "08.1",
        "09",
        "1.2.3.08",
        "0x",
        "0xg",
        "0x.1",
        "x1",
        "-1",
        "+1",
        "1.-2",
        "1.+2",
        "1. 2",
        "a.b.c.d",
        "1,2",
        "1.2.3.4x",
        "1.2.3.4/24",
        "1.2.3.4:5004",
        "1.2.3.4\x01",
        "1.2.3.4\xA0",
        "1.2.3.4\xFF",
        "::1",
        "localhost",
        "1e2",
        "10.0.0.1,10.0.0.2",
    };
    for (const char* address : invalid)
        expect_line(refused("o=IN IP4 "s + address,
                            "IN IP4 "s + address + " is invalid source address.\n"));
}

TEST(SdpParserOrigin, SeesAnAddressUpToItsNulAndStoresItWhole)
{
    expect_line(
        taken("o=IN IP4 10.0.0.1\0junk"s, source_ip, {{"source_ip[#]", "10.0.0.1\0junk"s}}));
    expect_line(refused("o=IN IP4 bad\0junk"s, "IN IP4 bad is invalid source address.\n"));
    expect_line(refused("o=IN IP4 \00010.0.0.1"s, "IN IP4  is invalid source address.\n"));
    expect_line(taken("x\0o=\0IN IP4 10.0.0.1"s, source_ip, {{"source_ip[#]", "10.0.0.1"}}));
}

// --- c= -----------------------------------------------------------------------------------------

TEST(SdpParserConnection, IsTheMulticastAddress)
{
    const LineCase rows[] = {
        taken("c=IN IP4 239.0.0.1/64", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        taken("c=IN IP4 239.0.0.1/64/2", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        taken("c=IN IP4 239.0.0.1/", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        taken("c=IN IP4 239.0.0.1", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        taken("c=IN IP4 239.0.0.1 /64", multicast_ip, {{"multicast_ip[#]", "239.0.0.1 "}}),
        taken("c=IN IP4 239.0.0.1 junk", multicast_ip, {{"multicast_ip[#]", "239.0.0.1 junk"}}),
        taken("c=IN IP4 10.1/8", multicast_ip, {{"multicast_ip[#]", "10.1"}}),
        taken("c=IN IP4 0x7f.1/8", multicast_ip, {{"multicast_ip[#]", "0x7f.1"}}),
        // No rule that it be a multicast address.
        taken("c=IN IP4 127.0.0.1/64", multicast_ip, {{"multicast_ip[#]", "127.0.0.1"}}),
        refused("c=IN IP4 239.0.0.256/64", "IN IP4 239.0.0.256 is invalid multicast address.\n"),
        refused("c=IN IP4 host/64", "IN IP4 host is invalid multicast address.\n"),
        refused("c=IN IP4  239.0.0.1/64", "IN IP4  239.0.0.1 is invalid multicast address.\n"),
        refused("c=IN IP4 /64", "IN IP4  is invalid multicast address.\n"),
        refused("c=IN IP4 ", "IN IP4  is invalid multicast address.\n"),
        ignored("c=IN IP6 ff02::1/64"),
        ignored("c=IN IP4"),
        ignored("C=IN IP4 bad"),
        // Keys count wherever they stand, and the first of two.
        taken("x/c=/IN IP4 239.0.0.1/64", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        taken("IN IP4 239.0.0.1/64 c=", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        taken("c=IN IP4 239.0.0.1/IN IP4 bad/", multicast_ip, {{"multicast_ip[#]", "239.0.0.1"}}),
        refused("c=IN IP4 bad/IN IP4 239.0.0.1/", "IN IP4 bad is invalid multicast address.\n"),
        taken("c=IN IP4 239.0.0.1\0x/64"s, multicast_ip, {{"multicast_ip[#]", "239.0.0.1\0x"s}}),
        refused("c=IN IP4 bad\0x/64"s, "IN IP4 bad is invalid multicast address.\n"),
    };
    expect_lines(rows);
}

TEST(SdpParserConnection, MayShareALineWithTheOrigin)
{
    expect_line(taken("o=c=IN IP4 10.0.0.1", source_ip | multicast_ip,
                      {{"source_ip[#]", "10.0.0.1"}, {"multicast_ip[#]", "10.0.0.1"}}));
    expect_line(taken_in_part("o=c=IN IP4 10.0.0.1/24", multicast_ip,
                              {{"multicast_ip[#]", "10.0.0.1"}},
                              "IN IP4 10.0.0.1/24 is invalid source address.\n"));
    expect_line(refused("c=o=IN IP4 bad/24", "IN IP4 bad/24 is invalid source address.\n"
                                             "IN IP4 bad is invalid multicast address.\n"));
}

// --- m= -----------------------------------------------------------------------------------------

TEST(SdpParserMedia, PortsFrom0To65535AreTaken)
{
    for (const char* media : {"video", "audio", "text"}) {
        for (const char* number :
             {"0", "1", "5004", "65534", "65535", "05004", "000000000000000000005004",
              // As strtol reads them: white space of other kinds, signs, and whatever follows.
              "+5004", "-0", "+0", "\t5004", "\v\f5004", "5004/2", "5004x", "5004.9", "65535.9",
              // No number is 0.
              "", "x", "abc", "-", "+", "0x10000", "-x70000", "+-70000", "\xFF"})
            expect_line(
                taken("m="s + media + " " + number + " ", port, {{"destination_port[#]", number}}));
    }
}

TEST(SdpParserMedia, OtherPortsAreOutOfRange)
{
    for (const char* media : {"video", "audio", "text"}) {
        for (const char* number :
             {"65536", "70000", "99999", "-1", "-5004", "-65536", "\t-1", "065536", "+65536",
              "65536x", "2147483647", "2147483648", "-2147483648", "-2147483649",
              // Never wrapped, on 32 bits neither.
              "4294967295", "4294967296", "4294967300", "-4294967292", "9223372036854775807",
              "9223372036854775808", "18446744073709551620", "-18446744073709551612",
              "99999999999999999999999999", "-99999999999999999999999999"})
            expect_line(refused("m="s + media + " " + number + " ",
                                "Destination Port "s + number + " is range over.\n"));
    }
}

TEST(SdpParserMedia, PortEndsAtASpaceOrTheLine)
{
    const LineCase rows[] = {
        taken("m=video 5004", port, {{"destination_port[#]", "5004"}}),
        refused("m=video 70000", "Destination Port 70000 is range over.\n"),
        taken("m=video ", port, {{"destination_port[#]", ""}}),
        taken("m=video  5004 ", port, {{"destination_port[#]", ""}}),
        ignored("m=video\t5004"),
        ignored("m=video"),
        taken("m=audio 5004\tRTP/AVP 96", port | payload_type,
              {{"destination_port[#]", "5004\tRTP/AVP"}, {"rtp_payload_type", "96"}}),
    };
    expect_lines(rows);
}

TEST(SdpParserMedia, OfOtherKindsHaveNoPort)
{
    const LineCase rows[] = {
        taken("m=application 70000 RTP/AVP 96", payload_type, {{"rtp_payload_type", "96"}}),
        ignored("m=image 70000 udptl t38"),
        ignored("m=Video 70000 "),
        ignored("M=video 70000 RTP/AVP 1"),
    };
    expect_lines(rows);
}

TEST(SdpParserMedia, KeysCountWhereverTheyStandAndTheFirstOfTwo)
{
    const LineCase rows[] = {
        taken("xm=yvideo 5004 zRTP/AVP 96", port | payload_type,
              {{"destination_port[#]", "5004"}, {"rtp_payload_type", "96"}}),
        taken("RTP/AVP 96 video 5004 m=", port | payload_type,
              {{"destination_port[#]", "5004"}, {"rtp_payload_type", "96 video 5004 m="}}),
        refused("video 70000 m=", "Destination Port 70000 is range over.\n"),
        refused("m=context 70000 ", "Destination Port 70000 is range over.\n"),
        taken("m=video 5004 video 70000 ", port, {{"destination_port[#]", "5004"}}),
        refused("m=video 70000 video 5004 ", "Destination Port 70000 is range over.\n"),
        taken("m=video 1 RTP/AVP 96 RTP/AVP 1", port | payload_type,
              {{"destination_port[#]", "1"}, {"rtp_payload_type", "96 RTP/AVP 1"}}),
        taken_in_part("m=video 1 RTP/AVP 1 RTP/AVP 96", port, {{"destination_port[#]", "1"}},
                      "RTP/AVP 1 RTP/AVP 96 is range over.\n"),
    };
    expect_lines(rows);
}

TEST(SdpParserMedia, SeveralKindsInALineAreReadAsVideoAudioText)
{
    const LineCase rows[] = {
        taken("m=video 1 audio 2 text 3 ", port, {{"destination_port[#]", "3"}}),
        taken("m=text 3 audio 2 video 1 ", port, {{"destination_port[#]", "3"}}),
        taken("m=audio 2 video 1 ", port, {{"destination_port[#]", "2"}}),
        refused("m=text 70003 audio 70002 video 70001 ", "Destination Port 70001 is range over.\n"
                                                         "Destination Port 70002 is range over.\n"
                                                         "Destination Port 70003 is range over.\n"),
        taken_in_part("m=video 1 audio 70002 text 70003 ", port, {{"destination_port[#]", "1"}},
                      "Destination Port 70002 is range over.\n"
                      "Destination Port 70003 is range over.\n"),
        // "audio " is what follows "video ", and its own key.
        taken("m=video audio 5 ", port, {{"destination_port[#]", "5"}}),
    };
    expect_lines(rows);
}

TEST(SdpParserMedia, PortAndPayloadTypeAreCheckedApart)
{
    const LineCase rows[] = {
        taken("m=video 5004 RTP/AVP 96", port | payload_type,
              {{"destination_port[#]", "5004"}, {"rtp_payload_type", "96"}}),
        taken_in_part("m=video 65536 RTP/AVP 96", payload_type, {{"rtp_payload_type", "96"}},
                      "Destination Port 65536 is range over.\n"),
        taken_in_part("m=video 0 RTP/AVP 95", port, {{"destination_port[#]", "0"}},
                      "RTP/AVP 95 is range over.\n"),
        taken_in_part("m=audio 0 RTP/AVP 128", port, {{"destination_port[#]", "0"}},
                      "RTP/AVP 128 is range over.\n"),
        refused("m=audio 70000 RTP/AVP 0", "Destination Port 70000 is range over.\n"
                                           "RTP/AVP 0 is range over.\n"),
        taken("m=video 5004 RTP/SAVP 95", port, {{"destination_port[#]", "5004"}}),
        taken("m=video 5004 RTP/AVP", port, {{"destination_port[#]", "5004"}}),
        taken("m=video 5004 rtp/avp 95", port, {{"destination_port[#]", "5004"}}),
        // Two spaces after "video": the port text is empty, which is 0.
        taken("m=video  RTP/AVP 96", port | payload_type,
              {{"destination_port[#]", ""}, {"rtp_payload_type", "96"}}),
    };
    expect_lines(rows);
}

TEST(SdpParserMedia, SeesNumbersUpToTheirNulAndStoresThemWhole)
{
    expect_line(taken("m=video 5004\0009 RTP/AVP 96\0 1"s, port | payload_type,
                      {{"destination_port[#]", "5004\0009"s}, {"rtp_payload_type", "96\0 1"s}}));
    expect_line(refused("m=video 70000\0x RTP/AVP 9\0006"s,
                        "Destination Port 70000 is range over.\n"
                        "RTP/AVP 9 is range over.\n"));
}

// --- Payload types ------------------------------------------------------------------------------

constexpr const char* payload_types_taken[] = {
    "96",     "97",    "126",   "127",          "096",
    "+96",    " 96",   "\t 96", "96 raw/90000", "96/90000",
    "96x",    "127.9", "96 97", "127 128",      "0000000000000000000000000000000000096",
    "96\xFF", "96 ",
};

constexpr const char* payload_types_refused[] = {
    "0",
    "1",
    "33",
    "94",
    "95",
    "128",
    "129",
    "255",
    "256",
    "352",
    "-1",
    "-96",
    "- 96",
    "",
    " ",
    "x96",
    "0x60",
    "95 96",
    "128 96",
    "raw/90000",
    "2147483647",
    "4294967296",
    "4294967392",
    "-4294967200",
    "18446744073709551712",
    "99999999999999999999",
    "-99999999999999999999",
};

TEST(SdpParserPayloadType, OfAMediaLineReachesFrom96To127)
{
    for (const char* type : payload_types_taken)
        expect_line(taken("m=RTP/AVP "s + type, payload_type, {{"rtp_payload_type", type}}));
    for (const char* type : payload_types_refused)
        expect_line(refused("m=RTP/AVP "s + type, "RTP/AVP "s + type + " is range over.\n"));
}

TEST(SdpParserPayloadType, OfARtpmapLineReachesFrom96To127)
{
    for (const char* type : payload_types_taken)
        expect_line(taken("a=rtpmap:"s + type, payload_type, {{"rtp_payload_type", type}}));
    for (const char* type : payload_types_refused)
        expect_line(refused("a=rtpmap:"s + type, "rtpmap: "s + type + " is range over.\n"));
}

TEST(SdpParserPayloadType, OfAFmtpLineReachesFrom96To127)
{
    for (const char* type : payload_types_taken)
        expect_line(taken("a=fmtp:"s + type, payload_type, {{"rtp_payload_type", type}}));
    for (const char* type : payload_types_refused)
        expect_line(refused("a=fmtp:"s + type, "fmtp: "s + type + " is range over.\n"));
}

TEST(SdpParserPayloadType, OfEveryValueFrom96To127IsTaken)
{
    for (int type = 0; type < 96; ++type)
        expect_sdp("a=rtpmap:" + std::to_string(type) + "\n", 0, {},
                   "rtpmap: " + std::to_string(type) + " is range over.\n");
    for (int type = 96; type <= 127; ++type)
        expect_sdp("a=rtpmap:" + std::to_string(type) + "\n", sdp_found_rtp_payload_type,
                   {{"rtp_payload_type", std::to_string(type)}}, "");
    for (int type = 128; type < 300; ++type)
        expect_sdp("a=rtpmap:" + std::to_string(type) + "\n", 0, {},
                   "rtpmap: " + std::to_string(type) + " is range over.\n");
}

TEST(SdpParserPayloadType, IsStoredWithTheRestOfItsLine)
{
    expect_line(
        taken("a=fmtp:96 ssrc=1; stuff", payload_type, {{"rtp_payload_type", "96 ssrc=1; stuff"}}));
    expect_line(taken("a=rtpmap:112 L24/48000/16", payload_type,
                      {{"rtp_payload_type", "112 L24/48000/16"}}));
    expect_line(taken("a=rtpmap:96\0/1"s, payload_type, {{"rtp_payload_type", "96\0/1"s}}));
    expect_line(refused("a=rtpmap:95\0/1"s, "rtpmap: 95 is range over.\n"));
    expect_line(refused("a=fmtp:95\0/1"s, "fmtp: 95 is range over.\n"));
}

TEST(SdpParserPayloadType, IsThatOfTheLastKeyThatWasFine)
{
    const LineCase rows[] = {
        taken("m=RTP/AVP 96 a=rtpmap:97 fmtp:98", payload_type, {{"rtp_payload_type", "98"}}),
        taken("a=fmtp:98 rtpmap:97", payload_type, {{"rtp_payload_type", "98 rtpmap:97"}}),
        taken_in_part("a=fmtp:95 rtpmap:97", payload_type, {{"rtp_payload_type", "97"}},
                      "fmtp: 95 rtpmap:97 is range over.\n"),
        refused("a=rtpmap:1 fmtp:2", "rtpmap: 1 fmtp:2 is range over.\n"
                                     "fmtp: 2 is range over.\n"),
        taken("a=rtpmap:96 rtpmap:1", payload_type, {{"rtp_payload_type", "96 rtpmap:1"}}),
        refused("a=rtpmap:1 rtpmap:96", "rtpmap: 1 rtpmap:96 is range over.\n"),
        taken("a=fmtp:96 fmtp:1", payload_type, {{"rtp_payload_type", "96 fmtp:1"}}),
        refused("a=fmtp:1 fmtp:96", "fmtp: 1 fmtp:96 is range over.\n"),
        taken("rtpmap:96 a=", payload_type, {{"rtp_payload_type", "96 a="}}),
        taken("fmtp:96 a=", payload_type, {{"rtp_payload_type", "96 a="}}),
        taken("xa=yrtpmap:96", payload_type, {{"rtp_payload_type", "96"}}),
        taken("xa=yfmtp:96", payload_type, {{"rtp_payload_type", "96"}}),
    };
    expect_lines(rows);
    expect_sdp("m=RTP/AVP 96\na=rtpmap:97\na=fmtp:1\n", sdp_found_rtp_payload_type,
               {{"rtp_payload_type", "97"}}, "fmtp: 1 is range over.\n");
}

// --- source-filter ------------------------------------------------------------------------------

TEST(SdpParserSourceFilter, GivesBothAddressesAndSetsThePortBit)
{
    const LineCase rows[] = {
        taken("a=source-filter: incl IN IP4 239.0.0.1 10.0.0.1", port | source_ip,
              {{"source_ip[#]", "10.0.0.1"}, {"multicast_ip[#]", "239.0.0.1"}}),
        taken("a=source-filter:incl IN IP4 10.1 0x7f.1", port | source_ip,
              {{"source_ip[#]", "0x7f.1"}, {"multicast_ip[#]", "10.1"}}),
        // The second address reaches to the end of the line.
        taken("a=source-filter: incl IN IP4 239.0.0.1 10.0.0.1 10.0.0.2", port | source_ip,
              {{"source_ip[#]", "10.0.0.1 10.0.0.2"}, {"multicast_ip[#]", "239.0.0.1"}}),
        taken("a=source-filter: incl IN IP4 239.0.0.1 10.0.0.1 ", port | source_ip,
              {{"source_ip[#]", "10.0.0.1 "}, {"multicast_ip[#]", "239.0.0.1"}}),
        taken("a=source-filter: incl IN IP4 239.0.0.1\t 10.0.0.1", port | source_ip,
              {{"source_ip[#]", "10.0.0.1"}, {"multicast_ip[#]", "239.0.0.1\t"}}),
        taken_in_part("a=source-filter: incl IN IP4 bad 10.0.0.1", source_ip,
                      {{"source_ip[#]", "10.0.0.1"}},
                      "incl IN IP4 bad is invalid multicast address.\n"),
        taken_in_part("a=source-filter: incl IN IP4 239.0.0.1 bad", port,
                      {{"multicast_ip[#]", "239.0.0.1"}},
                      "incl IN IP4 bad is invalid source address.\n"),
        refused("a=source-filter: incl IN IP4 worse bad",
                "incl IN IP4 worse is invalid multicast address.\n"
                "incl IN IP4 bad is invalid source address.\n"),
        refused("a=source-filter: incl IN IP4 239.0.0.1/64 10.0.0.1/24",
                "incl IN IP4 239.0.0.1/64 is invalid multicast address.\n"
                "incl IN IP4 10.0.0.1/24 is invalid source address.\n"),
        // Spaces too many: an empty first address, or a second one that begins with a space.
        taken_in_part("a=source-filter: incl IN IP4  10.0.0.1", source_ip,
                      {{"source_ip[#]", "10.0.0.1"}},
                      "incl IN IP4  is invalid multicast address.\n"),
        taken_in_part("a=source-filter: incl IN IP4 239.0.0.1  10.0.0.1", port,
                      {{"multicast_ip[#]", "239.0.0.1"}},
                      "incl IN IP4  10.0.0.1 is invalid source address.\n"),
        taken_in_part("a=source-filter: incl IN IP4 239.0.0.1 ", port,
                      {{"multicast_ip[#]", "239.0.0.1"}},
                      "incl IN IP4  is invalid source address.\n"),
        // Not a filter of this kind.
        ignored("a=source-filter: excl IN IP4 bad bad"),
        ignored("a=source-filter: incl IN IP6 bad bad"),
        ignored("a=source-filter: incl IN * bad bad"),
        ignored("a=source-filter : incl IN IP4 bad bad"),
        ignored("a=source-filter:  incl  IN IP4 bad bad"),
        ignored("source-filter: incl IN IP4 bad bad"),
        // Keys count wherever they stand, and the first of two.
        taken("xa=ysource-filter:zincl IN IP4 239.0.0.1 10.0.0.1", port | source_ip,
              {{"source_ip[#]", "10.0.0.1"}, {"multicast_ip[#]", "239.0.0.1"}}),
        taken("incl IN IP4 239.0.0.1 10.0.0.1 a=source-filter:", port | source_ip,
              {{"source_ip[#]", "10.0.0.1 a=source-filter:"}, {"multicast_ip[#]", "239.0.0.1"}}),
        taken("a=source-filter: incl IN IP4 1.1 2.2 incl IN IP4 3.3 4.4", port | source_ip,
              {{"source_ip[#]", "2.2 incl IN IP4 3.3 4.4"}, {"multicast_ip[#]", "1.1"}}),
        taken("a=source-filter: incl IN IP4 239.0.0.1\0x 10.0.0.1\0y"s, port | source_ip,
              {{"source_ip[#]", "10.0.0.1\0y"s}, {"multicast_ip[#]", "239.0.0.1\0x"s}}),
        refused("a=source-filter: incl IN IP4 worse\0x bad\0y"s,
                "incl IN IP4 worse is invalid multicast address.\n"
                "incl IN IP4 bad is invalid source address.\n"),
    };
    expect_lines(rows);
}

TEST(SdpParserSourceFilter, ReplacesTheAddressesOfOriginAndConnection)
{
    expect_sdp("o=- 1 1 IN IP4 1.1.1.1\n"
               "c=IN IP4 2.2.2.2/64\n"
               "a=source-filter: incl IN IP4 3.3.3.3 4.4.4.4\n",
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 |
                   sdp_found_destination_port_leg0,
               {{"source_ip[0]", "4.4.4.4"}, {"multicast_ip[0]", "3.3.3.3"}}, "");
    expect_sdp("a=source-filter: incl IN IP4 3.3.3.3 4.4.4.4\n"
               "c=IN IP4 2.2.2.2/64\n"
               "o=- 1 1 IN IP4 1.1.1.1\n",
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 |
                   sdp_found_destination_port_leg0,
               {{"source_ip[0]", "1.1.1.1"}, {"multicast_ip[0]", "2.2.2.2"}}, "");
    expect_sdp("c=IN IP4 2.2.2.2/64\n"
               "a=source-filter: incl IN IP4 bad bad\n",
               sdp_found_multicast_ip_leg0, {{"multicast_ip[0]", "2.2.2.2"}},
               "incl IN IP4 bad is invalid multicast address.\n"
               "incl IN IP4 bad is invalid source address.\n");
}

TEST(SdpParserSourceFilter, InALineThatSwitchesTheLegBelongsToLeg1)
{
    expect_sdp("a=source-filter: incl IN IP4 239.0.0.1 10.0.0.1 mid:\n",
               sdp_found_destination_port_leg1 | sdp_found_source_ip_leg1,
               {{"source_ip[1]", "10.0.0.1 mid:"}, {"multicast_ip[1]", "239.0.0.1"}}, "");
    expect_sdp("a=group:DUP primary secondary\n"
               "a=mid:primary source-filter: incl IN IP4 239.0.0.1 10.0.0.1\n",
               sdp_found_destination_port_leg1 | sdp_found_source_ip_leg1,
               {{"source_ip[1]", "10.0.0.1"}, {"multicast_ip[1]", "239.0.0.1"}}, "");
    expect_sdp("a=group:DUP primary secondary\n"
               "a=mid:other source-filter: incl IN IP4 239.0.0.1 10.0.0.1\n",
               sdp_found_destination_port_leg0 | sdp_found_source_ip_leg0,
               {{"source_ip[0]", "10.0.0.1"}, {"multicast_ip[0]", "239.0.0.1"}}, "");
}

// --- group:DUP and mid: -------------------------------------------------------------------------

/// Which leg an address behind `lines` belongs to.
void expect_leg(const std::string& lines, int leg)
{
    expect_sdp(lines + "c=IN IP4 239.0.0.1/64\n",
               leg == 0 ? sdp_found_multicast_ip_leg0 : sdp_found_multicast_ip_leg1,
               {{leg == 0 ? "multicast_ip[0]" : "multicast_ip[1]", "239.0.0.1"}}, "");
}

TEST(SdpParserLegs, WithoutAGroupTheFirstMidSwitches)
{
    expect_leg("", 0);
    expect_leg("a=mid:primary\n", 1);
    expect_leg("a=mid:\n", 1);
    expect_leg("xa=ymid:z\n", 1);
    expect_leg("mid: a=\n", 1);
    expect_leg("a=mid:1\na=mid:2\na=mid:1\n", 1);
    // Not a mid line.
    expect_leg("mid:primary\n", 0);
    expect_leg("a=mid\n", 0);
    expect_leg("a=mid primary\n", 0);
    expect_leg("a=MID:primary\n", 0);
    expect_leg("A=mid:primary\n", 0);
}

TEST(SdpParserLegs, WithAGroupTheFirstNameSwitches)
{
    const std::string group = "a=group:DUP primary secondary\n";
    expect_leg(group, 0);
    expect_leg(group + "a=mid:primary\n", 1);
    expect_leg(group + "a=mid:secondary\n", 0);
    expect_leg(group + "a=mid:secondary\na=mid:primary\n", 1);
    expect_leg(group + "a=mid:primary\na=mid:secondary\n", 1);
    expect_leg(group + "a=mid:\n", 0);
    expect_leg(group + "a=mid:Primary\n", 0);
    expect_leg(group + "a=mid:prim\n", 0);
    expect_leg(group + "mid:primary\n", 0);
    expect_leg(group + "a=primary\n", 0);
    // The name counts wherever it stands in the line.
    expect_leg(group + "a=mid:primary_leg\n", 1);
    expect_leg(group + "a=mid:not primary\n", 1);
    expect_leg(group + "a=primary mid:\n", 1);
    expect_leg(group + "primary a=mid:\n", 1);
    expect_leg("a=group:DUP mid other\na=mid:x\n", 1);
    expect_leg("a=group:DUP a b\na=mid:x\n", 1);
    expect_leg("a=group:DUP 1 2\na=mid:2\n", 0);
    expect_leg("a=group:DUP 1 2\na=mid:21\n", 1);
}

TEST(SdpParserLegs, TheFirstNameReachesToASpaceAndTheSecondToTheEnd)
{
    expect_leg("a=group:DUP one two three\na=mid:two\n", 0);
    expect_leg("a=group:DUP one two three\na=mid:one\n", 1);
    expect_leg("a=group:DUP one\tmore two\na=mid:one\n", 0);
    expect_leg("a=group:DUP one\tmore two\na=mid:one\tmore\n", 1);
    // Nothing behind the space is a second name too.
    expect_leg("a=group:DUP one \na=mid:two\n", 0);
    expect_leg("a=group:DUP one \na=mid:one\n", 1);
    expect_leg("a=group:DUP one\0 two\na=mid:one\n"s, 0);
    expect_leg("a=group:DUP one\0 two\na=mid:one\0\n"s, 1);
}

TEST(SdpParserLegs, AnEmptyFirstNameIsInEveryMidLine)
{
    expect_leg("a=group:DUP  secondary\na=mid:secondary\n", 1);
    expect_leg("a=group:DUP  \na=mid:\n", 1);
    expect_leg("a=group:DUP  secondary\na=other\n", 0);
}

TEST(SdpParserLegs, ASecondGroupReplacesTheNames)
{
    const std::string groups = "a=group:DUP primary secondary\na=group:DUP first second\n";
    expect_leg(groups + "a=mid:primary\n", 0);
    expect_leg(groups + "a=mid:first\n", 1);
    expect_leg("a=group:DUP primary secondary\na=group:DUP  second\na=mid:x\n", 1);
    expect_leg("a=group:DUP primary secondary\na=mid:primary\na=group:DUP first second\n", 1);
    expect_leg("a=group:DUP primary secondary\na=group:LS first second\na=mid:first\n", 0);
}

TEST(SdpParserLegs, GroupKeysCountWhereverTheyStandAndTheFirstOfTwo)
{
    expect_leg("xa=ygroup:DUP primary secondary\na=mid:x\n", 0);
    expect_leg("group:DUP primary secondary a=\na=mid:x\n", 0);
    expect_leg("a=group:DUP one two group:DUP three four\na=mid:three\n", 0);
    expect_leg("a=group:DUP one two group:DUP three four\na=mid:one\n", 1);
    expect_leg("a=group:LS x group:DUP one two\na=mid:x\n", 0);
    expect_leg("a=group:LS x group:DUP one two\na=mid:one\n", 1);
    expect_leg("a=group:DUPgroup:DUP one two\na=mid:one\n", 1);
    // Not a group line: every mid line switches.
    expect_leg("group:DUP primary secondary\na=mid:x\n", 1);
    expect_leg("a=group:DUP\na=mid:x\n", 1);
    expect_leg("a=group:dup primary secondary\na=mid:x\n", 1);
    expect_leg("a=group: DUP primary secondary\na=mid:x\n", 1);
}

TEST(SdpParserLegs, AGroupAndItsMidMayShareALine)
{
    expect_leg("a=group:DUP primary secondary mid:\n", 1);
    expect_leg("a=mid: group:DUP primary secondary\n", 1);
    expect_leg("a=group:DUP mid: x\n", 1);
}

TEST(SdpParserLegs, OriginConnectionAndMediaOfTheSwitchingLineBelongToLeg0)
{
    expect_sdp("o=IN IP4 10.0.0.1 a=mid:\n", sdp_found_source_ip_leg0,
               {{"source_ip[0]", "10.0.0.1 a=mid:"}}, "");
    expect_sdp("c=IN IP4 239.0.0.1 a=mid:\n", sdp_found_multicast_ip_leg0,
               {{"multicast_ip[0]", "239.0.0.1 a=mid:"}}, "");
    expect_sdp("m=video 5004 a=mid:\n", sdp_found_destination_port_leg0,
               {{"destination_port[0]", "5004"}}, "");
}

TEST(SdpParserLegs, EachKeepsItsOwnAddressesAndPort)
{
    expect_sdp("o=- 1 1 IN IP4 10.0.0.1\n"
               "a=group:DUP one two\n"
               "m=video 5004 RTP/AVP 96\n"
               "c=IN IP4 239.0.0.1/64\n"
               "a=mid:one\n"
               "m=video 5006 RTP/AVP 97\n"
               "c=IN IP4 239.0.0.2/64\n"
               "o=- 1 1 IN IP4 10.0.0.2\n"
               "a=mid:two\n",
               sdp_found_source_ip_leg0 | sdp_found_source_ip_leg1 | sdp_found_multicast_ip_leg0 |
                   sdp_found_multicast_ip_leg1 | sdp_found_destination_port_leg0 |
                   sdp_found_destination_port_leg1 | sdp_found_rtp_payload_type,
               {{"source_ip[0]", "10.0.0.1"},
                {"source_ip[1]", "10.0.0.2"},
                {"multicast_ip[0]", "239.0.0.1"},
                {"multicast_ip[1]", "239.0.0.2"},
                {"destination_port[0]", "5004"},
                {"destination_port[1]", "5006"},
                {"rtp_payload_type", "97"}},
               "");
}

TEST(SdpParserLegs, TheLastValueOfALegStays)
{
    expect_sdp("c=IN IP4 239.0.0.1/64\n"
               "c=IN IP4 239.0.0.2/64\n"
               "m=video 5004 \n"
               "m=video 5006 \n"
               "m=video 70000 \n",
               sdp_found_multicast_ip_leg0 | sdp_found_destination_port_leg0,
               {{"multicast_ip[0]", "239.0.0.2"}, {"destination_port[0]", "5006"}},
               "Destination Port 70000 is range over.\n");
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// analyze_sdp_file on whole files: what a call leaves behind, line breaks, the limit of 100 lines,
// long messages, and cuts past the end of a line. The single lines stand in
// sdp_parser_lines_test.cpp and sdp_parser_format_test.cpp.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/body_parts.h"
#include "support/repeated.h"
#include "support/sdp_check.h"
#include "support/two_leg_sdp.h"

namespace {

using namespace std::string_literals;

using ::testing::StartsWith;

// Hosts were built with these numbers.
static_assert(sdp_found_source_ip_leg0 == 0x1);
static_assert(sdp_found_source_ip_leg1 == 0x2);
static_assert(sdp_found_multicast_ip_leg0 == 0x4);
static_assert(sdp_found_multicast_ip_leg1 == 0x8);
static_assert(sdp_found_destination_port_leg0 == 0x10);
static_assert(sdp_found_destination_port_leg1 == 0x20);
static_assert(sdp_found_rtp_payload_type == 0x40);
static_assert(sdp_found_sampling_and_depth == 0x80);
static_assert(sdp_found_size == 0x100);
static_assert(sdp_found_exactframerate == 0x200);
static_assert(sdp_found_colorimetry == 0x400);
static_assert(sdp_found_packing_mode == 0x800);
static_assert(sdp_found_tcs == 0x1000);

constexpr std::uint32_t every_found_flag = 0x1FFF;

// --- Whole files --------------------------------------------------------------------------------

TEST(SdpParserFiles, AnEmptyFileIsFine)
{
    expect_sdp("", 0, {}, "");
}

TEST(SdpParserFiles, TwoLegVideoIsTakenWhole)
{
    expect_sdp(two_leg_video, every_found_flag,
               {{"source_ip[0]", "192.168.10.1"},
                {"source_ip[1]", "192.168.20.1"},
                {"multicast_ip[0]", "239.10.0.1"},
                {"multicast_ip[1]", "239.20.0.1"},
                {"destination_port[0]", "5004"},
                {"destination_port[1]", "5014"},
                {"rtp_payload_type", "96 raw/90000"},
                {"sampling", "YCbCr-4:2:2"},
                {"depth", "10"},
                {"width", "1920"},
                {"height", "1080"},
                {"exactframerate", "60000/1001"},
                {"size_interlaced", "0"},
                {"rate_interlaced", "0"},
                {"colorimetry", "BT709"},
                {"packing_mode", "2110BPM"},
                {"tcs", "SDR"}},
               "");
}

TEST(SdpParserFiles, OneLegInterlacedVideoIsTakenWhole)
{
    const std::string fmtp = "112 sampling=YCbCr-4:2:2; width=1920; height=1080; "
                             "exactframerate=30000/1001; interlace; depth=10; TCS=HLG; "
                             "colorimetry=BT2020; PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPW;";
    expect_sdp("v=0\n"
               "o=- 1443716955 1443716955 IN IP4 192.168.1.2\n"
               "s=Camera\n"
               "t=0 0\n"
               "m=video 20000 RTP/AVP 112\n"
               "c=IN IP4 239.1.1.1/32\n"
               "a=rtpmap:112 raw/90000\n"
               "a=fmtp:" +
                   fmtp +
                   "\n"
                   "a=ts-refclk:ptp=IEEE1588-2008:39-A7-94-FF-FE-07-CB-D0:37\n"
                   "a=mediaclk:direct=0\n",
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 |
                   sdp_found_destination_port_leg0 | sdp_found_rtp_payload_type |
                   sdp_found_sampling_and_depth | sdp_found_size | sdp_found_exactframerate |
                   sdp_found_colorimetry | sdp_found_packing_mode | sdp_found_tcs,
               {{"source_ip[0]", "192.168.1.2"},
                {"multicast_ip[0]", "239.1.1.1"},
                {"destination_port[0]", "20000"},
                {"rtp_payload_type", fmtp},
                {"sampling", "YCbCr-4:2:2"},
                {"depth", "10"},
                {"width", "1920"},
                {"height", "1080"},
                {"exactframerate", "30000/1001"},
                {"size_interlaced", "1"},
                {"rate_interlaced", "1"},
                {"colorimetry", "BT2020"},
                {"packing_mode", "2110GPM"},
                {"tcs", "HLG"}},
               "");
}

TEST(SdpParserFiles, AudioIsTaken)
{
    expect_sdp("v=0\r\n"
               "o=- 1 1 IN IP4 10.0.0.1\r\n"
               "s=Audio\r\n"
               "t=0 0\r\n"
               "m=audio 5004 RTP/AVP 97\r\n"
               "c=IN IP4 239.0.0.1/64\r\n"
               "a=rtpmap:97 L24/48000/16\r\n"
               "a=ptime:0.125\r\n"
               "a=mediaclk:direct=0\r\n",
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 |
                   sdp_found_destination_port_leg0 | sdp_found_rtp_payload_type,
               {{"source_ip[0]", "10.0.0.1"},
                {"multicast_ip[0]", "239.0.0.1"},
                {"destination_port[0]", "5004"},
                {"rtp_payload_type", "97 L24/48000/16"}},
               "");
}

TEST(SdpParserFiles, ALineMayFailEveryCheckInOrder)
{
    const std::string parameters =
        "sampling=a;depth=b;width=1;height=2;exactframerate=3;TCS=4;colorimetry=5;PM=6;SSN=7;TP=8";
    const std::string fmtp = "9 " + parameters;
    const std::string rtpmap = "10 fmtp:" + fmtp;
    const std::string rtp_avp = "11 a=rtpmap:" + rtpmap;
    expect_sdp("m=text 70003 audio 70002 video 70001 RTP/AVP " + rtp_avp + "\n", 0, {},
               "Destination Port 70001 is range over.\n"
               "Destination Port 70002 is range over.\n"
               "Destination Port 70003 is range over.\n"
               "RTP/AVP " +
                   rtp_avp +
                   " is range over.\n"
                   "rtpmap: " +
                   rtpmap +
                   " is range over.\n"
                   "fmtp: " +
                   fmtp +
                   " is range over.\n"
                   "(sampling= a, depth= b) is no support parameter.\n"
                   "(width= 1, height= 2) is no support parameter. \n"
                   "exactframerate: 3 is no support parameter.\n"
                   "TCS= 4 is no support parameter.\n"
                   "colorimetry: 5 is no support parameter.\n"
                   "PM= 6 is no support parameter.\n"
                   "SSN= 7 is no support parameter.\n"
                   "TP= 8 is no support parameter.\n");
}

TEST(SdpParserFiles, AddressesOfALineAreCheckedBeforeTheOthers)
{
    expect_sdp("o=c=m=video 70000 a=rtpmap:1 source-filter: incl IN IP4 bad/ worse TCS=4;\n", 0, {},
               "IN IP4 bad/ worse TCS=4; is invalid source address.\n"
               "IN IP4 bad is invalid multicast address.\n"
               "Destination Port 70000 is range over.\n"
               "incl IN IP4 bad/ is invalid multicast address.\n"
               "incl IN IP4 worse TCS=4; is invalid source address.\n"
               "rtpmap: 1 source-filter: incl IN IP4 bad/ worse TCS=4; is range over.\n"
               "TCS= 4 is no support parameter.\n");
}

TEST(SdpParserFiles, MessagesFollowTheLines)
{
    expect_sdp("a=TP=1;\n"
               "o=IN IP4 bad\n"
               "a=fmtp:1\n"
               "m=video 70000 \n",
               0, {},
               "TP= 1 is no support parameter.\n"
               "IN IP4 bad is invalid source address.\n"
               "fmtp: 1 is range over.\n"
               "Destination Port 70000 is range over.\n");
}

TEST(SdpParserFiles, AMessageDoesNotKeepOtherValuesFromBeingStored)
{
    expect_sdp(
        "m=video 65536 RTP/AVP 96\n"
        "c=IN IP4 239.0.0.1/64\n"
        "a=TCS=bad; colorimetry=BT709;\n",
        sdp_found_multicast_ip_leg0 | sdp_found_rtp_payload_type | sdp_found_colorimetry,
        {{"multicast_ip[0]", "239.0.0.1"}, {"rtp_payload_type", "96"}, {"colorimetry", "BT709"}},
        "Destination Port 65536 is range over.\n"
        "TCS= bad is no support parameter.\n");
}

TEST(SdpParserFiles, ValuesAreNeverFormats)
{
    expect_sdp("a=TCS=%s%n%d%%;\n", 0, {}, "TCS= %s%n%d%% is no support parameter.\n");
    expect_sdp("o=IN IP4 %s\n", 0, {}, "IN IP4 %s is invalid source address.\n");
}

// --- What a call leaves behind ------------------------------------------------------------------

TEST(SdpParserCalls, ClearTheFlagsAndKeepTheFieldsOfTheCallBefore)
{
    ConnectionApi api;
    sdp_str found = untouched_sdp_str();
    std::string errors;
    EXPECT_EQ(api.analyze_sdp_file("c=IN IP4 239.0.0.1/64\na=TCS=SDR\nm=video 70000 \n", true, 4,
                                   true, &errors, &found),
              400);
    EXPECT_EQ(errors, "Destination Port 70000 is range over.\n");
    EXPECT_EQ(found.found_flags, sdp_found_multicast_ip_leg0 | sdp_found_tcs);

    EXPECT_EQ(api.analyze_sdp_file("a=TCS=PQ\n", true, 4, true, &errors, &found), 200);
    EXPECT_EQ(errors, "");
    EXPECT_EQ(found.found_flags, sdp_found_tcs);
    EXPECT_EQ(stored_fields(found), (Fields{{"multicast_ip[0]", "239.0.0.1"}, {"tcs", "PQ"}}));

    EXPECT_EQ(api.analyze_sdp_file("", true, 4, true, &errors, &found), 200);
    EXPECT_EQ(found.found_flags, 0U);
    EXPECT_EQ(stored_fields(found), (Fields{{"multicast_ip[0]", "239.0.0.1"}, {"tcs", "PQ"}}));
}

TEST(SdpParserCalls, BeginAtLeg0WithoutNames)
{
    ConnectionApi api;
    sdp_str found = untouched_sdp_str();
    std::string errors;
    api.analyze_sdp_file("a=group:DUP primary secondary\na=mid:primary\n", true, 4, true, &errors,
                         &found);
    EXPECT_EQ(api.analyze_sdp_file("c=IN IP4 239.0.0.1/64\na=mid:x\nc=IN IP4 239.0.0.2/64\n", true,
                                   4, true, &errors, &found),
              200);
    EXPECT_EQ(found.found_flags, sdp_found_multicast_ip_leg0 | sdp_found_multicast_ip_leg1);
    EXPECT_EQ(stored_fields(found),
              (Fields{{"multicast_ip[0]", "239.0.0.1"}, {"multicast_ip[1]", "239.0.0.2"}}));
}

TEST(SdpParserCalls, LeaveTheFileAlone)
{
    const std::string sdp = "m=video 5004 RTP/AVP 96\r\nc=IN IP4 239.0.0.1/64\r\n";
    sdp_str found = untouched_sdp_str();
    std::string errors;
    ConnectionApi().analyze_sdp_file(sdp, true, 4, true, &errors, &found);
    EXPECT_EQ(sdp, "m=video 5004 RTP/AVP 96\r\nc=IN IP4 239.0.0.1/64\r\n");
}

// --- Line breaks --------------------------------------------------------------------------------

void expect_four_lines(const std::string& end)
{
    expect_sdp("o=IN IP4 10.0.0.1" + end + "c=IN IP4 239.0.0.1/64" + end + "a=rtpmap:96" + end +
                   "a=TCS=SDR" + end,
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 | sdp_found_rtp_payload_type |
                   sdp_found_tcs,
               {{"source_ip[0]", "10.0.0.1"},
                {"multicast_ip[0]", "239.0.0.1"},
                {"rtp_payload_type", "96"},
                {"tcs", "SDR"}},
               "");
}

TEST(SdpParserLineBreaks, OfEveryKindAreTaken)
{
    for (const char* end : {"\n", "\r", "\r\n", "\n\r", "\n\n", "\r\r", "\n\r\n", "\r\n\r",
                            "\r\r\n", "\n\n\r", "\r\n\r\n"})
        expect_four_lines(end);
}

TEST(SdpParserLineBreaks, MayDifferFromLineToLine)
{
    expect_sdp("o=IN IP4 10.0.0.1\r"
               "c=IN IP4 239.0.0.1/64\n\r"
               "a=rtpmap:96\r\n"
               "a=TCS=SDR\n",
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 | sdp_found_rtp_payload_type |
                   sdp_found_tcs,
               {{"source_ip[0]", "10.0.0.1"},
                {"multicast_ip[0]", "239.0.0.1"},
                {"rtp_payload_type", "96"},
                {"tcs", "SDR"}},
               "");
}

TEST(SdpParserLineBreaks, NoOtherByteEndsALine)
{
    expect_sdp("o=IN IP4 10.0.0.1\v\f\x85\0x\nc=IN IP4 239.0.0.1\n"s,
               sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0,
               {{"source_ip[0]", "10.0.0.1\v\f\x85\0x"s}, {"multicast_ip[0]", "239.0.0.1"}}, "");
    expect_sdp("a=TCS=SDR\\n;\n", 0, {}, "TCS= SDR\\n is no support parameter.\n");
}

TEST(SdpParserLineBreaks, TheLastLineWithoutOneBecomesANumberAndSaysNothing)
{
    for (const char* line :
         {"m=video 70000 RTP/AVP 1", "c=IN IP4 bad", "a=TCS=bad", "a=fmtp:1", "a=group:DUP one",
          "a=source-filter: incl IN IP4 239.0.0.1", "c=IN IP4 239.0.0.1/64", "96", "-1", "x"}) {
        expect_sdp(line, 0, {}, "");
        expect_sdp(std::string("a=TCS=PQ\n") + line, sdp_found_tcs, {{"tcs", "PQ"}}, "");
    }
    expect_sdp("m=video 5004 RTP/AVP 96\r\nc=IN IP4 239.0.0.1/64",
               sdp_found_destination_port_leg0 | sdp_found_rtp_payload_type,
               {{"destination_port[0]", "5004"}, {"rtp_payload_type", "96"}}, "");
}

// --- The limit of 100 lines ---------------------------------------------------------------------

TEST(SdpParserLimit, Line100IsExaminedAndLine101IsNot)
{
    const std::string bad = "m=video 70000 \n";
    const char* message = "Destination Port 70000 is range over.\n";
    expect_sdp(repeated("b=x\n", 98) + bad, 0, {}, message);
    expect_sdp(repeated("b=x\n", 99) + bad, 0, {}, message);
    expect_sdp(repeated("b=x\n", 100) + bad, 0, {}, "");
    expect_sdp(repeated("b=x\n", 101) + bad, 0, {}, "");
    expect_sdp(repeated("b=x\n", 1000) + bad, 0, {}, "");
    expect_sdp(repeated("\r\n", 99) + bad, 0, {}, message);
    expect_sdp(repeated("\r\n", 100) + bad, 0, {}, "");
    expect_sdp(repeated("b=x\n", 99) + "a=TCS=SDR\na=TCS=PQ\na=TCS=bad\n", sdp_found_tcs,
               {{"tcs", "SDR"}}, "");
}

TEST(SdpParserLimit, EveryOneOf100LinesIsExamined)
{
    expect_sdp(repeated("a=TP=1;\n", 100), 0, {},
               repeated("TP= 1 is no support parameter.\n", 100));
    expect_sdp(repeated("a=TP=1;\n", 101), 0, {},
               repeated("TP= 1 is no support parameter.\n", 100));
    expect_sdp(repeated("a=TP=1;\n", 500), 0, {},
               repeated("TP= 1 is no support parameter.\n", 100));
}

TEST(SdpParserLimit, LinesAreCountedAfterTheBreaksAreConverted)
{
    // LF CR LF is two breaks, CR LF one.
    expect_sdp(repeated("b=x\n\r\n", 49) + "\na=TP=1;\n", 0, {},
               "TP= 1 is no support parameter.\n");
    expect_sdp(repeated("b=x\n\r\n", 49) + "\n\na=TP=1;\n", 0, {}, "");
    expect_sdp(repeated("b=x\n\r\n", 50) + "a=TP=1;\n", 0, {}, "");
    expect_sdp(repeated("b=x\r\n", 99) + "a=TP=1;\n", 0, {}, "TP= 1 is no support parameter.\n");
}

TEST(SdpParserLimit, ARestWithoutALineBreakIsNotExaminedAtTheLimitEither)
{
    const std::string rest = "m=video 70000 RTP/AVP 1";
    expect_sdp(repeated("b=x\n", 98) + rest, 0, {}, "");
    expect_sdp(repeated("b=x\n", 99) + rest, 0, {}, "");
    expect_sdp(repeated("b=x\n", 100) + rest, 0, {}, "");
    expect_sdp(repeated("b=x\n", 99) + "a=TCS=PQ\n" + rest, sdp_found_tcs, {{"tcs", "PQ"}}, "");
}

TEST(SdpParserLimit, NothingBehindItThrows)
{
    expect_sdp(repeated("b=x\n", 100) + "a=group:DUP one\n", 0, {}, "");
}

// --- Long messages and long lines ---------------------------------------------------------------

TEST(SdpParserMessages, AreWholeUpTo255BytesAndCutTo254AndTheLineBreakFromThen)
{
    const struct
    {
        int value_length;
        std::string errors;
    } rows[] = {
        // 254, 255, 256, 257 and 300 bytes.
        {223, "TCS= " + std::string(223, 'x') + " is no support parameter.\n"},
        {224, "TCS= " + std::string(224, 'x') + " is no support parameter.\n"},
        {225, "TCS= " + std::string(225, 'x') + " is no support parameter\n"},
        {226, "TCS= " + std::string(226, 'x') + " is no support paramete\n"},
        {269, "TCS= " + std::string(249, 'x') + "\n"},
        {248, "TCS= " + std::string(248, 'x') + " \n"},
        {249, "TCS= " + std::string(249, 'x') + "\n"},
        {250, "TCS= " + std::string(249, 'x') + "\n"},
        {100000, "TCS= " + std::string(249, 'x') + "\n"},
    };
    for (const auto& row : rows)
        expect_sdp("a=TCS=" + std::string(static_cast<std::size_t>(row.value_length), 'x') + ";\n",
                   0, {}, row.errors);
}

TEST(SdpParserMessages, OfEveryKindAreCut)
{
    const std::string x(300, 'x');
    const auto cut = [](const std::string& begin) {
        return begin + std::string(254 - begin.size(), 'x') + "\n";
    };
    expect_sdp("o=IN IP4 " + x + "\n", 0, {}, cut("IN IP4 "));
    expect_sdp("c=IN IP4 " + x + "\n", 0, {}, cut("IN IP4 "));
    expect_sdp("m=video 70000" + x + "\n", 0, {}, cut("Destination Port 70000"));
    expect_sdp("m=RTP/AVP " + x + "\n", 0, {}, cut("RTP/AVP "));
    expect_sdp("a=source-filter: incl IN IP4 " + x + " " + x + "\n", 0, {},
               cut("incl IN IP4 ") + cut("incl IN IP4 "));
    expect_sdp("a=rtpmap:" + x + "\n", 0, {}, cut("rtpmap: "));
    expect_sdp("a=fmtp:" + x + "\n", 0, {}, cut("fmtp: "));
    expect_sdp("a=sampling=" + x + ";depth=" + x + ";\n", 0, {}, cut("(sampling= "));
    expect_sdp("a=sampling=a;depth=" + x + ";\n", 0, {}, cut("(sampling= a, depth= "));
    expect_sdp("a=width=" + x + ";height=" + x + ";\n", 0, {}, cut("(width= "));
    expect_sdp("a=width=1;height=" + x + ";interlace\n", 0, {}, cut("(width= 1, height= "));
    expect_sdp("a=exactframerate=" + x + ";\n", 0, {}, cut("exactframerate: "));
    expect_sdp("a=colorimetry=" + x + ";\n", 0, {}, cut("colorimetry: "));
    expect_sdp("a=PM=" + x + ";\n", 0, {}, cut("PM= "));
    expect_sdp("a=SSN=" + x + ";\n", 0, {}, cut("SSN= "));
    expect_sdp("a=TP=" + x + ";\n", 0, {}, cut("TP= "));
}

TEST(SdpParserMessages, OfTwoValuesAreCutWhereverThe254thByteFalls)
{
    // "(sampling= " is 11 bytes, ", depth= " 9.
    expect_sdp("a=sampling=" + std::string(100, 's') + ";depth=" + std::string(108, 'd') + ";\n", 0,
               {},
               "(sampling= " + std::string(100, 's') + ", depth= " + std::string(108, 'd') +
                   ") is no support parameter.\n");
    expect_sdp("a=sampling=" + std::string(100, 's') + ";depth=" + std::string(109, 'd') + ";\n", 0,
               {},
               "(sampling= " + std::string(100, 's') + ", depth= " + std::string(109, 'd') +
                   ") is no support parameter\n");
    expect_sdp("a=sampling=" + std::string(240, 's') + ";depth=1;\n", 0, {},
               "(sampling= " + std::string(240, 's') + ", d\n");
    // "(width= " is 8 bytes, ", height= " 10; the progressive text ends with a space.
    expect_sdp("a=width=" + std::string(100, 'w') + ";height=" + std::string(109, 'h') + ";\n", 0,
               {},
               "(width= " + std::string(100, 'w') + ", height= " + std::string(109, 'h') +
                   ") is no support parameter. \n");
    expect_sdp("a=width=" + std::string(100, 'w') + ";height=" + std::string(110, 'h') + ";\n", 0,
               {},
               "(width= " + std::string(100, 'w') + ", height= " + std::string(110, 'h') +
                   ") is no support parameter.\n");
    expect_sdp("a=interlace;width=" + std::string(100, 'w') + ";height=" + std::string(99, 'h') +
                   ";\n",
               0, {},
               "(width= " + std::string(100, 'w') + ", height= " + std::string(99, 'h') +
                   ", interlace) is no support parameter.\n");
    expect_sdp("a=interlace;width=" + std::string(100, 'w') + ";height=" + std::string(100, 'h') +
                   ";\n",
               0, {},
               "(width= " + std::string(100, 'w') + ", height= " + std::string(100, 'h') +
                   ", interlace) is no support parameter\n");
}

TEST(SdpParserMessages, AreMeasuredByWhatStandsBeforeANul)
{
    expect_sdp("a=TCS=" + std::string(10, 'x') + "\0"s + std::string(300, 'y') + ";\n", 0, {},
               "TCS= xxxxxxxxxx is no support parameter.\n");
}

TEST(SdpParserMessages, AreCutOneByOne)
{
    expect_sdp(repeated("a=TP=" + std::string(300, 'x') + ";\n", 100), 0, {},
               repeated("TP= " + std::string(250, 'x') + "\n", 100));
}

TEST(SdpParserFiles, LongValuesAreStoredWhole)
{
    const std::string junk(100000, 'x');
    expect_sdp("o=IN IP4 10.0.0.1 " + junk + "\n", sdp_found_source_ip_leg0,
               {{"source_ip[0]", "10.0.0.1 " + junk}}, "");
    expect_sdp("m=video 5004" + junk + " RTP/AVP 96" + junk + "\n",
               sdp_found_destination_port_leg0 | sdp_found_rtp_payload_type,
               {{"destination_port[0]", "5004" + junk}, {"rtp_payload_type", "96" + junk}}, "");
}

// --- Cuts past the end of the line --------------------------------------------------------------

/// A call that must throw; what it leaves behind is compared.
void expect_thrown(const std::string& sdp, std::uint32_t flags, const Fields& stored,
                   const std::string& errors)
{
    sdp_str found = untouched_sdp_str();
    std::string messages = "left over\n";
    SCOPED_TRACE("SDP file:\n" + sdp);
    EXPECT_THAT(out_of_range_text([&] {
                    ConnectionApi().analyze_sdp_file(sdp, true, 4, true, &messages, &found);
                }),
                StartsWith("basic_string::substr"));
    EXPECT_EQ(messages, errors);
    EXPECT_EQ(found.found_flags, flags);
    EXPECT_EQ(stored_fields(found), stored);
}

TEST(SdpParserThrows, WhenAGroupHasOneName)
{
    expect_thrown("a=group:DUP primary\n", 0, {}, "");
    expect_thrown("a=group:DUP \n", 0, {}, "");
    expect_thrown("xa=ygroup:DUP primary\n", 0, {}, "");
    expect_thrown("a=group:DUP one two\r\na=group:DUP primary\r\n", 0, {}, "");
    expect_thrown("a=group:DUP one\ttwo\n", 0, {}, "");
    expect_thrown("a= b group:DUP one\n", 0, {}, "");
}

TEST(SdpParserThrows, WhenASourceFilterHasOneAddress)
{
    expect_thrown("a=source-filter: incl IN IP4 239.0.0.1\n", sdp_found_destination_port_leg0,
                  {{"multicast_ip[0]", "239.0.0.1"}}, "");
    expect_thrown("a=mid:\na=source-filter: incl IN IP4 239.0.0.1\n",
                  sdp_found_destination_port_leg1, {{"multicast_ip[1]", "239.0.0.1"}}, "");
    expect_thrown("a=source-filter: incl IN IP4 bad\n", 0, {},
                  "incl IN IP4 bad is invalid multicast address.\n");
    expect_thrown("a=source-filter: incl IN IP4 \n", 0, {},
                  "incl IN IP4  is invalid multicast address.\n");
    expect_thrown("a=source-filter:incl IN IP4 239.0.0.1\t10.0.0.1\n",
                  sdp_found_destination_port_leg0, {{"multicast_ip[0]", "239.0.0.1\t10.0.0.1"}},
                  "");
}

TEST(SdpParserThrows, WithTheMessagesAndValuesSoFar)
{
    expect_thrown("m=video 70000 RTP/AVP 96\n"
                  "c=IN IP4 239.0.0.1/64\n"
                  "a=TCS=bad;\n"
                  "a=group:DUP primary\n"
                  "a=TCS=SDR;\n"
                  "m=video 70001 RTP/AVP 97\n",
                  sdp_found_multicast_ip_leg0 | sdp_found_rtp_payload_type,
                  {{"multicast_ip[0]", "239.0.0.1"}, {"rtp_payload_type", "96"}},
                  "Destination Port 70000 is range over.\n"
                  "TCS= bad is no support parameter.\n");
    // What stands in the same line and is checked before counts too, what is checked after does
    // not.
    expect_thrown("m=video 70000 a=rtpmap:1 TCS=bad; source-filter: incl IN IP4 239.0.0.1\n",
                  sdp_found_destination_port_leg0, {{"multicast_ip[0]", "239.0.0.1"}},
                  "Destination Port 70000 is range over.\n");
    expect_thrown("m=video 5004 RTP/AVP 96 a=rtpmap:97 mid: group:DUP primary\n",
                  sdp_found_destination_port_leg0 | sdp_found_rtp_payload_type,
                  {{"destination_port[0]", "5004"},
                   {"rtp_payload_type", "96 a=rtpmap:97 mid: group:DUP primary"}},
                  "");
}

TEST(SdpParserThrows, AndTheNextCallStartsAfresh)
{
    ConnectionApi api;
    sdp_str found = untouched_sdp_str();
    std::string errors;
    EXPECT_THROW(api.analyze_sdp_file("m=video 70000 \na=group:DUP primary\n", true, 4, true,
                                      &errors, &found),
                 std::out_of_range);
    EXPECT_EQ(
        api.analyze_sdp_file("a=mid:x\nc=IN IP4 239.0.0.1/64\n", true, 4, true, &errors, &found),
        200);
    EXPECT_EQ(errors, "");
    EXPECT_EQ(found.found_flags, sdp_found_multicast_ip_leg1);
    EXPECT_EQ(stored_fields(found), (Fields{{"multicast_ip[1]", "239.0.0.1"}}));
}

} // namespace

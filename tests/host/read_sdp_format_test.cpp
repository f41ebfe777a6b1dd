// SPDX-License-Identifier: Apache-2.0
//
// What a receiver says of the formats in an SDP file: encodings, clock rates, values, and legs that
// differ.

#include "sdp/read_sdp.h"

#include <gtest/gtest.h>

#include "sdp/rtp_format.h"
#include "sdp/sdp_description.h"
#include "sdp_test_files.h"
#include "support/varied.h"

namespace nmos_instrument::host {
namespace {

using enum SdpCode;

const std::string sound = "5: 233.252.0.1:5004";

/// One path whose format parameters are those of `change`.
Lines with_format(std::initializer_list<Change> change)
{
    return edited(one_path, {{9, {"a=fmtp:96 " + varied(hd_interlaced, change)}}});
}

/// Two paths, of which the second has other format parameters.
Lines with_other_format(std::initializer_list<Change> change)
{
    return edited(two_paths, {{16, {"a=fmtp:96 " + varied(hd_interlaced, change)}}});
}

Lines audio_of(const std::string& encoding)
{
    return edited(audio_path, {{7, {"a=rtpmap:97 " + encoding}}});
}

TEST(ReadSdpFormat, PayloadTypes)
{
    const auto video_of = [](const std::string& type) {
        return edited(one_path, {{5, {"m=video 5004 RTP/AVP " + type}},
                                 {8, {"a=rtpmap:" + type + " raw/90000"}},
                                 {9, {"a=fmtp:" + type + " " + hd_interlaced}}});
    };
    expect_readings({
        {"96", video_of("96"), {alone, off}},
        {"127", video_of("127"), {alone, off}},
        {"95", video_of("95"), {}, {{payload_type, 5}}},
        {"128", video_of("128"), {}, {{payload_type, 5}}},
        {"33", video_of("33"), {}, {{payload_type, 5}}},
        {"a static one without rtpmap",
         edited(audio_path, {{5, {"m=audio 49170 RTP/AVP 0"}}, {7, {}}}),
         {},
         {{no_rtpmap, 5}, {payload_type, 5}},
         audio_receiver},
        {"fmtp of another",
         edited(one_path, {{9, {one_path[8], "a=fmtp:97 apt=96"}}}),
         {},
         {{unknown_payload_type, 10}}},
        {"rtpmap of another beside its own",
         edited(one_path, {{8, {one_path[7], "a=rtpmap:97 rtx/90000"}}}),
         {},
         {{unknown_payload_type, 9}}},
        {"two that are listed",
         edited(one_path, {{5, {"m=video 5004 RTP/AVP 96 97"}},
                           {8, {one_path[7], "a=rtpmap:97 rtx/90000"}},
                           {9, {one_path[8], "a=fmtp:97 apt=96"}}}),
         {alone, off}},
        {"of a medium that is not chosen",
         edited(one_path, {{9, {one_path[8], "m=audio 5006 RTP/AVP 33", "a=rtpmap:97 L24/48000"}}}),
         {alone, off}},
    });
}

TEST(ReadSdpFormat, MalformedAttributes)
{
    for (const char* line : {"a=rtpmap:96", "a=rtpmap:96 ", "a=rtpmap:", "a=rtpmap:96 /90000"}) {
        const SdpReading reading =
            read_sdp(sdp_text(edited(one_path, {{8, {line}}})), video_receiver);
        EXPECT_FALSE(reading.taken()) << line;
        EXPECT_TRUE(reading.findings.has(attribute)) << line;
    }
    for (const char* line : {"a=rtpmap:96 raw", "a=rtpmap:96 raw/"})
        expect_reading({line, edited(one_path, {{8, {line}}}), {}, {{clock_rate, 8}}});
    expect_readings({
        {"a second rtpmap",
         edited(one_path, {{8, {one_path[7], "a=rtpmap:96 jxsv/90000"}}}),
         {},
         {{attribute, 9}}},
        {"the same rtpmap again",
         edited(one_path, {{8, {one_path[7], one_path[7]}}}),
         {},
         {{attribute, 9}}},
        {"an rtpmap of no payload type",
         edited(one_path, {{8, {one_path[7], "a=rtpmap:x raw/90000"}}}),
         {},
         {{unknown_payload_type, 9}}},
        // It is clear what is meant.
        {"a blank in front of the payload type",
         edited(one_path, {{9, {"a=fmtp: 96 " + hd_interlaced}}}),
         {alone, off}},
    });
}

// Otherwise nobody would be told that the filter does not count.
TEST(ReadSdpFormat, NamesOfAttributesAreExact)
{
    for (const char* name : {" source-filter", "source-filter ", "Source-Filter", " rtpmap", "FMTP",
                             "mid ", " Group", "ssrc-Group"}) {
        const std::string line = std::string("a=") + name + ": incl IN IP4 233.252.0.1 203.0.113.1";
        expect_reading({line, edited(one_path, {{7, {line}}}), {}, {{attribute, 7}}});
    }
    for (const char* line : {"a=recvonly ", "a=Rtpmaps:96 x", "a= note:source-filter"})
        expect_reading({line, edited(one_path, {{7, {line}}}), {"5: 233.252.0.1:5004", off}});
}

// A file with a payload type again and again must not be the work of minutes.
TEST(ReadSdpFormat, APayloadTypeThatIsNamedOftenIsExaminedOnce)
{
    constexpr int many = 300'000;
    std::string text = "m=video 5004 RTP/AVP";
    for (int i = 0; i < many; ++i)
        text += " 96";
    text += "\na=rtpmap:96 raw/90000\na=fmtp:96 ";
    for (int i = 0; i < many; ++i)
        text += "x;";
    SdpFindings findings;
    const SdpDescription description = parse_sdp_description(text, findings);
    ASSERT_EQ(description.media.size(), 1U);
    const RtpFormat format = format_for(description.media.front(), {"video/SMPTE2022-6"});
    EXPECT_EQ(format.fit, Fit::no);
    EXPECT_EQ(format.payload_type, "96");
    EXPECT_EQ(format.encoding, "raw");
}

TEST(ReadSdpFormat, AttributesOfAMediumInFrontOfTheMedia)
{
    expect_readings({
        {"rtpmap",
         edited(one_path, {{4, {"t=0 0", "a=rtpmap:96 jxsv/90000"}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off},
         {{wrong_level, 5}}},
        {"fmtp",
         edited(one_path, {{4, {"t=0 0", "a=fmtp:96 width=5; height=5;"}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off},
         {{wrong_level, 5}}},
        {"mid",
         edited(two_paths, {{4, {"t=0 0", "a=mid:one"}}}),
         {"7: 233.252.0.1:5004 from 203.0.113.1", "13: 233.252.0.2:5006 from 203.0.113.2"},
         {{wrong_level, 5}}},
    });
}

TEST(ReadSdpFormat, ClockRates)
{
    const Lines ancillary = edited(one_path, {{8, {"a=rtpmap:96 smpte291/48000"}}, {9, {}}});
    const Lines st2022_6 = edited(one_path, {{8, {"a=rtpmap:96 SMPTE2022-6/90000"}}, {9, {}}});
    expect_readings({
        {"video", edited(one_path, {{8, {"a=rtpmap:96 raw/48000"}}}), {}, {{clock_rate, 8}}},
        {"audio at 96 kHz", audio_of("L24/96000/2"), {}, {{clock_rate, 7}}, audio_receiver},
        {"audio at 44.1 kHz", audio_of("L24/44100/2"), {}, {{clock_rate, 7}}, audio_receiver},
        {"ancillary data", ancillary, {}, {{clock_rate, 8}}, ancillary_receiver},
        {"SMPTE ST 2022-6", st2022_6, {}, {{clock_rate, 8}}, st2022_6_receiver},
        {"no number", audio_of("L24/x/2"), {}, {{clock_rate, 7}}, audio_receiver},
    });
}

TEST(ReadSdpFormat, Channels)
{
    expect_readings({
        {"one", audio_of("L24/48000"), {sound, off}, {}, audio_receiver},
        {"64", audio_of("L24/48000/64"), {sound, off}, {}, audio_receiver},
        {"65", audio_of("L24/48000/65"), {}, {{channels, 7}}, audio_receiver},
        {"0", audio_of("L24/48000/0"), {}, {{channels, 7}}, audio_receiver},
        {"no number", audio_of("L24/48000/stereo"), {}, {{channels, 7}}, audio_receiver},
    });
}

TEST(ReadSdpFormat, ValuesThatAreTaken)
{
    expect_readings({
        {"1080p59.94",
         with_format({{"interlace; exactframerate=25", "exactframerate=60000/1001"}}),
         {alone, off}},
        {"720p50",
         with_format({{"1920", "1280"},
                      {"1080", "720"},
                      {"interlace; exactframerate=25", "exactframerate=50"}}),
         {alone, off}},
        {"2160p60",
         with_format({{"1920", "3840"},
                      {"1080", "2160"},
                      {"interlace; exactframerate=25", "exactframerate=60"}}),
         {alone, off}},
        {"HLG, BT2020", with_format({{"SDR", "HLG"}, {"BT709", "BT2020"}}), {alone, off}},
        {"block packing, wide sender",
         with_format({{"2110GPM", "2110BPM"}, {"2110TPN", "2110TPW"}}),
         {alone, off}},
        {"no semicolon at the end", with_format({{"TP=2110TPN; ", "TP=2110TPN"}}), {alone, off}},
        {"no blanks", with_format({{"; ", ";"}}), {alone, off}},
        {"parameters that nobody checks",
         with_format({{"TP=2110TPN; ", "TP=2110TPN; PAR=12:11; RANGE=FULL; CMAX=5; IPMX"}}),
         {alone, off}},
    });
}

TEST(ReadSdpFormat, ValuesThatAreNotSupported)
{
    const struct
    {
        Change change;
        SdpCode code;
    } rows[] = {
        {{"YCbCr-4:2:2", "YCbCr-4:4:4"}, sampling},
        {{"depth=10", "depth=12"}, sampling},
        {{"width=1920; height=1080", "width=720; height=486"}, size},
        {{"width=1920; height=1080", "width=3840; height=2160"}, size}, // interlaced
        {{"interlace; exactframerate=25", "exactframerate=25"}, frame_rate},
        {{"exactframerate=25", "exactframerate=50"}, frame_rate}, // fields
        {{"exactframerate=25", "exactframerate=24"}, frame_rate},
        {{"exactframerate=25", "exactframerate=25/1"}, frame_rate},
        {{"TCS=SDR", "TCS=LINEAR"}, transfer_characteristic},
        {{"BT709", "BT601"}, colorimetry},
        {{"PM=2110GPM", "PM=2110XPM"}, packing_mode},
        {{"SSN=ST2110-20:2017", "SSN=ST2110-20:2022"}, standard},
        {{"TP=2110TPN", "TP=2110TPNX"}, traffic_profile},
        // quotation marks, and blanks behind a value
        {{"SSN=ST2110-20:2017", "SSN=\"ST2110-20:2017\""}, standard},
        {{"TCS=SDR", "TCS=\"SDR\""}, transfer_characteristic},
        {{"sampling=YCbCr-4:2:2;", "sampling=YCbCr-4:2:2 ;"}, sampling},
        {{"sampling=YCbCr-4:2:2;", "sampling= YCbCr-4:2:2;"}, sampling},
        {{"height=1080", "height=1080 "}, size},
        {{"exactframerate=25", "exactframerate=25 "}, frame_rate},
        {{"TP=2110TPN; ", "TP=2110TPN "}, traffic_profile},
        {{"TCS=SDR", "TCS=SDR\t"}, transfer_characteristic},
    };
    for (const auto& row : rows)
        expect_reading({row.change.to, with_format({row.change}), {}, {{row.code, 9}}});
}

TEST(ReadSdpFormat, EveryUnsupportedValueIsFound)
{
    expect_reading({"",
                    with_format({{"depth=10", "depth=8"},
                                 {"TCS=SDR", "TCS=ST428-1"},
                                 {"exactframerate=25", "exactframerate=24000/1001"}}),
                    {},
                    {{sampling, 9}, {frame_rate, 9}, {transfer_characteristic, 9}}});
    expect_reading(
        {"in both media",
         edited(with_other_format({{"TCS=SDR", "TCS=LINEAR"}}),
                {{10, {"a=fmtp:96 " + varied(hd_interlaced, {{"BT709", "BT601"}})}}}),
         {},
         {{colorimetry, 10}, {transfer_characteristic, 16}, {legs_differ, 16}, {legs_differ, 16}}});
}

TEST(ReadSdpFormat, SwitchingBetween2KAnd4K)
{
    const Lines uhd = with_format({{"1920", "3840"},
                                   {"1080", "2160"},
                                   {"interlace; exactframerate=25", "exactframerate=60"}});
    SdpReceiver receiver = video_receiver;
    receiver.switch_capable = false;
    expect_readings({
        {"it cannot", uhd, {}, {{format_switch, 9}}, receiver},
        {"it need not", one_path, {alone, off}, {}, receiver},
    });
    receiver.switch_capable = true;
    receiver.switch_allowed = false;
    expect_reading({"it may not", uhd, {}, {{format_switch, 9}}, receiver});
    receiver.switch_allowed = true;
    receiver.current_format = current_format_2k;
    expect_reading({"it stays at 2K", uhd, {}, {{format_switch, 9}}, receiver});
    receiver.current_format = current_format_4k;
    expect_reading({"it is at 4K", uhd, {alone, off}, {}, receiver});
}

TEST(ReadSdpFormat, NothingSaidAboutThePicture)
{
    expect_reading({"", edited(one_path, {{9, {}}}), {alone, off}, {{no_format, 5}}});
}

// A receiver of SMPTE ST 2022-6 takes what other makers write, and what this instrument writes.
TEST(ReadSdpFormat, Carriage)
{
    const Lines others = edited(
        one_path, {{8, {"a=rtpmap:96 SMPTE2022-6/27000000"}}, {9, {"a=fmtp:96 TP=2110TPW;"}}});
    const Lines own = with_format({{"PM=2110GPM", "PM=2022-6"}});
    expect_readings({
        {"of another maker", others, {alone, off}, {}, st2022_6_receiver},
        {"of another maker, without format",
         edited(others, {{9, {}}}),
         {alone, off},
         {},
         st2022_6_receiver},
        {"encoding in other letters",
         edited(others, {{8, {"a=rtpmap:96 smpte2022-6/27000000"}}}),
         {alone, off},
         {},
         st2022_6_receiver},
        {"as this instrument writes it", own, {alone, off}, {}, st2022_6_receiver},
        {"SMPTE ST 2110 for ST 2022-6", one_path, {}, {{no_medium, 0}}, st2022_6_receiver},
        {"ST 2022-6 for SMPTE ST 2110", others, {}, {{no_medium, 0}}},
        {"the same, as this instrument writes it", own, {alone, off}, {{carriage, 9}}},
    });
}

TEST(ReadSdpFormat, OwnFilesInEachCarriage)
{
    const Lines paths = edited(
        two_paths, {{10, {"a=fmtp:96 " + varied(hd_interlaced, {{"PM=2110GPM", "PM=2022-6"}})}},
                    {16, {"a=fmtp:96 " + varied(hd_interlaced, {{"PM=2110GPM", "PM=2022-6"}})}}});
    expect_reading({"", paths, {path_1, path_2}, {}, st2022_6_receiver});
}

// The library's parser finds its keys anywhere in a line.
TEST(ReadSdpFormat, FormatsThatHoldOtherLines)
{
    for (const char* parameter :
         {"x=c=IN IP4 233.252.0.9/1", "c=IN IP4 233.252.0.9", "m=video 6000 RTP/AVP 96",
          "x=a=source-filter: incl IN IP4 233.252.0.9 203.0.113.9", "o=- 1 1 IN IP4 203.0.113.9",
          "source-filter:incl IN IP4 233.252.0.9 203.0.113.9"})
        expect_reading({parameter,
                        with_format({{"TP=2110TPN; ", "TP=2110TPN; " + std::string(parameter)}}),
                        {},
                        {{misleading, 9}}});
}

// SMPTE ST 2022-7: both paths carry the same packets.

TEST(ReadSdpFormat, LegsThatDiffer)
{
    const struct
    {
        std::string name;
        Change change;
        std::size_t parameters = 1; ///< of which each is a finding
    } rows[] = {
        {"width and height", {"width=1920; height=1080", "width=1280; height=720"}, 2},
        {"frame rate", {"exactframerate=25", "exactframerate=30000/1001"}},
        {"scan", {"interlace; exactframerate=25", "exactframerate=50"}, 2},
        {"colorimetry", {"BT709", "BT2020"}},
        {"transfer characteristic", {"TCS=SDR", "TCS=PQ"}},
        {"packing mode", {"2110GPM", "2110BPM"}},
        {"one says nothing of it", {"colorimetry=BT709; ", ""}},
    };
    for (const auto& row : rows)
        expect_reading({row.name,
                        with_other_format({row.change}),
                        {},
                        std::vector<Mark>(row.parameters, {legs_differ, 16})});

    const Lines sounds = {"v=0",
                          "o=- 1 1 IN IP4 203.0.113.9",
                          "s=stage box",
                          "t=0 0",
                          "a=group:DUP one two",
                          "m=audio 5004 RTP/AVP 97",
                          "c=IN IP4 233.252.0.1/64",
                          "a=rtpmap:97 L24/48000/2",
                          "a=mid:one",
                          "m=audio 5006 RTP/AVP 97",
                          "c=IN IP4 233.252.0.2/64",
                          "a=rtpmap:97 L24/48000/2",
                          "a=mid:two"};
    const Lines own_and_others = edited(
        two_paths, {{10, {"a=fmtp:96 " + varied(hd_interlaced, {{"PM=2110GPM", "PM=2022-6"}})}},
                    {15, {"a=rtpmap:96 SMPTE2022-6/27000000"}},
                    {16, {}}});
    expect_readings({
        {"audio", sounds, {"6: 233.252.0.1:5004", "10: 233.252.0.2:5006"}, {}, audio_receiver},
        {"channels",
         edited(sounds, {{12, {"a=rtpmap:97 L24/48000/8"}}}),
         {},
         {{legs_differ, 12}},
         audio_receiver},
        {"encoding and clock rate",
         own_and_others,
         {},
         {{legs_differ, 15}, {legs_differ, 15}},
         st2022_6_receiver},
    });
}

TEST(ReadSdpFormat, LegsThatAreDescribedDifferently)
{
    const Lines legs = {path_1, path_2};
    expect_readings({
        {"payload types",
         edited(two_paths, {{12, {"m=video 5006 RTP/AVP 98"}},
                            {15, {"a=rtpmap:98 raw/90000"}},
                            {16, {"a=fmtp:98 " + hd_interlaced}}}),
         legs,
         {{legs_differ_slightly, 12}}},
        {"traffic profile",
         with_other_format({{"2110TPN", "2110TPW"}}),
         legs,
         {{legs_differ_slightly, 16}}},
        {"a parameter that nobody checks",
         with_other_format({{"TP=2110TPN; ", "TP=2110TPN; TROFF=764436"}}),
         legs,
         {{legs_differ_slightly, 16}}},
        {"order of the parameters",
         with_other_format({{"TCS=SDR; ", ""}, {"TP=2110TPN; ", "TP=2110TPN; TCS=SDR"}}), legs},
        {"blanks between the parameters", with_other_format({{"; ", ";"}}), legs},
        {"letters of the encoding", edited(two_paths, {{15, {"a=rtpmap:96 RAW/90000"}}}), legs},
        {"order of the lines", edited(two_paths, {{15, {two_paths[15]}}, {16, {two_paths[14]}}}),
         legs},
    });
}

} // namespace
} // namespace nmos_instrument::host

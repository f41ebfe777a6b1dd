// SPDX-License-Identifier: Apache-2.0
//
// Which legs a receiver makes of an SDP file: the file's lines, its media, groups, addresses and
// sources.

#include "sdp/read_sdp.h"

#include <gtest/gtest.h>

#include "sdp_test_files.h"

namespace nmos_instrument::host {
namespace {

using enum SdpCode;

const std::string any_source = "5: 233.252.0.1:5004";

const std::string group_line_1 = "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1";
const std::string group_line_2 = "a=source-filter: incl IN IP4 233.252.0.2 203.0.113.2";
const std::string raw = "a=rtpmap:96 raw/90000";
const std::string format = "a=fmtp:96 " + hd_interlaced;

Lines joined(std::initializer_list<Lines> parts)
{
    Lines lines;
    for (const Lines& part : parts)
        lines.insert(lines.end(), part.begin(), part.end());
    return lines;
}

/// Six lines.
Lines video_medium(const std::string& port, const std::string& group, const std::string& source,
                   const std::string& mid)
{
    return {"m=video " + port + " RTP/AVP 96",
            "c=IN IP4 " + group + "/64",
            "a=source-filter: incl IN IP4 " + group + " " + source,
            raw,
            format,
            "a=mid:" + mid};
}

const Lines session = {"v=0", "o=- 1 1 IN IP4 203.0.113.9", "s=camera", "t=0 0"};
const Lines medium_1 = video_medium("5004", "233.252.0.1", "203.0.113.1", "one");
const Lines medium_2 = video_medium("5006", "233.252.0.2", "203.0.113.2", "two");
const Lines medium_3 = video_medium("5008", "233.252.0.3", "203.0.113.3", "three");
const Lines medium_4 = video_medium("5010", "233.252.0.4", "203.0.113.4", "four");
const Lines audio_medium = {"m=audio 5020 RTP/AVP 97", "c=IN IP4 233.252.0.21/64",
                            "a=rtpmap:97 L24/48000/2", "a=mid:sound"};
const Lines ancillary_medium = {"m=video 5030 RTP/AVP 100", "c=IN IP4 233.252.0.31/64",
                                "a=rtpmap:100 smpte291/90000", "a=mid:data"};

Lines without_mid(Lines medium)
{
    medium.pop_back();
    return medium;
}

Lines with_port_zero(Lines medium)
{
    return edited(medium, {{1, {"m=video 0 RTP/AVP 96"}}});
}

TEST(ReadSdp, OnePathAndTwo)
{
    expect_readings({
        {"one path", one_path, {alone, off}},
        {"two paths", two_paths, {path_1, path_2}},
        {"no source filter", edited(one_path, {{7, {}}}), {any_source, off}},
        {"audio", audio_path, {any_source, off}, {}, audio_receiver},
        {"ancillary data",
         joined({session,
                 {"m=video 5004 RTP/AVP 100", "c=IN IP4 233.252.0.1/64",
                  "a=rtpmap:100 smpte291/90000", "a=fmtp:100 VPID_Code=132"}}),
         {any_source, off},
         {},
         ancillary_receiver},
    });
}

TEST(ReadSdp, TellsWhoWroteTheFileAndItsFormat)
{
    const SdpReading reading = read_sdp(sdp_text(one_path), video_receiver);
    EXPECT_EQ(reading.origin, "- 1 1 IN IP4 203.0.113.9");
    EXPECT_EQ(reading.format.sampling, "YCbCr-4:2:2");
    EXPECT_EQ(reading.format.width, "1920");
    EXPECT_EQ(reading.format.height, "1080");
    EXPECT_EQ(reading.format.exactframerate, "25");
    EXPECT_EQ(reading.format.rate_interlaced, 1);
    EXPECT_EQ(reading.format.colorimetry, "BT709");
    EXPECT_EQ(reading.format.tcs, "SDR");
    EXPECT_EQ(reading.format.packing_mode, "2110GPM");
}

// RFC 4566 5: how lines end, and which ones there are

TEST(ReadSdp, LineBreaksOfAnyKind)
{
    for (const char* line_break : {"\r\n", "\n", "\r", "\n\r"}) {
        const SdpReading reading = read_sdp(sdp_text(two_paths, line_break), video_receiver);
        EXPECT_EQ(legs_of(reading), (Lines{path_1, path_2}));
        EXPECT_TRUE(reading.findings.shown().empty());
    }
    std::string unfinished = sdp_text(edited(one_path, {{7, {}}, {8, {raw, format}}, {9, {}}}));
    unfinished += group_line_1;
    EXPECT_EQ(legs_of(read_sdp(unfinished, video_receiver)), (Lines{alone, off}));
}

TEST(ReadSdp, Lines)
{
    expect_readings({
        {"nothing", {}, {}, {{empty, 0}}},
        {"empty lines alone", {"", ""}, {}, {{empty, 0}}},
        {"no medium", session, {}, {{no_medium, 0}}},
        {"an empty line",
         edited(one_path, {{5, {"", one_path[4]}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off},
         {{empty_line, 5}}},
        {"several are named once",
         edited(one_path, {{5, {"", one_path[4]}}, {8, {"", raw}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off},
         {{empty_line, 5}}},
        {"empty lines at the end", joined({one_path, {"", "", ""}}), {alone, off}},
        {"no version",
         edited(one_path, {{1, {}}}),
         {"4: 233.252.0.1:5004 from 203.0.113.1", off},
         {{no_version, 1}}},
        {"another version", edited(one_path, {{1, {"v=1"}}}), {}, {{other_version, 1}}},
        {"no line but a word", edited(one_path, {{3, {"camera"}}}), {}, {{not_a_line, 3}}},
        {"a blank in front",
         edited(one_path, {{6, {" c=IN IP4 233.252.0.1/64"}}}),
         {},
         {{not_a_line, 6}, {no_connection, 5}}},
        {"a blank before the equals sign",
         edited(one_path, {{3, {"s =camera"}}}),
         {},
         {{not_a_line, 3}}},
        {"a letter that RFC 4566 does not have",
         edited(one_path, {{3, {"x=camera"}}}),
         {},
         {{not_a_line, 3}}},
        {"a capital letter", edited(one_path, {{3, {"S=camera"}}}), {}, {{not_a_line, 3}}},
        {"all letters that it has",
         edited(
             one_path,
             {{3,
               {"s=camera", "i=in the hall", "u=http://camera.example.com/",
                "e=j.doe@example.com (Jane Doe)", "p=+1 617 555-6011", "b=AS:1219336"}},
              {4,
               {"t=0 0", "r=604800 3600 0 90000", "z=2882844526 -1h", "k=prompt", "a=recvonly"}}}),
         {"14: 233.252.0.1:5004 from 203.0.113.1", off}},
    });
}

TEST(ReadSdp, BytesThatAreNoText)
{
    const std::string file = sdp_text(one_path);
    const auto first_finding = [](const std::string& sdp) {
        const SdpReading reading = read_sdp(sdp, video_receiver);
        EXPECT_FALSE(reading.taken());
        return reading.findings.shown().empty() ? SdpFinding() : reading.findings.shown().front();
    };
    EXPECT_EQ(first_finding(file + '\0').code, not_text);

    std::string utf_16;
    for (const char letter : file)
        utf_16.append({letter, '\0'});
    const SdpFinding finding = first_finding(utf_16);
    EXPECT_EQ(finding.code, not_text);
    EXPECT_NE(finding.found.find("UTF-16"), std::string::npos) << finding.found;

    const std::string latin_1 = sdp_text(edited(one_path, {{3, {"s=cam\xE9ra"}}}));
    EXPECT_EQ(first_finding(latin_1).code, not_utf8);
    EXPECT_EQ(first_finding(latin_1).line, 3U);
    expect_reading({"UTF-8", edited(one_path, {{3, {"s=cam\xC3\xA9ra"}}}), {alone, off}});
    expect_reading(
        {"a byte order mark", edited(one_path, {{1, {"\xEF\xBB\xBFv=0"}}}), {}, {{not_a_line, 1}}});
}

TEST(ReadSdp, TheStateHasRoomFor4095Bytes)
{
    std::string file = sdp_text(one_path) + "a=";
    file.append(4095 - file.size(), 'x');
    EXPECT_EQ(legs_of(read_sdp(file, video_receiver)), (Lines{alone, off}));
    const SdpReading longer = read_sdp(file + 'x', video_receiver);
    EXPECT_FALSE(longer.taken());
    EXPECT_TRUE(longer.findings.has(too_large));

    // One that is not so large that nobody looks at it is examined like others.
    std::string large = sdp_text(one_path) + "?\na=" + std::string(64000, 'x');
    EXPECT_TRUE(read_sdp(large, video_receiver).findings.has(not_a_line));
    large.append(4 << 20, 'x');
    const SdpReading none = read_sdp(large, video_receiver);
    ASSERT_EQ(none.findings.shown().size(), 1U);
    EXPECT_EQ(none.findings.shown()[0].code, too_large);
}

TEST(ReadSdp, MediaLines)
{
    for (const char* line :
         {"m=video", "m=video 5004", "m=video 5004 RTP/AVP", "m=video 5004 RTP/AVP ",
          "m=video port RTP/AVP 96", "m=video -1 RTP/AVP 96", "m=video 65536 RTP/AVP 96",
          "m=video 0x1388 RTP/AVP 96", "m=video 99999999999999999999 RTP/AVP 96",
          "m=video 5004/0 RTP/AVP 96", "m=video 5004/x RTP/AVP 96", "m="})
        expect_reading({line, edited(one_path, {{5, {line}}}), {}, {{media_line, 5}}});
    expect_reading({"the largest port",
                    edited(one_path, {{5, {"m=video 65535 RTP/AVP 96"}}}),
                    {"5: 233.252.0.1:65535 from 203.0.113.1", off}});
}

// Comments are for people.
TEST(ReadSdp, CommentsSayNothingAboutTheLegs)
{
    expect_readings({
        {"an address in a name",
         edited(one_path, {{3,
                            {"s=c=IN IP4 233.252.0.9/64", "i=m=video 6000 RTP/AVP 96",
                             "u=http://example.com/a=mid:one"}}}),
         {"7: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"an unknown attribute",
         edited(one_path, {{4, {"t=0 0", "a=x-note:c=IN IP4 233.252.0.9/64"}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"a medium's title",
         edited(two_paths, {{6, {two_paths[5], "i=a=group:DUP two one m=video 0 RTP/AVP 1"}}}),
         {path_1, "13: 233.252.0.2:5006 from 203.0.113.2"}},
    });
}

// RFC 4566 5.2: a host name is as good as an address, and says nothing about the path.
TEST(ReadSdp, TheOriginIsNoSource)
{
    for (const char* origin :
         {"o=- 1 1 IN IP4 camera.example.com", "o=- 1 1 IN IP4 203.0.113.300",
          "o=- 1 1 IN IP6 2001:db8::1", "o=- 1524820997 IN IP4 sender.example.com", "o="})
        expect_reading({origin, edited(one_path, {{2, {origin}}, {7, {}}}), {any_source, off}});
    expect_reading(
        {"none", edited(one_path, {{2, {}}}), {"4: 233.252.0.1:5004 from 203.0.113.1", off}});
}

// a=mid: may stand anywhere in its medium (RFC 4566 5: attributes have no order).

TEST(ReadSdp, MidBehindM)
{
    expect_readings({
        {"both",
         edited(two_paths, {{6, {two_paths[5], "a=mid:one"}},
                            {11, {}},
                            {12, {two_paths[11], "a=mid:two"}},
                            {17, {}}}),
         {path_1, path_2}},
        {"without a filter in the second medium",
         edited(two_paths, {{6, {two_paths[5], "a=mid:one"}},
                            {11, {}},
                            {12, {two_paths[11], "a=mid:two"}},
                            {14, {}},
                            {17, {}}}),
         {path_1, "12: 233.252.0.2:5006"}},
        {"without a filter in the first medium",
         edited(two_paths, {{6, {two_paths[5], "a=mid:one"}}, {8, {}}, {11, {}}}),
         {"6: 233.252.0.1:5004", "11: 233.252.0.2:5006 from 203.0.113.2"}},
    });
}

TEST(ReadSdp, MidBetweenConnectionAndFilter)
{
    expect_reading({"",
                    edited(two_paths, {{7, {two_paths[6], "a=mid:one"}},
                                       {11, {}},
                                       {13, {two_paths[12], "a=mid:two"}},
                                       {17, {}}}),
                    {path_1, path_2}});
}

TEST(ReadSdp, MidThatHoldsTheNameOfTheOther)
{
    expect_reading({"",
                    edited(two_paths, {{5, {"a=group:DUP video-1 video-12"}},
                                       {11, {"a=mid:video-1"}},
                                       {17, {"a=mid:video-12"}}}),
                    {path_1, path_2}});
}

// RFC 5888, RFC 7104

TEST(ReadSdp, DupGroups)
{
    const Lines audio_first = {"a=group:DUP sound sound2", "a=group:DUP one two"};
    const Lines second_sound = edited(audio_medium, {{4, {"a=mid:sound2"}}});
    expect_readings({
        {"the names in the other order: the legs follow the file",
         edited(two_paths, {{5, {"a=group:DUP two one"}}}),
         {path_1, path_2}},
        {"a group of audio first",
         joined({session, audio_first, audio_medium, second_sound, medium_1, medium_2}),
         {"15: 233.252.0.1:5004 from 203.0.113.1", "21: 233.252.0.2:5006 from 203.0.113.2"}},
        {"two pairs: the first",
         joined({session,
                 {"a=group:DUP one two", "a=group:DUP three four"},
                 medium_1,
                 medium_2,
                 medium_3,
                 medium_4}),
         {"7: 233.252.0.1:5004 from 203.0.113.1", "13: 233.252.0.2:5006 from 203.0.113.2"},
         {{several_pairs, 6}, {media_beside_pair, 19}, {media_beside_pair, 25}}},
        {"two pairs, the media of the first group last",
         joined({session,
                 {"a=group:DUP one two", "a=group:DUP three four"},
                 medium_3,
                 medium_4,
                 medium_1,
                 medium_2}),
         {"19: 233.252.0.1:5004 from 203.0.113.1", "25: 233.252.0.2:5006 from 203.0.113.2"},
         {{several_pairs, 6}, {media_beside_pair, 7}, {media_beside_pair, 13}}},
        {"two pairs between each other",
         joined({session,
                 {"a=group:DUP one two", "a=group:DUP three four"},
                 medium_1,
                 medium_3,
                 medium_2,
                 medium_4}),
         {"7: 233.252.0.1:5004 from 203.0.113.1", "19: 233.252.0.2:5006 from 203.0.113.2"},
         {{several_pairs, 6}, {media_beside_pair, 13}, {media_beside_pair, 25}}},
        {"more than two names",
         joined({session, {"a=group:DUP one two three"}, medium_1, medium_2, medium_3}),
         {path_1, path_2},
         {{more_than_two, 5}, {media_beside_pair, 18}}},
        {"more than two names in another order: the first two",
         joined({session, {"a=group:DUP three one two"}, medium_1, medium_2, medium_3}),
         {path_1, "18: 233.252.0.3:5008 from 203.0.113.3"},
         {{more_than_two, 5}, {media_beside_pair, 12}}},
        {"another medium beside the pair",
         joined({session, {"a=group:DUP one two"}, medium_3, medium_1, medium_2}),
         {"12: 233.252.0.1:5004 from 203.0.113.1", "18: 233.252.0.2:5006 from 203.0.113.2"},
         {{media_beside_pair, 6}}},
        {"audio and ancillary data beside the pair",
         joined({session,
                 {"a=group:DUP one two"},
                 audio_medium,
                 medium_1,
                 ancillary_medium,
                 medium_2}),
         {"10: 233.252.0.1:5004 from 203.0.113.1", "20: 233.252.0.2:5006 from 203.0.113.2"}},
        {"a blank at the end",
         edited(two_paths, {{5, {"a=group:DUP one two "}}}),
         {path_1, path_2}},
        {"a pair of media that do not say what they are, beside one that does",
         joined({session,
                 {"a=group:DUP five six"},
                 {"m=video 5040 RTP/AVP 96", "c=IN IP4 233.252.0.41/64", "a=mid:five",
                  "m=video 5042 RTP/AVP 96", "c=IN IP4 233.252.0.42/64", "a=mid:six"},
                 medium_1}),
         {"12: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"a pair of video is nothing to audio",
         joined({session, {"a=group:DUP one two"}, medium_1, medium_2, audio_medium}),
         {"18: 233.252.0.21:5020", off},
         {},
         audio_receiver},
    });
}

TEST(ReadSdp, DupWithoutMid)
{
    const Lines group = {"a=group:DUP secondary primary"};
    const Lines bare_1 = without_mid(medium_1);
    const Lines bare_2 = without_mid(medium_2);
    const Lines bare_3 = without_mid(medium_3);
    expect_readings({
        {"two media",
         joined({session, group, bare_1, bare_2}),
         {path_1, "11: 233.252.0.2:5006 from 203.0.113.2"},
         {{dup_without_mid, 5}}},
        {"audio between",
         joined({session, group, bare_1, without_mid(audio_medium), bare_2}),
         {path_1, "14: 233.252.0.2:5006 from 203.0.113.2"},
         {{dup_without_mid, 5}}},
        {"three media", joined({session, group, bare_1, bare_2, bare_3}), {}, {{dup_pair, 5}}},
        {"one medium", joined({session, group, bare_1}), {}, {{dup_pair, 5}}},
        {"three names",
         joined({session, {"a=group:DUP a b c"}, bare_1, bare_2}),
         {},
         {{dup_pair, 5}}},
        {"one medium has a name", joined({session, group, medium_1, bare_2}), {}, {{dup_pair, 5}}},
        {"no medium that fits",
         joined({session, group, without_mid(audio_medium), without_mid(audio_medium)}),
         {},
         {{no_medium, 0}}},
    });
}

TEST(ReadSdp, DupThatIsNoPair)
{
    expect_readings({
        {"a name that no medium has",
         edited(two_paths, {{17, {"a=mid:three"}}}),
         {},
         {{dup_pair, 5}}},
        {"names that no medium has",
         edited(two_paths, {{5, {"a=group:DUP three four"}}}),
         {},
         {{dup_pair, 5}}},
        {"the name of the only medium and another",
         joined({session, {"a=group:DUP one two"}, medium_1}),
         {},
         {{dup_pair, 5}}},
        {"names are compared as they are",
         edited(two_paths, {{17, {"a=mid:TWO"}}}),
         {},
         {{dup_pair, 5}}},
        {"the same name twice",
         edited(two_paths, {{5, {"a=group:DUP one one"}}}),
         {},
         {{dup_pair, 5}}},
        {"video and audio",
         joined({session, {"a=group:DUP one sound"}, medium_1, audio_medium}),
         {},
         {{dup_pair, 12}}},
        {"video and compressed video",
         edited(two_paths, {{15, {"a=rtpmap:96 jxsv/90000"}}}),
         {},
         {{dup_pair, 12}}},
        {"one name",
         edited(two_paths, {{5, {"a=group:DUP one"}}}),
         {},
         {{group_line, 5}, {several_media, 12}}},
        {"no name",
         edited(two_paths, {{5, {"a=group:DUP"}}}),
         {},
         {{group_line, 5}, {several_media, 12}}},
        {"the same name for both media",
         edited(two_paths, {{17, {"a=mid:one"}}}),
         {},
         {{dup_pair, 5}, {repeated_mid, 17}}},
    });
}

// What the group promises is not forgotten when another medium says better what it is.
TEST(ReadSdp, DupThatIsNoPairAndNamesAMediumWithoutRtpmap)
{
    expect_readings({
        {"a name that no medium has",
         edited(two_paths, {{9, {}}, {17, {"a=mid:three"}}}),
         {},
         {{dup_pair, 5}}},
        {"the second name is gone", edited(two_paths, {{9, {}}, {17, {}}}), {}, {{dup_pair, 5}}},
        {"both names for one medium",
         edited(two_paths, {{9, {"a=mid:two"}}, {17, {}}}),
         {},
         {{dup_pair, 5}}},
        {"a medium of another kind is no leg of ours",
         joined({session, {"a=group:DUP sound three"}, audio_medium, without_mid(medium_1)}),
         {"10: 233.252.0.1:5004 from 203.0.113.1", off}},
    });
}

// RFC 4566 6
TEST(ReadSdp, AnInactiveMediumIsTakenWithAWarning)
{
    expect_readings({
        {"inactive",
         edited(one_path, {{7, {group_line_1, "a=inactive"}}}),
         {alone, off},
         {{inactive, 8}}},
    });
}

// RFC 3264 5.1
TEST(ReadSdp, PortZeroIsNotSent)
{
    const Lines group = {"a=group:DUP one two"};
    const Lines off_1 = with_port_zero(medium_1);
    const Lines off_2 = with_port_zero(medium_2);
    expect_readings({
        {"second leg", joined({session, group, medium_1, off_2}), {path_1, off}, {{port_zero, 12}}},
        {"first leg", joined({session, group, off_1, medium_2}), {off, path_2}, {{port_zero, 6}}},
        {"both legs",
         joined({session, group, off_1, off_2}),
         {},
         {{no_medium, 0}, {port_zero, 6}, {port_zero, 12}}},
        {"the only medium", joined({session, off_1}), {}, {{no_medium, 0}}},
        {"another video medium",
         joined({session, off_1, medium_2}),
         {"11: 233.252.0.2:5006 from 203.0.113.2", off}},
        {"audio", joined({session, medium_1, {"m=audio 0 RTP/AVP 97"}}), {alone, off}},
        {"both legs of the first of two pairs",
         joined({session,
                 {"a=group:DUP one two", "a=group:DUP three four"},
                 off_1,
                 off_2,
                 medium_3,
                 medium_4}),
         {"19: 233.252.0.3:5008 from 203.0.113.3", "25: 233.252.0.4:5010 from 203.0.113.4"}},
        {"with a number of ports",
         joined({session, group, medium_1, edited(medium_2, {{1, {"m=video 0/2 RTP/AVP 96"}}})}),
         {path_1, off},
         {{port_zero, 12}}},
    });
}

TEST(ReadSdp, MediaWithoutDupGroup)
{
    const std::string alone_1 = "5: 233.252.0.1:5004 from 203.0.113.1";
    expect_readings({
        {"the only one that fits",
         joined({session, audio_medium, ancillary_medium, medium_1}),
         {"13: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"the audio of it",
         joined({session, medium_1, ancillary_medium, audio_medium}),
         {"15: 233.252.0.21:5020", off},
         {},
         audio_receiver},
        {"the ancillary data of it",
         joined({session, medium_1, audio_medium, ancillary_medium}),
         {"15: 233.252.0.31:5030", off},
         {},
         ancillary_receiver},
        {"two", joined({session, medium_1, medium_2}), {}, {{several_media, 11}}},
        {"a FID group",
         joined({session, {"a=group:FID one two"}, medium_1, medium_2}),
         {},
         {{several_media, 12}}},
        {"a group of video and sound that belong together",
         joined({session, {"a=group:LS one sound"}, medium_1, audio_medium}),
         {path_1, off}},
        {"four parts of a picture",
         joined({session,
                 {"a=group:MULTI-2SI one two three four"},
                 medium_1,
                 medium_2,
                 medium_3,
                 medium_4}),
         {},
         {{part_of_picture, 6}}},
        {"the only part that is sent",
         joined({session, {"a=group:MULTI-2SI one two"}, medium_1, with_port_zero(medium_2)}),
         {},
         {{part_of_picture, 6}}},
        {"two paths of a part",
         joined({session,
                 {"a=group:DUP one two", "a=group:MULTI-2SI one three"},
                 medium_1,
                 medium_2,
                 medium_3}),
         {},
         {{part_of_picture, 7}, {media_beside_pair, 19}}},
        {"a picture of one part",
         joined({session, {"a=group:MULTI-2SI one"}, medium_1}),
         {path_1, off}},
        {"the same mid twice",
         joined({session, medium_1, audio_medium, {"m=text 5040 RTP/AVP 98", "a=mid:one"}}),
         {},
         {{repeated_mid, 16}}},
        {"another medium is described wrongly",
         joined(
             {session,
              medium_1,
              {"m=audio 5020 RTP/AVP 97", "c=IN IPV4 233.252.0.21/64", "a=rtpmap:97 L24/48000/2"}}),
         {alone_1, off}},
    });
}

TEST(ReadSdp, WhatFitsTheReceiver)
{
    const Lines unnamed = edited(one_path, {{7, {}}, {8, {}}, {9, {}}});
    expect_readings({
        {"an encoding in other letters",
         edited(one_path, {{8, {"a=rtpmap:96 RAW/90000"}}}),
         {alone, off}},
        {"compressed video",
         edited(one_path, {{8, {"a=rtpmap:96 jxsv/90000"}}}),
         {},
         {{no_medium, 0}}},
        {"16 bit audio",
         edited(audio_path, {{7, {"a=rtpmap:97 L16/48000/2"}}}),
         {},
         {{no_medium, 0}},
         audio_receiver},
        {"audio for video", audio_path, {}, {{no_medium, 0}}},
        {"video for ancillary data", one_path, {}, {{no_medium, 0}}, ancillary_receiver},
        {"text", edited(one_path, {{5, {"m=text 5004 RTP/AVP 96"}}}), {}, {{no_medium, 0}}},
        {"encrypted", edited(one_path, {{5, {"m=video 5004 RTP/SAVP 96"}}}), {}, {{no_medium, 0}}},
        {"not RTP", edited(one_path, {{5, {"m=video 5004 udp 96"}}}), {}, {{no_medium, 0}}},
        {"no rtpmap", unnamed, {any_source, off}, {{no_rtpmap, 5}}},
        {"no rtpmap beside one that has it",
         joined({session, {"m=video 5040 RTP/AVP 96", "c=IN IP4 233.252.0.41/64"}, medium_1}),
         {"7: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"the second of two formats",
         edited(one_path,
                {{5, {"m=video 5004 RTP/AVP 97 96"}}, {8, {"a=rtpmap:97 jxsv/90000", raw}}}),
         {alone, off}},
    });
}

// RFC 4566 5.7

TEST(ReadSdp, ConnectionOfTheSession)
{
    const Lines both = edited(two_paths, {{4, {"c=IN IP4 233.252.0.1/64", "t=0 0"}},
                                          {7, {}},
                                          {13, {}},
                                          {14,
                                           {"a=source-filter: incl IN IP4 "
                                            "233.252.0.1 203.0.113.2"}}});
    expect_readings({
        {"one medium",
         edited(one_path, {{4, {"c=IN IP4 233.252.0.1/64", "t=0 0"}}, {6, {}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"behind the times",
         edited(one_path, {{4, {"t=0 0", "c=IN IP4 233.252.0.1/64"}}, {6, {}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"two media",
         both,
         {"7: 233.252.0.1:5004 from 203.0.113.1", "12: 233.252.0.1:5006 from 203.0.113.2"}},
        {"that of the medium counts more",
         edited(one_path, {{4, {"c=IN IP4 233.252.0.9/64", "t=0 0"}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"one medium has its own",
         edited(two_paths, {{4, {"c=IN IP4 233.252.0.1/64", "t=0 0"}}, {7, {}}}),
         {"7: 233.252.0.1:5004 from 203.0.113.1", "12: 233.252.0.2:5006 from 203.0.113.2"}},
    });
}

TEST(ReadSdp, ConnectionThatIsMissingOrMalformed)
{
    expect_readings({
        {"none", edited(one_path, {{6, {}}}), {}, {{no_connection, 5}}},
        {"none in the second medium", edited(two_paths, {{13, {}}}), {}, {{no_connection, 12}}},
        {"no address", edited(one_path, {{6, {"c=IN IP4"}}}), {}, {{connection_line, 6}}},
        {"nothing", edited(one_path, {{6, {"c="}}}), {}, {{connection_line, 6}}},
        {"an unknown kind of address",
         edited(one_path, {{6, {"c=IN IPV4 233.252.0.1/64"}}}),
         {},
         {{connection_line, 6}}},
        {"a TTL that is no number",
         edited(one_path, {{6, {"c=IN IP4 233.252.0.1/x"}}}),
         {},
         {{connection_line, 6}}},
        {"two",
         edited(one_path, {{6, {"c=IN IP4 233.252.0.1/64", "c=IN IP4 233.252.0.2/64"}}}),
         {},
         {{connection_line, 7}}},
        {"no TTL", edited(one_path, {{6, {"c=IN IP4 233.252.0.1"}}}), {alone, off}},
    });
}

TEST(ReadSdp, AddressesThatCannotBeUsed)
{
    for (const char* value : {"camera.example.com/64", "239.001.1.1/64", "0xef000001/64",
                              "4009754625/64", "233.252.1/64", "233.252.0.256/64",
                              "233.252.0.1.1/64", "0.0.0.0", "240.0.0.1", "255.255.255.255"}) {
        const std::string line = std::string("c=IN IP4 ") + value;
        expect_reading({line, edited(one_path, {{6, {line}}, {7, {}}}), {}, {{address, 6}}});
    }
    expect_reading(
        {"IPv6", edited(one_path, {{6, {"c=IN IP6 FF15::101/3"}}, {7, {}}}), {}, {{address, 6}}});
}

TEST(ReadSdp, Unicast)
{
    const Lines ours = edited(one_path, {{6, {"c=IN IP4 192.0.2.10"}}, {7, {}}});
    const Lines of_leg_2 = edited(one_path, {{6, {"c=IN IP4 198.51.100.10"}}, {7, {}}});
    const std::string leg_1 = "6: unicast 192.0.2.10:5004";
    expect_readings({
        {"ours", ours, {"5: unicast 192.0.2.10:5004", off}},
        {"from one source",
         edited(
             ours,
             {{6, {"c=IN IP4 192.0.2.10", "a=source-filter: incl IN IP4 192.0.2.10 203.0.113.1"}}}),
         {"5: unicast 192.0.2.10:5004 from 203.0.113.1", off}},
        {"that of the other leg", of_leg_2, {}, {{foreign_unicast, 6}}},
        {"of another host",
         edited(one_path, {{6, {"c=IN IP4 192.0.2.99"}}, {7, {}}}),
         {},
         {{foreign_unicast, 6}}},
        {"each leg its own",
         edited(
             two_paths,
             {{7, {"c=IN IP4 192.0.2.10"}}, {8, {}}, {13, {"c=IN IP4 198.51.100.10"}}, {14, {}}}),
         {leg_1, "11: unicast 198.51.100.10:5006"}},
        {"both that of the first leg",
         edited(two_paths,
                {{7, {"c=IN IP4 192.0.2.10"}}, {8, {}}, {13, {"c=IN IP4 192.0.2.10"}}, {14, {}}}),
         {},
         {{foreign_unicast, 12}}},
    });
    SdpReceiver anywhere = video_receiver;
    anywhere.interface_addresses = {};
    expect_reading({"a receiver at any address",
                    of_leg_2,
                    {"5: unicast 198.51.100.10:5004", off},
                    {},
                    anywhere});
}

TEST(ReadSdp, RangesOfAddressesAndPorts)
{
    expect_readings({
        {"addresses",
         edited(one_path, {{6, {"c=IN IP4 233.252.0.1/64/2"}}}),
         {alone, off},
         {{several_addresses, 6}}},
        {"one address", edited(one_path, {{6, {"c=IN IP4 233.252.0.1/64/1"}}}), {alone, off}},
        {"no address",
         edited(one_path, {{6, {"c=IN IP4 233.252.0.1/64/0"}}}),
         {},
         {{connection_line, 6}}},
        {"ports",
         edited(one_path, {{5, {"m=video 5004/2 RTP/AVP 96"}}}),
         {alone, off},
         {{several_addresses, 5}}},
        {"one port", edited(one_path, {{5, {"m=video 5004/1 RTP/AVP 96"}}}), {alone, off}},
    });
}

// RFC 4570

TEST(ReadSdp, FiltersOfTheSession)
{
    const Lines two_groups = edited(two_paths, {{8, {}}, {14, {}}});
    const std::string leg_1 = "7: 233.252.0.1:5004";
    const std::string leg_2 = "12: 233.252.0.2:5006";
    expect_readings({
        {"one medium",
         edited(one_path, {{4, {"t=0 0", group_line_1}}, {7, {}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"for every group of two media",
         edited(two_groups, {{4, {"t=0 0", "a=source-filter: incl IN IP4 * 203.0.113.1"}}}),
         {leg_1 + " from 203.0.113.1", leg_2 + " from 203.0.113.1"}},
        {"one for each group",
         edited(two_paths, {{4, {"t=0 0", group_line_1, group_line_2}}, {8, {}}, {14, {}}}),
         {"8: 233.252.0.1:5004 from 203.0.113.1", "13: 233.252.0.2:5006 from 203.0.113.2"}},
        {"for the group of the first medium alone",
         edited(two_groups, {{4, {"t=0 0", group_line_1}}}),
         {leg_1 + " from 203.0.113.1", leg_2}},
        {"that of the medium counts more",
         edited(one_path, {{4, {"t=0 0", "a=source-filter: incl IN IP4 * 203.0.113.9"}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", off}},
        {"with the connection of the session, for two media",
         edited(two_paths, {{4, {"c=IN IP4 233.252.0.1/64", "t=0 0", group_line_1}},
                            {7, {}},
                            {8, {}},
                            {13, {}},
                            {14, {}}}),
         {"8: 233.252.0.1:5004 from 203.0.113.1", "12: 233.252.0.1:5006 from 203.0.113.1"}},
    });
}

TEST(ReadSdp, FiltersInOtherForms)
{
    const auto filtered = [](const std::string& value) {
        return edited(one_path, {{7, {"a=source-filter:" + value}}});
    };
    expect_readings({
        {"no blank in front", filtered("incl IN IP4 233.252.0.1 203.0.113.1"), {alone, off}},
        {"for every group", filtered(" incl IN IP4 * 203.0.113.1"), {alone, off}},
        {"of IPv6 addresses", filtered(" incl IN IP6 * 2001:db8::1"), {any_source, off}},
        {"for another group",
         filtered(" incl IN IP4 233.252.0.9 203.0.113.1"),
         {any_source, off},
         {{other_destination, 7}}},
        {"sources that are not wanted",
         filtered(" excl IN IP4 233.252.0.1 203.0.113.1"),
         {any_source, off},
         {{excluded_sources, 7}}},
        {"the same filter twice",
         edited(one_path, {{7, {group_line_1, group_line_1}}}),
         {alone, off}},
        {"in front of the connection",
         edited(one_path, {{6, {group_line_1}}, {7, {"c=IN IP4 233.252.0.1/64"}}}),
         {alone, off}},
    });
    for (const char* value :
         {"", " incl", " incl IN IP4", " incl IN IP4 233.252.0.1", " incl IN IP4 233.252.0.1 ",
          " only IN IP4 233.252.0.1 203.0.113.1", " incl IN IP4 233.252.0.1 camera.example.com",
          " incl IN IP4 233.252.0.1 203.0.113.300", " incl IN IP4 233.252.0.1 0xCB007101",
          " incl IN IP4 233.252.0.1 203.000.113.1", " incl IN IP4 233.252.0.1 233.252.0.9",
          " incl IN IP4 233.252.0.1 0.0.0.0"})
        expect_reading(
            {std::string("source-filter:") + value, filtered(value), {}, {{source_filter, 7}}});
}

// RFC 7104 4.1: one group, a source on each path
TEST(ReadSdp, TwoSourcesOfOneGroup)
{
    const std::string both = "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1 203.0.113.2";
    const Lines two_sources_each =
        edited(two_paths, {{8, {both}}, {13, {"c=IN IP4 233.252.0.1/64"}}, {14, {both}}});
    const Lines legs = {alone, "5: 233.252.0.1:5004 from 203.0.113.2"};
    const Lines ssrc_group = {"a=ssrc:1000 cname:one@example.com",
                              "a=ssrc:1010 cname:one@example.com", "a=ssrc-group:DUP 1000 1010"};
    expect_readings({
        {"in one medium", edited(one_path, {{7, {both}}}), legs, {{two_sources, 7}}},
        {"in two lines",
         edited(one_path,
                {{7, {group_line_1, "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.2"}}}),
         legs,
         {{two_sources, 8}}},
        {"for the session",
         edited(one_path, {{4, {"t=0 0", both}}, {7, {}}}),
         {"6: 233.252.0.1:5004 from 203.0.113.1", "6: 233.252.0.1:5004 from 203.0.113.2"},
         {{two_sources, 5}}},
        {"which the file calls a DUP group", joined({edited(one_path, {{7, {both}}}), ssrc_group}),
         legs},
        {"in both media",
         two_sources_each,
         {path_1, "12: 233.252.0.1:5006 from 203.0.113.2"},
         {{two_sources, 8}}},
    });
}

// RFC 7104 4.3; IS-05 v1.0, "Behaviour - RTP Transport Type", Temporal Redundancy: both legs alike
TEST(ReadSdp, OneAfterTheOtherFromOneSource)
{
    const Lines twice = {"a=ssrc-group:DUP 1000 1010", "a=duplication-delay:50"};
    expect_readings({
        {"one medium", joined({one_path, twice}), {alone, alone}, {{same_path, 5}}},
        {"of any source",
         joined({edited(one_path, {{7, {}}}), twice}),
         {any_source, any_source},
         {{same_path, 5}}},
        {"a group of one", joined({one_path, {"a=ssrc-group:DUP 1000"}}), {alone, off}},
        {"another group", joined({one_path, {"a=ssrc-group:FID 1000 1010"}}), {alone, off}},
        {"to our own address",
         joined({edited(one_path, {{6, {"c=IN IP4 192.0.2.10"}}, {7, {}}}), twice}),
         {"5: unicast 192.0.2.10:5004", off}},
        {"in a pair", joined({two_paths, twice}), {path_1, path_2}},
    });
}

TEST(ReadSdp, MoreSourcesThanLegs)
{
    const std::string of_1 = "a=source-filter: incl IN IP4 233.252.0.1 ";
    const std::string of_2 = "a=source-filter: incl IN IP4 233.252.0.2 ";
    expect_readings({
        {"three",
         edited(one_path, {{7, {of_1 + "203.0.113.1 203.0.113.2 203.0.113.3"}}}),
         {},
         {{several_sources, 7}}},
        {"two in the first of two media",
         edited(two_paths, {{8, {of_1 + "203.0.113.1 203.0.113.3"}}}),
         {},
         {{several_sources, 8}}},
        {"two in the second of two media",
         edited(two_paths, {{14, {of_2 + "203.0.113.2 203.0.113.3"}}}),
         {},
         {{several_sources, 14}}},
        {"two in the first of two media, the second is not sent",
         edited(two_paths,
                {{8, {of_1 + "203.0.113.1 203.0.113.3"}}, {12, {"m=video 0 RTP/AVP 96"}}}),
         {},
         {{several_sources, 8}, {port_zero, 12}}},
        {"other two in each medium",
         edited(two_paths, {{8, {of_1 + "203.0.113.1 203.0.113.2"}},
                            {14, {of_2 + "203.0.113.3 203.0.113.4"}}}),
         {},
         {{several_sources, 8}, {several_sources, 14}}},
    });
}

TEST(ReadSdp, BothLegsTheSame)
{
    const Lines same = edited(two_paths, {{12, {"m=video 5004 RTP/AVP 96"}},
                                          {13, {"c=IN IP4 233.252.0.1/64"}},
                                          {14, {group_line_1}}});
    const Lines other_source =
        edited(same, {{14, {"a=source-filter: incl IN IP4 233.252.0.1 203.0.113.2"}}});
    const std::string leg_2 = "12: 233.252.0.1:5004 from 203.0.113.";
    expect_readings({
        {"all", same, {path_1, leg_2 + "1"}, {{same_path, 12}}},
        {"not the source", other_source, {path_1, leg_2 + "2"}},
        {"not the port",
         edited(same, {{12, {"m=video 5006 RTP/AVP 96"}}}),
         {path_1, "12: 233.252.0.1:5006 from 203.0.113.1"}},
    });
}

} // namespace
} // namespace nmos_instrument::host

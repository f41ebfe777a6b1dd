// SPDX-License-Identifier: Apache-2.0
//
// The SDP files of the senders, compared whole.

#include "nmos_instrument/ConnectionApi.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/body_parts.h"
#include "support/same_bytes.h"
#include "support/set_text.h"
#include "support/two_leg_sdp.h"
#include "support/varied.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

/// What the tests change about the example; the rest of it stands in write_sdp.
struct Example
{
    int index = 0;
    std::int16_t st2110_mode = 1;
    std::int16_t video_system = 2;
    std::int16_t frame_rate = 1;
    std::int16_t audio_ptime = 1;
    std::int16_t payload_video = 96;
    std::int16_t payload_audio = 97;
    std::int16_t payload_anc = 100;
};

st_param_sys settings_of(const Example& example)
{
    st_param_sys sys = st_param_sys();
    sys.sdp_st2110_mode = example.st2110_mode;
    sys.sdp_video_system = example.video_system;
    sys.sdp_video_frame_rate = example.frame_rate;
    sys.sdp_audio_ptime = example.audio_ptime;
    sys.sdp_rtp_payload_video = example.payload_video;
    sys.sdp_rtp_payload_audio = example.payload_audio;
    sys.sdp_rtp_payload_anc = example.payload_anc;
    return sys;
}

/// Sender `index` with two legs in its active half; everything that must not be read is filled
/// with texts that would show.
std::unique_ptr<NMOS_IS05_ST> state_of(int index)
{
    auto state = std::make_unique<NMOS_IS05_ST>();
    for (auto& sender : state->senders) {
        for (auto* half : {&sender.staged, &sender.active}) {
            half->leg_count = 2;
            half->master_enable = 1;
            set_text(half->transport_file_data, "never");
            for (auto& leg : half->transport_params) {
                set_text(leg.source_ip, "never");
                set_text(leg.destination_ip, "never");
                set_text(leg.interface_ip, "never");
                leg.destination_port = 9999;
            }
        }
    }
    set_text(state->ptp_grandmaster_id, "00-1D-C1-FF-FE-12-34-56");
    set_text(state->sdp_session_id, "1234567890");
    set_text(state->sdp_session_version, "1234567891");
    auto& legs = state->senders[index].active.transport_params;
    set_text(legs[0].source_ip, "192.168.10.1");
    set_text(legs[0].destination_ip, "239.10.0.1");
    legs[0].destination_port = 5004;
    set_text(legs[1].source_ip, "192.168.20.1");
    set_text(legs[1].destination_ip, "239.20.0.1");
    legs[1].destination_port = 5014;
    return state;
}

std::string write_sdp(const Example& example)
{
    const auto state = state_of(example.index);
    const st_param_sys sys = settings_of(example);
    return ConnectionApi().make_single_senderid_sdp(state.get(), example.index, &sys);
}

std::string write_sdp(NMOS_IS05_ST& state, int index)
{
    const st_param_sys sys = settings_of({});
    return ConnectionApi().make_single_senderid_sdp(&state, index, &sys);
}

const std::string video_format =
    "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
    "exactframerate=60000/1001; colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; "
    "TP=2110TPN; PM=2110BPM; \r\n";

const std::string& video_st2110 = two_leg_video;

const std::string video_st2022_6 = varied(two_leg_video, {{" RTP/AVP 96\r\n", " RTP/AVP 98\r\n"},
                                                          {"a=rtpmap:96 ", "a=rtpmap:98 "},
                                                          {"a=fmtp:96 ", "a=fmtp:98 "},
                                                          {"PM=2110BPM", "PM=2022-6"}});

const std::string audio_1_ms = varied(
    two_leg_video, {{"m=video ", "m=audio "},
                    {" RTP/AVP 96\r\n", " RTP/AVP 97\r\n"},
                    {"a=rtpmap:96 raw/90000\r\n", "a=rtpmap:97 L24/48000/16\r\na=ptime:1\r\n"},
                    {video_format, ""}});

const std::string ancillary =
    varied(two_leg_video, {{" RTP/AVP 96\r\n", " RTP/AVP 100\r\n"},
                           {"a=rtpmap:96 raw/90000\r\n", "a=rtpmap:100 smpte291/90000\r\n"},
                           {video_format, ""}});

// --- Whole files --------------------------------------------------------------------------------

TEST(SdpWriterFiles, VideoInSt2110)
{
    for (const int index : {0, 1, 2, 3})
        EXPECT_EQ(write_sdp({.index = index}), video_st2110) << index;
}

TEST(SdpWriterFiles, VideoInSt2022_6)
{
    for (const int index : {0, 1, 2, 3})
        EXPECT_EQ(write_sdp({.index = index, .st2110_mode = 0}), video_st2022_6) << index;
}

TEST(SdpWriterFiles, AnyModeButZeroIsSt2110)
{
    for (const std::int16_t mode : {std::int16_t{1}, std::int16_t{2}, std::int16_t{-1},
                                    std::int16_t{SHRT_MIN}, std::int16_t{SHRT_MAX}})
        EXPECT_EQ(write_sdp({.st2110_mode = mode}), video_st2110) << mode;
}

TEST(SdpWriterFiles, AudioIsTheSameInBothCarriages)
{
    EXPECT_EQ(write_sdp({.index = 4, .st2110_mode = 1}), audio_1_ms);
    EXPECT_EQ(write_sdp({.index = 4, .st2110_mode = 0}), audio_1_ms);
}

TEST(SdpWriterFiles, AncillaryIsTheSameInBothCarriages)
{
    EXPECT_EQ(write_sdp({.index = 5, .st2110_mode = 1}), ancillary);
    EXPECT_EQ(write_sdp({.index = 5, .st2110_mode = 0}), ancillary);
}

TEST(SdpWriterFiles, OfAClearedRecordHaveEmptyFieldsAndTwoLegs)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    const st_param_sys sys = st_param_sys();
    const auto cleared = [](const std::string& file) {
        return varied(file, {{" 1234567890 1234567891 ", "   "},
                             {"192.168.10.1", ""},
                             {"192.168.20.1", ""},
                             {"239.10.0.1", ""},
                             {"239.20.0.1", ""},
                             {" 5004 ", " 0 "},
                             {" 5014 ", " 0 "},
                             {"00-1D-C1-FF-FE-12-34-56", ""}});
    };
    EXPECT_EQ(
        ConnectionApi().make_single_senderid_sdp(state.get(), 0, &sys),
        varied(cleared(video_st2022_6), {{"width=1920; height=1080;", "width=3840; height=2160;"},
                                         {"exactframerate=60000/1001;", "exactframerate=60;"}}));
    EXPECT_EQ(ConnectionApi().make_single_senderid_sdp(state.get(), 4, &sys),
              varied(cleared(audio_1_ms), {{" RTP/AVP 97\r\n", " RTP/AVP 0\r\n"},
                                           {"a=rtpmap:97 ", "a=rtpmap:0 "},
                                           {"a=ptime:1\r\n", "a=ptime:8\r\n"}}));
    EXPECT_EQ(ConnectionApi().make_single_senderid_sdp(state.get(), 5, &sys),
              varied(cleared(ancillary),
                     {{" RTP/AVP 100\r\n", " RTP/AVP 0\r\n"}, {"a=rtpmap:100 ", "a=rtpmap:0 "}}));
}

TEST(SdpWriterFiles, TakeTheSecondLegFromWhateverItHoldsWhenOneLegIsInUse)
{
    const auto state = state_of(4);
    auto& active = state->senders[4].active;
    active.leg_count = 1;
    active.transport_params[1] = CONNECTION_LEG_IS05_ST();
    EXPECT_EQ(write_sdp(*state, 4),
              varied(audio_1_ms, {{" 5014 ", " 0 "}, {"239.20.0.1", ""}, {"192.168.20.1", ""}}));
}

TEST(SdpWriterFiles, DoNotDependOnLegCountAndFlags)
{
    const auto state = state_of(0);
    auto& active = state->senders[0].active;
    for (const int leg_count : {INT_MIN, -1, 0, 1, 2, 3, INT_MAX}) {
        active.leg_count = leg_count;
        EXPECT_EQ(write_sdp(*state, 0), video_st2110) << leg_count;
    }
    active.master_enable = 0;
    active.transport_params[0].rtp_enabled = 1;
    EXPECT_EQ(write_sdp(*state, 0), video_st2110);
}

// --- Tables -------------------------------------------------------------------------------------

TEST(SdpWriterTables, SizeOfEachVideoSystem)
{
    constexpr const char* uhd = " width=3840; height=2160; depth=10;";
    constexpr const char* hd_1080 = " width=1920; height=1080; depth=10;";
    constexpr const char* hd_720 = " width=1280; height=720; depth=10;";
    struct
    {
        std::int16_t video_system;
        const char* size;
    } const rows[] = {
        {SHRT_MIN, hd_1080}, {-4, hd_1080}, {-1, hd_1080}, {0, uhd},      {1, uhd},
        {2, hd_1080},        {3, hd_1080},  {4, hd_720},   {5, hd_1080},  {6, hd_1080},
        {7, hd_1080},        {8, hd_1080},  {9, hd_1080},  {10, hd_1080}, {256, hd_1080},
        {SHRT_MAX, hd_1080},
    };
    for (const auto& row : rows) {
        const std::string line =
            std::string("a=fmtp:96 sampling=YCbCr-4:2:2;") + row.size +
            " exactframerate=60000/1001; colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; "
            "TP=2110TPN; PM=2110BPM; \r\n";
        EXPECT_THAT(write_sdp({.video_system = row.video_system}),
                    AllOf(HasSubstr("a=rtpmap:96 raw/90000\r\n" + line + "a=source-filter:"),
                          HasSubstr("239.20.0.1/64\r\n" + line + "a=rtpmap:96 raw/90000\r\n")))
            << row.video_system;
    }
}

TEST(SdpWriterTables, TextOfEachFrameRate)
{
    struct
    {
        std::int16_t code;
        const char* text;
    } const rows[] = {
        {SHRT_MIN, "exactframerate=60; colorimetry="},
        {-1, "exactframerate=60; colorimetry="},
        {0, "exactframerate=60; colorimetry="},
        {1, "exactframerate=60000/1001; colorimetry="},
        {2, "exactframerate=50; colorimetry="},
        {3, "exactframerate=60; colorimetry="},
        {4, "exactframerate=60; colorimetry="},
        {5, "exactframerate=60; colorimetry="},
        {6, "exactframerate=60; colorimetry="},
        {7, "exactframerate=60; colorimetry="},
        {8, "exactframerate=60; colorimetry="},
        {9, "exactframerate=60; colorimetry="},
        {10, "exactframerate=30; interlace; colorimetry="},
        {11, "exactframerate=30000/1001; interlace; colorimetry="},
        {12, "exactframerate=25; interlace; colorimetry="},
        {13, "exactframerate=60; colorimetry="},
        {14, "exactframerate=60; colorimetry="},
        {257, "exactframerate=60; colorimetry="},
        {SHRT_MAX, "exactframerate=60; colorimetry="},
    };
    for (const auto& row : rows) {
        const std::string line =
            std::string("a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; ") +
            row.text + "BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; PM=2110BPM; \r\n";
        EXPECT_THAT(write_sdp({.frame_rate = row.code}),
                    AllOf(HasSubstr("a=rtpmap:96 raw/90000\r\n" + line + "a=source-filter:"),
                          HasSubstr("239.20.0.1/64\r\n" + line + "a=rtpmap:96 raw/90000\r\n")))
            << row.code;
    }
}

TEST(SdpWriterTables, PacketTimeOfEachAudioCode)
{
    struct
    {
        std::int16_t code;
        const char* line;
    } const rows[] = {
        {SHRT_MIN, "a=ptime:1\r\n"}, {-2, "a=ptime:1\r\n"},  {-1, "a=ptime:1\r\n"},
        {0, "a=ptime:8\r\n"},        {1, "a=ptime:1\r\n"},   {2, "a=ptime:0.125\r\n"},
        {3, "a=ptime:1\r\n"},        {256, "a=ptime:1\r\n"}, {258, "a=ptime:1\r\n"},
        {SHRT_MAX, "a=ptime:1\r\n"},
    };
    for (const auto& row : rows) {
        const std::string block = std::string("a=rtpmap:97 L24/48000/16\r\n") + row.line +
                                  "a=source-filter: incl IN IP4 239.";
        EXPECT_THAT(write_sdp({.index = 4, .audio_ptime = row.code}),
                    AllOf(HasSubstr("c=IN IP4 239.10.0.1/64\r\n" + block + "10.0.1"),
                          HasSubstr("c=IN IP4 239.20.0.1/64\r\n" + block + "20.0.1")))
            << row.code;
    }
}

/// In both legs of each kind of sender; ST 2022-6 has a payload type of its own.
void expect_payload_type(std::int16_t payload, const std::string& text)
{
    EXPECT_THAT(write_sdp({.index = 0, .payload_video = payload}),
                AllOf(HasSubstr("m=video 5004 RTP/AVP " + text +
                                "\r\nc=IN IP4 239.10.0.1/64\r\na=rtpmap:" + text +
                                " raw/90000\r\na=fmtp:" + text + " sampling="),
                      HasSubstr("m=video 5014 RTP/AVP " + text +
                                "\r\nc=IN IP4 239.20.0.1/64\r\na=fmtp:" + text + " sampling="),
                      HasSubstr("\r\na=rtpmap:" + text +
                                " raw/90000\r\na=source-filter: incl IN IP4 239.20.0.1")));
    EXPECT_EQ(write_sdp({.index = 0, .st2110_mode = 0, .payload_video = payload}), video_st2022_6);
    EXPECT_THAT(
        write_sdp({.index = 4, .payload_audio = payload}),
        AllOf(HasSubstr("m=audio 5004 RTP/AVP " + text +
                        "\r\nc=IN IP4 239.10.0.1/64\r\na=rtpmap:" + text + " L24/48000/16\r\n"),
              HasSubstr("m=audio 5014 RTP/AVP " + text +
                        "\r\nc=IN IP4 239.20.0.1/64\r\na=rtpmap:" + text + " L24/48000/16\r\n")));
    EXPECT_THAT(
        write_sdp({.index = 5, .payload_anc = payload}),
        AllOf(HasSubstr("m=video 5004 RTP/AVP " + text +
                        "\r\nc=IN IP4 239.10.0.1/64\r\na=rtpmap:" + text + " smpte291/90000\r\n"),
              HasSubstr("m=video 5014 RTP/AVP " + text +
                        "\r\nc=IN IP4 239.20.0.1/64\r\na=rtpmap:" + text + " smpte291/90000\r\n")));
}

TEST(SdpWriterTables, PayloadTypesAreWrittenAsTheyAre)
{
    struct
    {
        std::int16_t payload;
        const char* text;
    } const rows[] = {
        {0, "0"},
        {1, "1"},
        {95, "95"},
        {96, "96"},
        {127, "127"},
        {128, "128"},
        {255, "255"},
        {256, "256"},
        {SHRT_MAX, "32767"},
        {-1, "-1"},
        {SHRT_MIN, "-32768"},
    };
    for (const auto& row : rows)
        expect_payload_type(row.payload, row.text);
}

TEST(SdpWriterTables, EachKindReadsItsOwnSettingsOnly)
{
    EXPECT_EQ(write_sdp({.index = 0, .audio_ptime = 0, .payload_audio = 1, .payload_anc = 2}),
              video_st2110);
    EXPECT_EQ(write_sdp({.index = 4,
                         .video_system = 0,
                         .frame_rate = 11,
                         .payload_video = 1,
                         .payload_anc = 2}),
              audio_1_ms);
    EXPECT_EQ(write_sdp({.index = 5,
                         .video_system = 0,
                         .frame_rate = 11,
                         .audio_ptime = 0,
                         .payload_video = 1,
                         .payload_audio = 2}),
              ancillary);
}

TEST(SdpWriterTables, ReadSevenSettingsAlone)
{
    st_param_sys sys;
    std::memset(&sys, 0x5A, sizeof sys);
    sys.sdp_st2110_mode = 1;
    sys.sdp_video_system = 2;
    sys.sdp_video_frame_rate = 1;
    sys.sdp_audio_ptime = 1;
    sys.sdp_rtp_payload_video = 96;
    sys.sdp_rtp_payload_audio = 97;
    sys.sdp_rtp_payload_anc = 100;
    ConnectionApi api;
    EXPECT_EQ(api.make_single_senderid_sdp(state_of(3).get(), 3, &sys), video_st2110);
    EXPECT_EQ(api.make_single_senderid_sdp(state_of(4).get(), 4, &sys), audio_1_ms);
    EXPECT_EQ(api.make_single_senderid_sdp(state_of(5).get(), 5, &sys), ancillary);
}

// --- Ports --------------------------------------------------------------------------------------

TEST(SdpWriterPorts, AreRoundedAndPrintedInFull)
{
    const double nan_value = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    struct
    {
        double port;
        const char* text;
    } const rows[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {5004.0, "5004"},
        {65535.0, "65535"},
        {65536.0, "65536"},
        {-5004.0, "-5004"},
        // Halves go to the even neighbour.
        {0.5, "0"},
        {1.5, "2"},
        {2.5, "2"},
        {5004.5, "5004"},
        {5005.5, "5006"},
        {0.49999999999999994, "0"},
        {0.50000000000000011, "1"},
        {-0.4, "-0"},
        {-0.5, "-0"},
        {-0.6, "-1"},
        {5004.499, "5004"},
        {5004.501, "5005"},
        // 15, 16 and 17 characters, and many more.
        {123456789012345.0, "123456789012345"},
        {1234567890123456.0, "1234567890123456"},
        {12345678901234568.0, "12345678901234568"},
        {-123456789012345.0, "-123456789012345"},
        {9007199254740992.0, "9007199254740992"},
        {18446744073709551616.0, "18446744073709551616"},
        {1e20, "100000000000000000000"},
        {9e22, "89999999999999995805696"},
        {DBL_MIN, "0"},
        {DBL_MAX,
         "17976931348623157081452742373170435679807056752584499659891747680315726078002853876058"
         "95586327668781715404589535143824642343213268894641827684675467035375169860499105765512"
         "82076245490090389328944075868508455133942304583236903222948165808559332123348274797826"
         "204144723168738177180919299881250404026184124858368"},
        {-DBL_MAX,
         "-17976931348623157081452742373170435679807056752584499659891747680315726078002853876058"
         "95586327668781715404589535143824642343213268894641827684675467035375169860499105765512"
         "82076245490090389328944075868508455133942304583236903222948165808559332123348274797826"
         "204144723168738177180919299881250404026184124858368"},
        {nan_value, "nan"},
        {std::copysign(nan_value, -1.0), "-nan"},
        {infinity, "inf"},
        {-infinity, "-inf"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const std::string port = row.text;
        const auto state = state_of(5);
        auto& legs = state->senders[5].active.transport_params;
        legs[0].destination_port = row.port;
        EXPECT_EQ(write_sdp(*state, 5), varied(ancillary, {{" 5004 ", " " + port + " "}}));
        for (const int index : {0, 4}) {
            SCOPED_TRACE(index);
            const auto other = state_of(index);
            other->senders[index].active.transport_params[1].destination_port = row.port;
            EXPECT_THAT(write_sdp(*other, index),
                        AllOf(HasSubstr(" 5004 RTP/AVP 9"),
                              HasSubstr("a=mid:primary\r\nm=" +
                                        std::string(index == 0 ? "video " : "audio ") + port +
                                        " RTP/AVP 9")));
        }
    }
}

// --- Texts --------------------------------------------------------------------------------------

TEST(SdpWriterTexts, AreInsertedAsTheyAre)
{
    const auto state = state_of(5);
    set_text(state->ptp_grandmaster_id, "a/b\\\"");
    set_text(state->sdp_session_id, "null");
    set_text(state->sdp_session_version, "\xC3\xA9\t");
    auto& legs = state->senders[5].active.transport_params;
    set_text(legs[0].source_ip, "null");
    set_text(legs[0].destination_ip, "%s%d");
    set_text(legs[1].source_ip, "x\r\ny");
    set_text(legs[1].destination_ip, "auto");
    EXPECT_EQ(write_sdp(*state, 5),
              varied(ancillary, {{" 1234567890 1234567891 ", " null \xC3\xA9\t "},
                                 {"192.168.10.1", "null"},
                                 {"239.10.0.1", "%s%d"},
                                 {"192.168.20.1", "x\r\ny"},
                                 {"239.20.0.1", "auto"},
                                 {"00-1D-C1-FF-FE-12-34-56", "a/b\\\""}}));
}

TEST(SdpWriterTexts, WithoutNulAreTheirWholeWidth)
{
    const auto state = state_of(5);
    fill_whole(state->ptp_grandmaster_id, 'g');
    fill_whole(state->sdp_session_id, 'i');
    fill_whole(state->sdp_session_version, 'v');
    auto& legs = state->senders[5].active.transport_params;
    fill_whole(legs[0].source_ip, 's');
    fill_whole(legs[0].destination_ip, 'd');
    fill_whole(legs[0].interface_ip, 'x');
    fill_whole(legs[1].source_ip, 'S');
    fill_whole(legs[1].destination_ip, 'D');
    fill_whole(legs[1].interface_ip, 'x');
    EXPECT_EQ(write_sdp(*state, 5),
              varied(ancillary, {{"1234567890", "iiiiiiiiiiiiiiiiiiiiiiiiiiiiiiii"},
                                 {"1234567891", "vvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvv"},
                                 {"192.168.10.1", "ssssssssssssssssssssssssssssssss"},
                                 {"239.10.0.1", "dddddddddddddddddddddddddddddddd"},
                                 {"192.168.20.1", "SSSSSSSSSSSSSSSSSSSSSSSSSSSSSSSS"},
                                 {"239.20.0.1", "DDDDDDDDDDDDDDDDDDDDDDDDDDDDDDDD"},
                                 {"00-1D-C1-FF-FE-12-34-56", "gggggggggggggggggggggggggggggggg"}}));
}

TEST(SdpWriterTexts, EndAtTheirNul)
{
    const auto state = state_of(5);
    fill_whole(state->ptp_grandmaster_id, 'g');
    state->ptp_grandmaster_id[1] = '\0';
    fill_whole(state->sdp_session_id, 'i');
    state->sdp_session_id[1] = '\0';
    EXPECT_THAT(write_sdp(*state, 5),
                AllOf(HasSubstr("\r\no=HALDEN i 1234567891 IN IP4 192.168.10.1\r\n"),
                      HasSubstr("\r\na=ts-refclk:ptp=IEEE1588-2008:g:127\r\n")));
}

// --- Record and index ---------------------------------------------------------------------------

TEST(SdpWriterIndex, OutsideTheSendersIsRefusedBeforeAnythingIsRead)
{
    for (const int index : {-1, 6, 7, 24, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_THAT(out_of_range_text([&] {
                        static_cast<void>(
                            ConnectionApi().make_single_senderid_sdp(nullptr, index, nullptr));
                    }),
                    AllOf(HasSubstr("make_single_senderid_sdp"), HasSubstr(std::to_string(index)),
                          HasSubstr("0 to 5")));
    }
}

TEST(SdpWriterIndex, NeedsNoReceivers)
{
    // A host whose record ends before its first receiver.
    const std::unique_ptr<void, decltype(&std::free)> memory(std::malloc(82928), &std::free);
    ASSERT_NE(memory, nullptr);
    std::memcpy(memory.get(), state_of(5).get(), 82928);
    auto* state = static_cast<NMOS_IS05_ST*>(memory.get());
    const st_param_sys sys = settings_of({});
    EXPECT_EQ(ConnectionApi().make_single_senderid_sdp(state, 5, &sys), ancillary);
}

TEST(SdpWriterRecord, IsLeftAlone)
{
    const auto state = state_of(0);
    const auto before = std::make_unique<NMOS_IS05_ST>(*state);
    st_param_sys sys = settings_of({});
    const st_param_sys sys_before = sys;
    static_cast<void>(ConnectionApi().make_single_senderid_sdp(state.get(), 0, &sys));
    EXPECT_TRUE(same_bytes(*before, *state));
    EXPECT_TRUE(same_bytes(sys_before, sys));
}

TEST(SdpWriterRecord, UnreadStretchesMayHoldAnything)
{
    const auto state = std::make_unique<NMOS_IS05_ST>();
    std::memset(state.get(), 0xA5, sizeof(NMOS_IS05_ST));
    const auto example = state_of(4);
    std::memcpy(state->ptp_grandmaster_id, example->ptp_grandmaster_id, 32);
    std::memcpy(state->sdp_session_id, example->sdp_session_id, 32);
    std::memcpy(state->sdp_session_version, example->sdp_session_version, 32);
    for (int i = 0; i < 2; ++i) {
        auto& leg = state->senders[4].active.transport_params[i];
        const auto& from = example->senders[4].active.transport_params[i];
        std::memcpy(leg.source_ip, from.source_ip, 32);
        std::memcpy(leg.destination_ip, from.destination_ip, 32);
        leg.destination_port = from.destination_port;
    }
    EXPECT_EQ(write_sdp(*state, 4), audio_1_ms);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
//
// analyze_sdp_file on the format parameters: sampling and depth, size, frame rate and the others.

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/sdp_check.h"

namespace {

using namespace std::string_literals;
using namespace found;

// --- sampling= and depth= -----------------------------------------------------------------------

TEST(SdpParserSampling, IsTakenWithADepthOf10Alone)
{
    const Fields stored = {{"sampling", "YCbCr-4:2:2"}, {"depth", "10"}};
    const LineCase rows[] = {
        taken("a=sampling=YCbCr-4:2:2; depth=10;", sampling_and_depth, stored),
        taken("a=sampling=YCbCr-4:2:2; depth=10", sampling_and_depth, stored),
        taken("a=depth=10; sampling=YCbCr-4:2:2", sampling_and_depth, stored),
        taken("a=sampling=YCbCr-4:2:2;depth=10;more", sampling_and_depth, stored),
        taken("sampling=YCbCr-4:2:2; depth=10; a=", sampling_and_depth, stored),
        taken("a=xsampling=YCbCr-4:2:2; bitdepth=10;", sampling_and_depth, stored),
        refused("a=sampling=YCbCr-4:2:2; depth=8;",
                "(sampling= YCbCr-4:2:2, depth= 8) is no support parameter.\n"),
        refused("a=sampling=YCbCr-4:4:4; depth=10;",
                "(sampling= YCbCr-4:4:4, depth= 10) is no support parameter.\n"),
        refused("a=sampling=RGB; depth=12;",
                "(sampling= RGB, depth= 12) is no support parameter.\n"),
        // The texts are compared, exactly.
        refused("a=sampling=YCbCr-4:2:2 ; depth=10;",
                "(sampling= YCbCr-4:2:2 , depth= 10) is no support parameter.\n"),
        refused("a=sampling= YCbCr-4:2:2; depth=10;",
                "(sampling=  YCbCr-4:2:2, depth= 10) is no support parameter.\n"),
        refused("a=sampling=ycbcr-4:2:2; depth=10;",
                "(sampling= ycbcr-4:2:2, depth= 10) is no support parameter.\n"),
        refused("a=sampling=YCbCr-4:2:2; depth=010;",
                "(sampling= YCbCr-4:2:2, depth= 010) is no support parameter.\n"),
        refused("a=sampling=YCbCr-4:2:2; depth=10 ;",
                "(sampling= YCbCr-4:2:2, depth= 10 ) is no support parameter.\n"),
        refused("a=sampling=YCbCr-4:2:2; depth=10 bit",
                "(sampling= YCbCr-4:2:2, depth= 10 bit) is no support parameter.\n"),
        refused("a=sampling=; depth=;", "(sampling= , depth= ) is no support parameter.\n"),
        refused("a=depth=;sampling=", "(sampling= , depth= ) is no support parameter.\n"),
        // A missing semicolon: the value reaches to the end of the line.
        refused("a=sampling=YCbCr-4:2:2 depth=10;",
                "(sampling= YCbCr-4:2:2 depth=10, depth= 10) is no support parameter.\n"),
        refused(
            "a=depth=10 sampling=YCbCr-4:2:2",
            "(sampling= YCbCr-4:2:2, depth= 10 sampling=YCbCr-4:2:2) is no support parameter.\n"),
        // One of the two alone is not checked.
        ignored("a=sampling=RGB;"),
        ignored("a=depth=8;"),
        ignored("a=sampling=RGB; Depth=8;"),
        ignored("a=Sampling=RGB; depth=8;"),
        ignored("a=sampling =RGB; depth =8;"),
        // The first of two counts.
        taken("a=sampling=YCbCr-4:2:2;sampling=RGB;depth=10;depth=8;", sampling_and_depth, stored),
        refused("a=sampling=RGB;sampling=YCbCr-4:2:2;depth=8;depth=10;",
                "(sampling= RGB, depth= 8) is no support parameter.\n"),
        refused("a=sampling=YCbCr-4:2:2\0;depth=10;"s,
                "(sampling= YCbCr-4:2:2, depth= 10) is no support parameter.\n"),
    };
    expect_lines(rows);
}

// --- width= and height= -------------------------------------------------------------------------

constexpr const char* not_supported = "Switching 2K/4K is not supported. \n";
constexpr const char* denied = "Switching 2K/4K is denied by the setting. \n";

constexpr short set_to_4k[] = {9, 10};
constexpr short fixed_2k[] = {0, 1, 2, 7, 8};
constexpr short free_to_switch[] = {SHRT_MIN, -256, -2, -1, 3,   4,   5,
                                    6,        11,   12, 13, 256, 265, SHRT_MAX};

struct Size
{
    const char* width;
    const char* height;
};

constexpr Size uhd = {"3840", "2160"};
constexpr Size hd_1080 = {"1920", "1080"};
constexpr Size hd_720 = {"1280", "720"};

/// One cell of the table of sizes: the message for each state of the instrument's two flags.
struct SizeCell
{
    const char* neither;
    const char* allowed_only;
    const char* capable_only;
    const char* both;
    bool stored;
};

constexpr SizeCell silent = {"", "", "", "", true};

template <std::size_t N>
void expect_size(const Size& size, bool interlaced, const short (&formats)[N], const SizeCell& cell)
{
    const std::string line = "a=width="s + size.width + "; height=" + size.height +
                             (interlaced ? "; interlace;\n" : ";\n");
    const Fields stored = {{"width", size.width},
                           {"height", size.height},
                           {"size_interlaced", interlaced ? "1" : "0"}};
    const struct
    {
        bool capable;
        bool allowed;
        const char* errors;
    } states[] = {
        {false, false, cell.neither},
        {false, true, cell.allowed_only},
        {true, false, cell.capable_only},
        {true, true, cell.both},
    };
    for (const short format : formats) {
        for (const auto& state : states) {
            SCOPED_TRACE("format " + std::to_string(format) +
                         (state.capable ? ", switch_capable" : "") +
                         (state.allowed ? ", switch_allowed" : ""));
            expect_sdp(line, cell.stored ? found::size.leg0 : 0, cell.stored ? stored : Fields{},
                       state.errors, {state.capable, format, state.allowed});
        }
    }
}

TEST(SdpParserSize, ProgressiveUhd)
{
    expect_size(uhd, false, set_to_4k, {not_supported, not_supported, "", "", true});
    expect_size(uhd, false, fixed_2k, {not_supported, not_supported, denied, denied, false});
    expect_size(uhd, false, free_to_switch, {not_supported, not_supported, denied, "", true});
}

TEST(SdpParserSize, ProgressiveHd1080)
{
    expect_size(hd_1080, false, set_to_4k, {not_supported, not_supported, denied, "", true});
    expect_size(hd_1080, false, fixed_2k, {not_supported, not_supported, denied, "", true});
    expect_size(hd_1080, false, free_to_switch, silent);
}

TEST(SdpParserSize, ProgressiveHd720)
{
    expect_size(hd_720, false, set_to_4k, {not_supported, not_supported, denied, "", true});
    expect_size(hd_720, false, fixed_2k, {not_supported, not_supported, denied, "", true});
    expect_size(hd_720, false, free_to_switch, silent);
}

TEST(SdpParserSize, InterlacedHd1080)
{
    expect_size(hd_1080, true, set_to_4k, {not_supported, not_supported, denied, "", true});
    expect_size(hd_1080, true, fixed_2k, {denied, denied, denied, denied, true});
    expect_size(hd_1080, true, free_to_switch, silent);
}

TEST(SdpParserSize, InterlacedHd720)
{
    expect_size(hd_720, true, set_to_4k, {not_supported, not_supported, denied, "", true});
    expect_size(hd_720, true, fixed_2k, {denied, denied, denied, denied, true});
    expect_size(hd_720, true, free_to_switch, silent);
}

TEST(SdpParserSize, InterlacedUhdIsRefusedByEveryInstrument)
{
    constexpr const char* message =
        "(width= 3840, height= 2160, interlace) is no support parameter.\n";
    const SizeCell refused = {message, message, message, message, false};
    expect_size(uhd, true, set_to_4k, refused);
    expect_size(uhd, true, fixed_2k, refused);
    expect_size(uhd, true, free_to_switch, refused);
}

TEST(SdpParserSize, OtherProgressiveSizesAreRefusedByEveryInstrument)
{
    const struct
    {
        Size size;
        const char* message;
    } rows[] = {
        {{"720", "576"}, "(width= 720, height= 576) is no support parameter. \n"},
        {{"1280", "1080"}, "(width= 1280, height= 1080) is no support parameter. \n"},
        {{"1920", "720"}, "(width= 1920, height= 720) is no support parameter. \n"},
        {{"1920", "2160"}, "(width= 1920, height= 2160) is no support parameter. \n"},
        {{"3840", "1080"}, "(width= 3840, height= 1080) is no support parameter. \n"},
        {{"1080", "1920"}, "(width= 1080, height= 1920) is no support parameter. \n"},
        {{"4096", "2160"}, "(width= 4096, height= 2160) is no support parameter. \n"},
        {{"7680", "4320"}, "(width= 7680, height= 4320) is no support parameter. \n"},
        // The texts are compared, not the numbers.
        {{"01920", "1080"}, "(width= 01920, height= 1080) is no support parameter. \n"},
        {{"1920", "1080 "}, "(width= 1920, height= 1080 ) is no support parameter. \n"},
        {{" 1920", "1080"}, "(width=  1920, height= 1080) is no support parameter. \n"},
        {{"1920.0", "1080"}, "(width= 1920.0, height= 1080) is no support parameter. \n"},
        {{"+3840", "2160"}, "(width= +3840, height= 2160) is no support parameter. \n"},
        {{"", ""}, "(width= , height= ) is no support parameter. \n"},
    };
    for (const auto& row : rows) {
        const SizeCell refused = {row.message, row.message, row.message, row.message, false};
        expect_size(row.size, false, set_to_4k, refused);
        expect_size(row.size, false, fixed_2k, refused);
        expect_size(row.size, false, free_to_switch, refused);
    }
}

TEST(SdpParserSize, OtherInterlacedSizesAreRefusedByEveryInstrument)
{
    const struct
    {
        Size size;
        const char* message;
    } rows[] = {
        {{"720", "576"}, "(width= 720, height= 576, interlace) is no support parameter.\n"},
        {{"1280", "1080"}, "(width= 1280, height= 1080, interlace) is no support parameter.\n"},
        {{"1920", "720"}, "(width= 1920, height= 720, interlace) is no support parameter.\n"},
        {{"3840", "1080"}, "(width= 3840, height= 1080, interlace) is no support parameter.\n"},
        {{"1920", "01080"}, "(width= 1920, height= 01080, interlace) is no support parameter.\n"},
        {{"", ""}, "(width= , height= , interlace) is no support parameter.\n"},
    };
    for (const auto& row : rows) {
        const SizeCell refused = {row.message, row.message, row.message, row.message, false};
        expect_size(row.size, true, set_to_4k, refused);
        expect_size(row.size, true, fixed_2k, refused);
        expect_size(row.size, true, free_to_switch, refused);
    }
}

TEST(SdpParserSize, NeedsBothKeysInOneLine)
{
    const Fields hd = {{"width", "1920"}, {"height", "1080"}, {"size_interlaced", "0"}};
    const Fields hd_interlaced = {{"width", "1920"}, {"height", "1080"}, {"size_interlaced", "1"}};
    const LineCase rows[] = {
        ignored("a=width=1;"),
        ignored("a=height=1;"),
        ignored("a=width=1; Height=1;"),
        ignored("width=1; height=1;"),
        taken("a=width=1920; height=1080", size, hd),
        taken("a=height=1080; width=1920", size, hd),
        taken("a=height=1080;width=1920;", size, hd),
        taken("width=1920; height=1080; a=", size, hd),
        taken("a=xwidth=1920; yheight=1080;", size, hd),
        // "interlace" counts wherever it stands, also in another word or value.
        taken("a=interlace; width=1920; height=1080;", size, hd_interlaced),
        taken("interlace a=width=1920; height=1080;", size, hd_interlaced),
        taken("a=width=1920; height=1080; noninterlaced=1", size, hd_interlaced),
        taken("a=width=1920; height=1080; INTERLACE", size, hd),
        taken("a=width=1920; height=1080; inter lace", size, hd),
        refused("a=width=1920; height=1080 interlace;",
                "(width= 1920, height= 1080 interlace, interlace) is no support parameter.\n"),
        refused("a=width=1920 height=1080;",
                "(width= 1920 height=1080, height= 1080) is no support parameter. \n"),
        // The first of two counts.
        taken("a=width=1920;width=1;height=1080;height=1;", size, hd),
        refused("a=width=1;width=1920;height=2;height=1080;",
                "(width= 1, height= 2) is no support parameter. \n"),
        refused("a=width=1920\0;height=1080\0;"s,
                "(width= 1920, height= 1080) is no support parameter. \n"),
    };
    expect_lines(rows);
    expect_sdp("a=width=1;\na=height=1;\n", 0, {}, "");
}

TEST(SdpParserSize, ASizeThatWasRefusedLeavesTheOneBefore)
{
    expect_sdp("a=width=1280; height=720; interlace\n"
               "a=width=3840; height=2160;\n"
               "a=width=1; height=2;\n",
               sdp_found_size, {{"width", "1280"}, {"height", "720"}, {"size_interlaced", "1"}},
               "Switching 2K/4K is denied by the setting. \n"
               "Switching 2K/4K is denied by the setting. \n"
               "(width= 1, height= 2) is no support parameter. \n",
               {true, 8, true});
    expect_sdp("a=width=1280; height=720; interlace\n"
               "a=width=1920; height=1080\n",
               sdp_found_size, {{"width", "1920"}, {"height", "1080"}, {"size_interlaced", "0"}},
               "");
}

// --- exactframerate= ----------------------------------------------------------------------------

TEST(SdpParserFrameRate, OfAProgressiveLine)
{
    for (const char* rate : {"60", "60000/1001", "50"}) {
        const Fields stored = {{"exactframerate", rate}, {"rate_interlaced", "0"}};
        expect_line(taken("a=exactframerate="s + rate + ";", exactframerate, stored));
        expect_line(taken("a=exactframerate="s + rate, exactframerate, stored));
    }
    for (const char* rate :
         {"30", "30000/1001", "25", "24", "24000/1001", "59.94", "60/1", "060", " 60", "60 ",
          "60000/1001 ", "60000 / 1001", "", "50.0", "5", "500", "60000", "1001"})
        expect_line(refused("a=exactframerate="s + rate + ";",
                            "exactframerate: "s + rate + " is no support parameter.\n"));
}

TEST(SdpParserFrameRate, OfAnInterlacedLine)
{
    for (const char* rate : {"30", "30000/1001", "25"}) {
        const Fields stored = {{"exactframerate", rate}, {"rate_interlaced", "1"}};
        expect_line(taken("a=exactframerate="s + rate + "; interlace", exactframerate, stored));
        expect_line(taken("interlace a=exactframerate="s + rate, exactframerate, stored));
    }
    for (const char* rate : {"60", "60000/1001", "50", "24", "29.97", "030", " 30", "30 ", "",
                             "25.0", "30/1", "3", "300"})
        expect_line(refused("a=exactframerate="s + rate + "; interlace;",
                            "exactframerate: "s + rate + " is no support parameter.\n"));
}

TEST(SdpParserFrameRate, KeysCountWhereverTheyStandAndTheFirstOfTwo)
{
    const Fields fifty = {{"exactframerate", "50"}, {"rate_interlaced", "0"}};
    const LineCase rows[] = {
        taken("xa=yexactframerate=50;z", exactframerate, fifty),
        taken("exactframerate=50; a=", exactframerate, fifty),
        taken("a=exactframerate=50;exactframerate=1;", exactframerate, fifty),
        refused("a=exactframerate=1;exactframerate=50;",
                "exactframerate: 1 is no support parameter.\n"),
        taken_in_part("a=exactframerate=50 TCS=SDR", tcs, {{"tcs", "SDR"}},
                      "exactframerate: 50 TCS=SDR is no support parameter.\n"),
        ignored("a=framerate=1;"),
        ignored("a=Exactframerate=1;"),
        ignored("a=exactframerate: 1;"),
        ignored("exactframerate=1;"),
        refused("a=exactframerate=50\0;"s, "exactframerate: 50 is no support parameter.\n"),
        refused("a=exactframerate=\00050;"s, "exactframerate:  is no support parameter.\n"),
    };
    expect_lines(rows);
}

TEST(SdpParserFrameRate, ARefusedRateLeavesTheOneBefore)
{
    expect_sdp("a=exactframerate=25; interlace\n"
               "a=exactframerate=25\n",
               sdp_found_exactframerate, {{"exactframerate", "25"}, {"rate_interlaced", "1"}},
               "exactframerate: 25 is no support parameter.\n");
    expect_sdp("a=exactframerate=25; interlace\n"
               "a=exactframerate=60\n",
               sdp_found_exactframerate, {{"exactframerate", "60"}, {"rate_interlaced", "0"}}, "");
}

// --- Parameters with a list of values -----------------------------------------------------------

/// `stored` is empty for keys whose values are checked only.
struct Parameter
{
    const char* key;
    const char* message_begin;
    LegFlags found;
    const char* stored;
    std::vector<const char*> taken;
    std::vector<const char*> refused;
};

const Parameter parameters[] = {
    {"TCS=",
     "TCS= ",
     tcs,
     "tcs",
     {"SDR", "HLG", "PQ"},
     {"", "sdr", "SDR ", " SDR", "SDRX", "SD", "HDR", "LINEAR", "BT709", "SDR,HLG", "PQ\xFF"}},
    {"colorimetry=",
     "colorimetry: ",
     colorimetry,
     "colorimetry",
     {"BT709", "BT2020", "BT2100"},
     {"", "bt709", "BT709 ", " BT709", "BT7", "BT601", "BT2020NCL", "SDR", "ST2065-1", "BT 709"}},
    {"PM=",
     "PM= ",
     packing_mode,
     "packing_mode",
     {"2110GPM", "2110BPM", "2022-6"},
     {"", "2110gpm", "2110GPM ", " 2110GPM", "2110", "2022-7", "2022", "GPM", "2110TPN"}},
    {"SSN=",
     "SSN= ",
     {},
     "",
     {"ST2110-20:2017", "ST2110-30:2017", "ST2110-40:2017"},
     {"", "ST2110-20:2022", "st2110-20:2017", "ST2110-20", "ST2110-20:2017 ", " ST2110-20:2017",
      "ST2110-10:2017", "ST2110-31:2017", "ST2110-22:2019"}},
    {"TP=",
     "TP= ",
     {},
     "",
     {"2110TPNL", "2110TPN", "2110TPW"},
     {"", "2110tpn", "2110TPN ", " 2110TPN", "2110TP", "2110TPNLX", "2110TPWL", "2110GPM"}},
};

TEST(SdpParserParameters, TakeTheirListOfValues)
{
    for (const Parameter& parameter : parameters) {
        for (const std::string value : parameter.taken) {
            const Fields stored =
                parameter.stored[0] == '\0' ? Fields{} : Fields{{parameter.stored, value}};
            for (const std::string& line :
                 {"a=" + (parameter.key + value) + ";", "a=" + (parameter.key + value),
                  "a=" + (parameter.key + value) + ";more; things",
                  "fine a=b; " + (parameter.key + value) + "; interlace",
                  "xa=y" + (parameter.key + value) + ";z", parameter.key + value + "; a="})
                expect_line(taken(line, parameter.found, stored));
        }
    }
}

TEST(SdpParserParameters, RefuseEveryOtherValue)
{
    for (const Parameter& parameter : parameters) {
        for (const std::string value : parameter.refused) {
            const std::string message =
                parameter.message_begin + value + " is no support parameter.\n";
            expect_line(refused("a=" + (parameter.key + value) + ";", message));
            expect_line(refused("a=" + (parameter.key + value), message));
        }
    }
}

TEST(SdpParserParameters, MessagesAreTheseTexts)
{
    expect_sdp("a=TCS=1;\n", 0, {}, "TCS= 1 is no support parameter.\n");
    expect_sdp("a=colorimetry=2;\n", 0, {}, "colorimetry: 2 is no support parameter.\n");
    expect_sdp("a=PM=3;\n", 0, {}, "PM= 3 is no support parameter.\n");
    expect_sdp("a=SSN=4;\n", 0, {}, "SSN= 4 is no support parameter.\n");
    expect_sdp("a=TP=5;\n", 0, {}, "TP= 5 is no support parameter.\n");
}

TEST(SdpParserParameters, TheFirstOfTwoCounts)
{
    const LineCase rows[] = {
        taken("a=TCS=SDR;TCS=1;", tcs, {{"tcs", "SDR"}}),
        refused("a=TCS=1;TCS=SDR;", "TCS= 1 is no support parameter.\n"),
        taken("a=colorimetry=BT709;colorimetry=1;", colorimetry, {{"colorimetry", "BT709"}}),
        refused("a=colorimetry=1;colorimetry=BT709;", "colorimetry: 1 is no support parameter.\n"),
        taken("a=PM=2110GPM;PM=1;", packing_mode, {{"packing_mode", "2110GPM"}}),
        refused("a=PM=1;PM=2110GPM;", "PM= 1 is no support parameter.\n"),
        ignored("a=SSN=ST2110-20:2017;SSN=1;"),
        refused("a=SSN=1;SSN=ST2110-20:2017;", "SSN= 1 is no support parameter.\n"),
        ignored("a=TP=2110TPN;TP=1;"),
        refused("a=TP=1;TP=2110TPN;", "TP= 1 is no support parameter.\n"),
        // A key is found in the middle of another word too.
        refused("a=RTP=1;", "TP= 1 is no support parameter.\n"),
        refused("a=xTCS=1;", "TCS= 1 is no support parameter.\n"),
        refused("a=RTP=1; TP=2110TPN;", "TP= 1 is no support parameter.\n"),
    };
    expect_lines(rows);
}

TEST(SdpParserParameters, OtherSpellingsAreNoKeys)
{
    for (const char* line :
         {"a=tcs=1;", "a=TCS =1;", "a=TCS:1;", "a=Colorimetry=1;", "a=colorimetry 1", "a=pm=1;",
          "a=PM =1;", "a=ssn=1;", "a=SSN 1;", "a=tp=1;", "a=TP 1;", "TCS=1;", "colorimetry=1;",
          "PM=1;", "SSN=1;", "TP=1;"})
        expect_line(ignored(line));
}

TEST(SdpParserParameters, MissingSemicolonsMakeOneValueOfTheRest)
{
    expect_sdp("a=TCS=SDR SSN=ST2110-20:2017 TP=2110TPN\n", 0, {},
               "TCS= SDR SSN=ST2110-20:2017 TP=2110TPN is no support parameter.\n"
               "SSN= ST2110-20:2017 TP=2110TPN is no support parameter.\n");
}

TEST(SdpParserParameters, AreComparedWholeAndShownUpToTheirNul)
{
    const LineCase rows[] = {
        refused("a=TCS=SDR\0;"s, "TCS= SDR is no support parameter.\n"),
        refused("a=colorimetry=BT709\0x;"s, "colorimetry: BT709 is no support parameter.\n"),
        refused("a=PM=\0002110GPM;"s, "PM=  is no support parameter.\n"),
        refused("a=SSN=ST2110-20:2017\0;"s, "SSN= ST2110-20:2017 is no support parameter.\n"),
        refused("a=TP=2110TPN\0L;"s, "TP= 2110TPN is no support parameter.\n"),
        taken("a=\0;TCS=PQ;\0"s, tcs, {{"tcs", "PQ"}}),
    };
    expect_lines(rows);
}

TEST(SdpParserParameters, ARefusedValueLeavesTheOneBefore)
{
    expect_sdp("a=TCS=PQ; colorimetry=BT2100; PM=2110BPM\n"
               "a=TCS=; colorimetry=; PM=\n",
               sdp_found_tcs | sdp_found_colorimetry | sdp_found_packing_mode,
               {{"colorimetry", "BT2100"}, {"packing_mode", "2110BPM"}, {"tcs", "PQ"}},
               "TCS=  is no support parameter.\n"
               "colorimetry:  is no support parameter.\n"
               "PM=  is no support parameter.\n");
    expect_sdp("a=TCS=PQ; colorimetry=BT2100; PM=2110BPM\n"
               "a=PM=2022-6; colorimetry=BT709; TCS=SDR;\n",
               sdp_found_tcs | sdp_found_colorimetry | sdp_found_packing_mode,
               {{"colorimetry", "BT709"}, {"packing_mode", "2022-6"}, {"tcs", "SDR"}}, "");
}

} // namespace

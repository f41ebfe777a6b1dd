// SPDX-License-Identifier: Apache-2.0

#include <string>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "run_program.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using namespace std::string_literals;

const char good_sdp[] = "v=0\r\n"
                        "a=group:DUP primary secondary\r\n"
                        "m=audio 5004 RTP/AVP 97\r\n"
                        "c=IN IP4 233.252.0.1/64\r\n"
                        "a=source-filter: incl IN IP4 233.252.0.1 192.0.2.10\r\n"
                        "a=mid:primary\r\n"
                        "m=audio 5006 RTP/AVP 97\r\n"
                        "c=IN IP4 233.252.0.2/64\r\n"
                        "a=mid:secondary\r\n";

TEST(CheckSdp, ShowsWhatAReceiverFinds)
{
    const ProgramRun run = run_program({"check-sdp", "-"}, good_sdp);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "standard input: taken\n"
                       "  leg        source           address          port\n"
                       "  primary    192.0.2.10       233.252.0.1      5004\n"
                       "  secondary  -                233.252.0.2      5006\n"
                       "  payload type   97\n");
    EXPECT_THAT(run.errors, IsEmpty());
}

TEST(CheckSdp, ShowsEachMessageOfARefusedFile)
{
    const TemporaryFile file("m=video 65536 RTP/AVP 96\na=fmtp:96 TCS=DENSITY;\n");
    const ProgramRun run = run_program({"check-sdp", file.name()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, file.name() + ": refused\n"
                                     "  line 1: Destination Port 65536 is range over.\n"
                                     "  line 2: TCS= DENSITY is no support parameter.\n"
                                     "  leg        source           address          port\n"
                                     "  primary    -                -                -\n"
                                     "  secondary  -                -                -\n"
                                     "  payload type   96\n");
}

TEST(CheckSdp, AFileWithoutALineIsRefused)
{
    for (const char* const blank : {"", "\n", "\r\n\r\n", "  \t \n\n ", " "}) {
        const ProgramRun run = run_program({"check-sdp", "-"}, blank);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out,
                  "standard input: refused\n"
                  "  the file has no line but empty ones: it is no SDP file, which begins with the "
                  "line v=0\n"
                  "  leg        source           address          port\n"
                  "  primary    -                -                -\n"
                  "  secondary  -                -                -\n");
        const ProgramRun in_json = run_program({"check-sdp", "--json", "-"}, blank);
        EXPECT_EQ(in_json.status, 1);
        const nlohmann::json report = nlohmann::json::parse(in_json.out);
        EXPECT_EQ(report.at(0).at("verdict"), "refused");
        EXPECT_THAT(report.at(0).at("cause").get<std::string>(), HasSubstr("no SDP file"));
        EXPECT_EQ(report.at(0).at("format").at("depth"), nullptr);
    }
}

TEST(CheckSdp, AFileNameCannotMoveTheCursor)
{
    const ProgramRun run = run_program({"check-sdp", "/nowhere/\x1b[2J"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.errors, HasSubstr("/nowhere/\\x1b[2J: cannot be read"));
}

TEST(CheckSdp, AFileThatTheParserGivesUpOnIsRefused)
{
    const ProgramRun run = run_program({"check-sdp", "-"}, "v=0\na=group:DUP one\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("standard input: refused\n  line 2 lacks its second value"));
    EXPECT_THAT(run.errors, IsEmpty());
}

TEST(CheckSdp, HintsAtAMissingLineBreak)
{
    const ProgramRun run = run_program({"check-sdp", "-"}, good_sdp + "a=x"s);
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr("  hint: the file does not end with a line break: line 10 was "
                                   "read as the number 0, not as a line"));
}

TEST(CheckSdp, ReportsAsJson)
{
    const TemporaryFile file(good_sdp);
    const ProgramRun run = run_program({"check-sdp", "--json", file.name(), "/no/such/file", "-"},
                                       "m=video 65536 RTP/AVP 96\n");
    EXPECT_EQ(run.status, 2);
    const nlohmann::json expected = nlohmann::json::parse(R"([
        {
            "file": "FILE", "verdict": "taken", "messages": [], "cause": null, "hints": [],
            "legs": [
                { "leg": "primary", "source": "192.0.2.10", "address": "233.252.0.1",
                  "port": "5004" },
                { "leg": "secondary", "source": null, "address": "233.252.0.2", "port": "5006" }
            ],
            "format": {
                "payload_type": "97", "sampling": null, "depth": null, "size": null,
                "frame_rate": null, "colorimetry": null, "transfer_characteristic": null,
                "packing_mode": null
            }
        },
        {
            "file": "/no/such/file", "verdict": "not readable",
            "cause": "No such file or directory"
        },
        {
            "file": "-", "verdict": "refused",
            "messages": [
                { "line": 1, "text": "Destination Port 65536 is range over." }
            ],
            "cause": null, "hints": [],
            "legs": [
                { "leg": "primary", "source": null, "address": null, "port": null },
                { "leg": "secondary", "source": null, "address": null, "port": null }
            ],
            "format": {
                "payload_type": "96", "sampling": null, "depth": null, "size": null,
                "frame_rate": null, "colorimetry": null, "transfer_characteristic": null,
                "packing_mode": null
            }
        }
    ])");
    nlohmann::json report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report[0]["file"], file.name());
    report[0]["file"] = "FILE";
    EXPECT_EQ(report, expected);
}

TEST(CheckSdp, TheWorstFileDecidesTheStatus)
{
    const TemporaryFile good(good_sdp);
    const TemporaryFile bad("m=video 65536 x\n");
    EXPECT_EQ(run_program({"check-sdp", good.name(), good.name()}).status, 0);
    EXPECT_EQ(run_program({"check-sdp", bad.name(), good.name()}).status, 1);
    EXPECT_EQ(run_program({"check-sdp", good.name(), bad.name()}).status, 1);
    EXPECT_EQ(run_program({"check-sdp", "/no/such/file", bad.name(), good.name()}).status, 2);
}

TEST(CheckSdp, SaysWhyAFileIsNotReadableAndGoesOn)
{
    const TemporaryFile good(good_sdp);
    const ProgramRun run = run_program({"check-sdp", "/", "", "/dev/zero", good.name()});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, "/: cannot be read: Is a directory\n"
                          ": cannot be read: No such file or directory\n"
                          "/dev/zero: cannot be read: larger than 4194304 bytes\n");
    EXPECT_THAT(run.out, HasSubstr(good.name() + ": taken"));
}

TEST(CheckSdp, OptionsDescribeTheInstrument)
{
    const std::string hd = "a=fmtp:96 width=1920; height=1080;\n";
    const std::string uhd = "a=fmtp:96 width=3840; height=2160;\n";
    const auto status = [](std::vector<std::string> options, const std::string& sdp) {
        options.insert(options.begin(), {"check-sdp", "-"});
        return run_program(options, sdp).status;
    };
    EXPECT_EQ(status({}, hd), 0);
    EXPECT_EQ(status({}, uhd), 0);
    EXPECT_EQ(status({"--switch-capable", "--switch-allowed", "--current-format", "3"}, uhd), 0);
    EXPECT_EQ(status({"--no-switch-capable"}, uhd), 1);
    EXPECT_EQ(status({"--no-switch-allowed"}, uhd), 1);
    EXPECT_EQ(status({"--no-switch-capable", "--no-switch-allowed"}, hd), 0);
    EXPECT_EQ(status({"--current-format", "9", "--no-switch-allowed"}, uhd), 0);
    EXPECT_EQ(status({"--current-format", "9", "--no-switch-allowed"}, hd), 1);
    EXPECT_EQ(status({"--current-format", "1"}, uhd), 1);
    EXPECT_EQ(status({"--current-format", "-1"}, uhd), 0);
    EXPECT_EQ(status({"--current-format", "4k", "--no-switch-allowed"}, uhd), 0);
    EXPECT_EQ(status({"--current-format", "4k", "--no-switch-allowed"}, hd), 1);
    EXPECT_EQ(status({"--current-format", "2k"}, uhd), 1);
    EXPECT_EQ(status({"--current-format", "2k"}, hd), 0);
    EXPECT_EQ(status({"--current-format", "any"}, uhd), 0);
}

// What a file says may be meant for the terminal that it is shown on.
TEST(CheckSdp, ShowsNoControlCharactersOfTheFile)
{
    const std::string hostile = "c=IN IP4 10.0.0.1 \x1b[2J\0/64\nc=IN IP4 \x9b\xff/64\n"s;
    const ProgramRun run = run_program({"check-sdp", "-"}, hostile);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("10.0.0.1 \\x1b[2J\\x00"));
    EXPECT_THAT(run.out, HasSubstr("IN IP4 \\x9b\\xff is invalid multicast address."));
    EXPECT_THAT(run.out, Not(HasSubstr("\x1b")));

    const ProgramRun json = run_program({"check-sdp", "-", "--json"}, hostile);
    EXPECT_EQ(json.status, 1);
    EXPECT_TRUE(nlohmann::json::accept(json.out));
}

TEST(CheckSdp, TakesWhatPrintPrints)
{
    for (int sender = 0; sender < 6; ++sender) {
        const ProgramRun sdp = run_program({"print", "sdp", std::to_string(sender)});
        EXPECT_EQ(run_program({"check-sdp", "-"}, sdp.out).status, 0);
    }
}

} // namespace

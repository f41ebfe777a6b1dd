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

TEST(ParserOnly, ShowsWhatAReceiverFinds)
{
    const ProgramRun run = run_program({"check-sdp", "--parser-only", "-"}, good_sdp);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "standard input: taken\n"
                       "  leg        source           address          port\n"
                       "  primary    192.0.2.10       233.252.0.1      5004\n"
                       "  secondary  -                233.252.0.2      5006\n"
                       "  payload type   97\n");
    EXPECT_THAT(run.errors, IsEmpty());
}

TEST(ParserOnly, ShowsEachMessageOfARefusedFile)
{
    const TemporaryFile file("m=video 65536 RTP/AVP 96\na=fmtp:96 TCS=DENSITY;\n");
    const ProgramRun run = run_program({"check-sdp", "--parser-only", file.name()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, file.name() + ": refused\n"
                                     "  line 1: Destination Port 65536 is range over.\n"
                                     "  line 2: TCS= DENSITY is no support parameter.\n"
                                     "  leg        source           address          port\n"
                                     "  primary    -                -                -\n"
                                     "  secondary  -                -                -\n"
                                     "  payload type   96\n");
}

TEST(ParserOnly, AFileWithoutALineIsRefused)
{
    for (const char* const blank : {"", "\n", "\r\n\r\n", "  \t \n\n ", " "}) {
        const ProgramRun run = run_program({"check-sdp", "--parser-only", "-"}, blank);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out,
                  "standard input: refused\n"
                  "  the file has no line but empty ones: it is no SDP file, which begins with the "
                  "line v=0\n"
                  "  leg        source           address          port\n"
                  "  primary    -                -                -\n"
                  "  secondary  -                -                -\n");
        const ProgramRun in_json =
            run_program({"check-sdp", "--parser-only", "--format", "json", "-"}, blank);
        EXPECT_EQ(in_json.status, 1);
        const nlohmann::json report = nlohmann::json::parse(in_json.out);
        EXPECT_EQ(report.at("files").at(0).at("verdict"), "refused");
        EXPECT_THAT(report.at("files").at(0).at("cause").get<std::string>(),
                    HasSubstr("no SDP file"));
        EXPECT_EQ(report.at("files").at(0).at("format").at("depth"), nullptr);
    }
}

TEST(ParserOnly, AFileThatTheParserGivesUpOnIsRefused)
{
    const ProgramRun run =
        run_program({"check-sdp", "--parser-only", "-"}, "v=0\na=group:DUP one\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("standard input: refused\n  line 2 lacks its second value"));
    EXPECT_THAT(run.errors, IsEmpty());
}

TEST(ParserOnly, HintsAtAMissingLineBreak)
{
    const ProgramRun run = run_program({"check-sdp", "--parser-only", "-"}, good_sdp + "a=x"s);
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr("  hint: the file does not end with a line break: line 10 was "
                                   "read as the number 0, not as a line"));
}

TEST(ParserOnly, ReportsAsJson)
{
    const TemporaryFile file(good_sdp);
    const ProgramRun run =
        run_program({"check-sdp", "--parser-only", "--format", "json", file.name(), "-"},
                    "m=video 65536 RTP/AVP 96\n");
    EXPECT_EQ(run.status, 1);
    const nlohmann::json expected = nlohmann::json::parse(R"({
        "files": [
            {
                "file": "FILE", "verdict": "taken", "messages": [], "cause": null, "hints": [],
                "legs": [
                    { "leg": "primary", "source": "192.0.2.10", "address": "233.252.0.1",
                      "port": "5004" },
                    { "leg": "secondary", "source": null, "address": "233.252.0.2",
                      "port": "5006" }
                ],
                "format": {
                    "payload_type": "97", "sampling": null, "depth": null, "size": null,
                    "frame_rate": null, "colorimetry": null, "transfer_characteristic": null,
                    "packing_mode": null
                }
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
        ],
        "summary": { "files": 2, "taken": 1, "refused": 1, "not_readable": 0 }
    })");
    nlohmann::json report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report["files"][0]["file"], file.name());
    report["files"][0]["file"] = "FILE";
    EXPECT_EQ(report, expected);
}

TEST(ParserOnly, OptionsDescribeTheInstrument)
{
    const std::string hd = "a=fmtp:96 width=1920; height=1080;\n";
    const std::string uhd = "a=fmtp:96 width=3840; height=2160;\n";
    const auto status = [](std::vector<std::string> options, const std::string& sdp) {
        options.insert(options.begin(), {"check-sdp", "--parser-only", "-"});
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
TEST(ParserOnly, ShowsNoControlCharactersOfTheFile)
{
    const std::string hostile = "c=IN IP4 10.0.0.1 \x1b[2J\0/64\nc=IN IP4 \x9b\xff/64\n"s;
    const ProgramRun run = run_program({"check-sdp", "--parser-only", "-"}, hostile);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("10.0.0.1 \\x1b[2J\\x00"));
    EXPECT_THAT(run.out, HasSubstr("IN IP4 \\x9b\\xff is invalid multicast address."));
    EXPECT_THAT(run.out, Not(HasSubstr("\x1b")));

    const ProgramRun json =
        run_program({"check-sdp", "--parser-only", "-", "--format", "json"}, hostile);
    EXPECT_EQ(json.status, 1);
    EXPECT_TRUE(nlohmann::json::accept(json.out));
}

} // namespace

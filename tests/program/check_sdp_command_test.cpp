// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "run_program.h"
#include "support/temporary_folder.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using namespace std::string_literals;

const std::string good_sdp = "v=0\r\n"
                             "o=- 7 8 IN IP4 203.0.113.9\r\n"
                             "s=mixer\r\n"
                             "t=0 0\r\n"
                             "a=group:DUP one two\r\n"
                             "m=audio 5004 RTP/AVP 97\r\n"
                             "c=IN IP4 233.252.0.1/64\r\n"
                             "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.10\r\n"
                             "a=rtpmap:97 L24/48000/16\r\n"
                             "a=mid:one\r\n"
                             "m=audio 5006 RTP/AVP 97\r\n"
                             "c=IN IP4 233.252.0.2/64\r\n"
                             "a=rtpmap:97 L24/48000/16\r\n"
                             "a=mid:two\r\n";
/// One leg, sent to our address; an empty line, and no line break at the end.
const std::string unicast_sdp = "v=0\n"
                                "\n"
                                "s=mixer\n"
                                "m=audio 5004 RTP/AVP 97\n"
                                "a=rtpmap:97 L24/48000\n"
                                "c=IN IP4 192.0.2.10";
const std::string bad_sdp = "v=0\nm=video 65536 RTP/AVP 96\n";

TEST(CheckSdp, ShowsWhatAReceiverJoins)
{
    const ProgramRun run = run_program({"check-sdp", "-"}, good_sdp);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "standard input: taken\n"
                       "  leg  address          source           port   interface\n"
                       "  1    233.252.0.1      203.0.113.10     5004   media1 (192.0.2.10)\n"
                       "  2    233.252.0.2      any              5006   media2 (198.51.100.10)\n"
                       "  receiver       audio\n"
                       "  origin         - 7 8 IN IP4 203.0.113.9\n"
                       "  payload type   97\n");
    EXPECT_THAT(run.errors, IsEmpty());
}

TEST(CheckSdp, ShowsWarningsAndALegThatIsNotThere)
{
    const ProgramRun run = run_program({"check-sdp", "-"}, unicast_sdp);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "standard input: taken\n"
                       "  warning: line 2: SDP009: an empty line\n"
                       "  leg  address          source           port   interface\n"
                       "  1    192.0.2.10       any              5004   media1 (192.0.2.10)\n"
                       "  2    nothing          -                -      media2 (198.51.100.10)\n"
                       "  receiver       audio\n"
                       "  payload type   97\n");
}

TEST(CheckSdp, ShowsEachFindingOfARefusedFile)
{
    const TemporaryFile file(bad_sdp + "Hello\n");
    const ProgramRun run = run_program({"check-sdp", file.name()});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, StartsWith(file.name() + ": refused\n  line 2: SDP012: port \"65536\", "
                                                  "allowed: 1 to 65535"));
    EXPECT_THAT(run.out, HasSubstr("\n  line 3: SDP008: \"Hello\", allowed: "));
    EXPECT_THAT(run.out, Not(HasSubstr("leg")));
    EXPECT_THAT(run.out, HasSubstr("\n  receiver       video\n"));
}

TEST(CheckSdp, WhatIsNoSdpFileIsRefused)
{
    for (const std::string& bytes :
         {""s, "\n"s, "  \t \n\n "s, "\x7f"s + "ELF\x01\x02\0\0"s, "\xff\xfev\0=\0"s, "{\"v\": 0}"s,
          "v=0\n"s, std::string(5000, '\0')}) {
        const ProgramRun run = run_program({"check-sdp", "-"}, bytes);
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.out, StartsWith("standard input: refused\n  "));
        EXPECT_THAT(run.out, HasSubstr("SDP0"));
    }
}

TEST(CheckSdp, ReportsAsJson)
{
    const TemporaryFile good(good_sdp);
    const TemporaryFile unicast(unicast_sdp);
    const ProgramRun run = run_program(
        {"check-sdp", "--format", "json", good.name(), unicast.name(), "/no/such/file", "-"},
        "v=0\nm=audio 0 RTP/AVP 97\na=rtpmap:97 L24/48000\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.errors, IsEmpty());
    const nlohmann::json expected = nlohmann::json::parse(R"({
        "files": [
            {
                "file": "GOOD", "verdict": "taken", "receiver": "audio",
                "findings": [], "more_findings": 0,
                "legs": [
                    { "leg": 1, "address": "233.252.0.1", "multicast": true,
                      "source": "203.0.113.10", "port": 5004, "line": 6,
                      "interface": { "name": "media1", "address": "192.0.2.10" } },
                    { "leg": 2, "address": "233.252.0.2", "multicast": true,
                      "source": null, "port": 5006, "line": 11,
                      "interface": { "name": "media2", "address": "198.51.100.10" } }
                ],
                "origin": "- 7 8 IN IP4 203.0.113.9",
                "format": {
                    "payload_type": "97", "sampling": null, "depth": null, "size": null,
                    "frame_rate": null, "colorimetry": null, "transfer_characteristic": null,
                    "packing_mode": null
                },
                "hints": []
            },
            {
                "file": "UNICAST", "verdict": "taken", "receiver": "audio",
                "findings": [
                    { "line": 2, "code": "SDP009", "title": "There is an empty line",
                      "severity": "warning",
                      "text": "an empty line", "allowed": null }
                ],
                "more_findings": 0,
                "legs": [
                    { "leg": 1, "address": "192.0.2.10", "multicast": false,
                      "source": null, "port": 5004, "line": 4,
                      "interface": { "name": "media1", "address": "192.0.2.10" } }
                ],
                "origin": null,
                "format": {
                    "payload_type": "97", "sampling": null, "depth": null, "size": null,
                    "frame_rate": null, "colorimetry": null, "transfer_characteristic": null,
                    "packing_mode": null
                },
                "hints": []
            },
            {
                "file": "/no/such/file", "verdict": "not readable",
                "reason": "No such file or directory"
            }
        ],
        "summary": { "files": 4, "taken": 2, "refused": 1, "not_readable": 1 }
    })");
    nlohmann::json report = nlohmann::json::parse(run.out);
    ASSERT_EQ(report["files"].size(), 4U);
    const nlohmann::json refused = report["files"][3];
    report["files"].erase(3);
    EXPECT_EQ(report["files"][0]["file"], good.name());
    report["files"][0]["file"] = "GOOD";
    EXPECT_EQ(report["files"][1]["file"], unicast.name());
    report["files"][1]["file"] = "UNICAST";
    EXPECT_EQ(report, expected);

    EXPECT_EQ(refused["file"], "-");
    EXPECT_EQ(refused["verdict"], "refused");
    EXPECT_EQ(refused["receiver"], "video");
    EXPECT_THAT(refused["legs"], IsEmpty());
    EXPECT_EQ(refused["findings"][0]["severity"], "error");
}

TEST(CheckSdp, TheWorstFileDecidesTheStatus)
{
    const TemporaryFile good(good_sdp);
    const TemporaryFile bad(bad_sdp);
    EXPECT_EQ(run_program({"check-sdp", good.name(), good.name()}).status, 0);
    EXPECT_EQ(run_program({"check-sdp", bad.name(), good.name()}).status, 1);
    EXPECT_EQ(run_program({"check-sdp", good.name(), bad.name()}).status, 1);
    EXPECT_EQ(run_program({"check-sdp", "/no/such/file", bad.name(), good.name()}).status, 2);
}

TEST(CheckSdp, CountsSeveralFilesAtTheEnd)
{
    const TemporaryFile good(good_sdp);
    const TemporaryFile bad(bad_sdp);
    EXPECT_THAT(run_program({"check-sdp", good.name()}).out, Not(HasSubstr("files:")));
    EXPECT_THAT(
        run_program({"check-sdp", good.name(), bad.name(), "/no/such/file", good.name()}).out,
        EndsWith("\n4 files: 2 taken, 1 refused, 1 not readable\n"));
}

TEST(CheckSdp, QuietSaysOnlyWhatCannotBeRead)
{
    const TemporaryFile good(good_sdp);
    const TemporaryFile bad(bad_sdp);
    for (const char* const format : {"text", "json"}) {
        const ProgramRun run =
            run_program({"check-sdp", "--quiet", "--format", format, good.name(), bad.name()});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.out + run.errors, IsEmpty());
        const ProgramRun unreadable =
            run_program({"check-sdp", "--quiet", "--format", format, "/no/such/file"});
        EXPECT_EQ(unreadable.status, 2);
        EXPECT_THAT(unreadable.out, IsEmpty());
        EXPECT_EQ(unreadable.errors, "/no/such/file: cannot be read: No such file or directory\n");
    }
}

TEST(CheckSdp, ADirectoryStandsForTheSdpFilesInIt)
{
    const TemporaryFolder folder;
    const std::string name = folder.path();
    const auto empty = run_program({"check-sdp", name});
    EXPECT_EQ(empty.status, 2);
    EXPECT_EQ(empty.errors, name + ": cannot be read: no regular file in it or below it has a name "
                                   "that ends in \".sdp\"\n");
    std::ofstream(folder.path() / "b.sdp") << good_sdp;
    std::ofstream(folder.path() / "a.sdp") << bad_sdp;
    std::ofstream(folder.path() / "readme") << "no SDP file";
    const ProgramRun run = run_program({"check-sdp", name});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, StartsWith(name + "/a.sdp: refused\n"));
    EXPECT_THAT(run.out, HasSubstr("\n" + name + "/b.sdp: taken\n"));
    EXPECT_THAT(run.out, EndsWith("\n2 files: 1 taken, 1 refused, 0 not readable\n"));
}

TEST(CheckSdp, SaysWhyAFileIsNotReadableAndGoesOn)
{
    const TemporaryFile good(good_sdp);
    const TemporaryFile large(std::string((4U << 20) + 1, 'v'));
    const ProgramRun run = run_program({"check-sdp", "", large.name(), good.name()});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, ": cannot be read: No such file or directory\n" + large.name() +
                              ": cannot be read: larger than 4194304 bytes\n");
    EXPECT_THAT(run.out, HasSubstr(good.name() + ": taken"));
}

TEST(CheckSdp, AFileNameCannotMoveTheCursor)
{
    const ProgramRun run = run_program({"check-sdp", "/nowhere/\x1b[2J"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.errors, HasSubstr("/nowhere/\\x1b[2J: cannot be read"));
}

// What a file says may be meant for the terminal that it is shown on.
TEST(CheckSdp, ShowsNoControlCharactersOfTheFile)
{
    const std::string hostile =
        "v=0\no=\x1b[2J \xc2\x9b\xe2\x80\xae\nm=\x1b[2J 5004 RTP/AVP 96\nc=IN IP4 \x1b/64\n";
    const ProgramRun run = run_program({"check-sdp", "-"}, hostile);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("  origin         \\x1b[2J \\xc2\\x9b\\xe2\\x80\\xae\n"));
    for (const char c : run.out)
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));

    const ProgramRun json = run_program({"check-sdp", "-", "--format", "json"}, hostile);
    EXPECT_EQ(json.status, 1);
    for (const char c : json.out)
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    EXPECT_EQ(nlohmann::json::parse(json.out)["files"][0]["origin"],
              "\x1b[2J \xc2\x9b\xe2\x80\xae");
    const ProgramRun no_utf8 = run_program({"check-sdp", "-", "--format", "json"}, "v=0\no=\xff\n");
    EXPECT_EQ(nlohmann::json::parse(no_utf8.out)["files"][0]["origin"], "\xef\xbf\xbd");
}

TEST(CheckSdp, TakesWhatPrintPrints)
{
    for (const char* const kind : {"video", "audio", "ancillary"}) {
        for (int sender = 0; sender < 6; ++sender) {
            const ProgramRun sdp = run_program({"print", "sdp", std::to_string(sender)});
            const std::string sent = sender < 4 ? "video" : sender == 4 ? "audio" : "ancillary";
            EXPECT_EQ(run_program({"check-sdp", "-"}, sdp.out).status, 0);
            EXPECT_EQ(run_program({"check-sdp", "--receiver", kind, "-"}, sdp.out).status,
                      kind == sent ? 0 : 1);
        }
    }
}

TEST(CheckSdp, UsesAConfiguration)
{
    const TemporaryFile elsewhere(R"({"interfaces": [
        {"name": "left", "mac": "00-00-5e-00-53-01", "chassis_id": null, "address": "203.0.113.1"},
        {"name": "right", "mac": "00-00-5e-00-53-02", "chassis_id": null, "address": "203.0.113.2"}
    ]})");
    const ProgramRun run = run_program({"check-sdp", "--config", elsewhere.name(), "-"}, good_sdp);
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr("left (203.0.113.1)\n"));
    EXPECT_EQ(run_program({"check-sdp", "--config", elsewhere.name(), "-"}, unicast_sdp).status, 1);

    const std::string video_only = EXAMPLES_DIRECTORY "/single-stream-video.json";
    const ProgramRun hidden =
        run_program({"check-sdp", "--config", video_only, "--receiver", "audio", "-"}, good_sdp);
    EXPECT_EQ(hidden.status, 3);
    EXPECT_EQ(hidden.errors, "--receiver: found \"audio\", allowed: video: the configuration shows "
                             "no other receivers\n");
    const ProgramRun by_default = run_program({"check-sdp", "--config", video_only, "-"}, good_sdp);
    EXPECT_EQ(by_default.status, 1);
    EXPECT_THAT(by_default.out, HasSubstr("  hint: the configuration shows no receivers of kind "
                                          "audio, so one of kind video was asked\n"));

    const TemporaryFile bad("{");
    EXPECT_EQ(run_program({"check-sdp", "--config", bad.name(), "-"}, good_sdp).status, 1);
    EXPECT_EQ(run_program({"check-sdp", "--config", "/no/such/file", "-"}, good_sdp).status, 2);
    EXPECT_EQ(run_program({"check-sdp", "--check-config"}).status, 0);
    EXPECT_THAT(run_program({"check-sdp", "--print-config"}).out, HasSubstr("\"interfaces\""));
}

TEST(CheckSdp, ExplainsACode)
{
    for (const char* const code : {"SDP009", "sdp009"}) {
        const ProgramRun run = run_program({"check-sdp", "--explain", code});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, "SDP009 (warning): There is an empty line.\n"
                           "RFC 4566 has no empty lines. They are left out; only the first is "
                           "named.\n");
    }
    EXPECT_THAT(run_program({"check-sdp", "--explain", "SDP048"}).out,
                StartsWith("SDP048 (error): "));
}

TEST(CheckSdp, TheManualHasTheTableOfAllCodes)
{
    std::ifstream file(MANUAL_DIRECTORY "/check-sdp.md");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    const ProgramRun table = run_program({"check-sdp", "--explain", "all"});
    EXPECT_EQ(table.status, 0);
    EXPECT_THAT(table.out, HasSubstr("\n| SDP009 | warning | There is an empty line | RFC 4566 has "
                                     "no empty lines. "));
    EXPECT_TRUE(page.ends_with("\n\n" + table.out))
        << "docs/check-sdp.md must end with what check-sdp --explain all prints";
}

} // namespace

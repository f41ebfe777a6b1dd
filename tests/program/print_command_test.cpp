// SPDX-License-Identifier: Apache-2.0

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "run_program.h"

namespace {

using testing::AllOf;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

std::string printed(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "print");
    const ProgramRun run = run_program(arguments);
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_THAT(run.errors, IsEmpty());
    return run.out;
}

/// A line of --list.
struct ListedText
{
    std::vector<std::string> words;
    int count = 0; ///< of indices; 0 when it takes none
};

std::vector<ListedText> listed_texts()
{
    std::vector<ListedText> texts;
    std::istringstream list(printed({"--list"}));
    for (std::string line; std::getline(list, line);) {
        ListedText text;
        std::istringstream name(line.substr(0, line.find("  ")));
        std::string word;
        while (name >> word && word != "INDEX")
            text.words.push_back(word);
        if (word == "INDEX") {
            const std::string range = line.substr(line.find('(') + 1);
            const std::size_t to = range.find(" to ");
            text.count = 1 + (to < range.find(')') ? std::stoi(range.substr(to + 4)) : 0);
        }
        texts.push_back(text);
    }
    return texts;
}

TEST(Print, ListsEveryTextWithItsIndices)
{
    std::vector<std::string> names;
    for (const ListedText& text : listed_texts()) {
        std::string name = text.words[0];
        if (text.words.size() > 1)
            name += ' ' + text.words[1];
        if (text.count > 0)
            name += ' ' + std::to_string(text.count);
        names.push_back(name);
    }
    EXPECT_THAT(names, ElementsAreArray({
                           "self",
                           "sources",
                           "source 3",
                           "flows",
                           "flow 3",
                           "devices",
                           "device 1",
                           "senders",
                           "sender 6",
                           "receivers",
                           "receiver 24",
                           "target 6",
                           "resource-node",
                           "resource-sources",
                           "resource-source 3",
                           "resource-flows",
                           "resource-flow 3",
                           "resource-devices",
                           "resource-device 1",
                           "resource-senders",
                           "resource-sender 6",
                           "resource-receivers",
                           "resource-receiver 24",
                           "health",
                           "single-senders",
                           "single-receivers",
                           "senders-constraints 6",
                           "senders-staged 6",
                           "senders-active 6",
                           "receivers-constraints 24",
                           "receivers-staged 24",
                           "receivers-active 24",
                           "sdp 6",
                           "service",
                           "params",
                           "root",
                           "root x-nmos",
                           "root node",
                           "root node/v1.2",
                           "root registration",
                           "root registration/v1.2",
                           "root connection",
                           "root connection/v1.0",
                           "root connection/v1.0/bulk",
                           "root connection/v1.0/bulk/senders",
                           "root connection/v1.0/bulk/receivers",
                           "root connection/v1.0/single",
                           "root connection/v1.0/single/senders/id",
                           "root connection/v1.0/single/receivers/id",
                       }));
}

// Indented or not it must be the same JSON; and what is not JSON must be the same bytes.
TEST(Print, PrintsEveryListedTextInBothWays)
{
    for (const ListedText& text : listed_texts()) {
        std::vector<std::string> arguments = text.words;
        if (text.count > 0)
            arguments.push_back(std::to_string(text.count - 1));
        const std::string plain = printed(arguments);
        arguments.emplace_back("--pretty");
        const std::string pretty = printed(arguments);
        if (text.words[0] == "health") {
            EXPECT_EQ(plain, "");
        } else {
            EXPECT_NE(plain, "") << text.words[0];
        }
        if (nlohmann::json::accept(plain)) {
            EXPECT_EQ(nlohmann::json::parse(plain), nlohmann::json::parse(pretty));
        } else {
            EXPECT_EQ(plain, pretty);
        }
    }
}

TEST(Print, AddsNothingToTheLibrarysBytes)
{
    EXPECT_EQ(printed({"self"}),
              R"({"api":{"endpoints":[{"host":"127.0.0.1","port":3000,"protocol":"http"}],)"
              R"("versions":["v1.2"]},"caps":{},"clocks":[{"gmid":"00-00-5e-ff-fe-00-53-ff",)"
              R"("locked":true,"name":"clk0","ref_type":"ptp","traceable":true,)"
              R"("version":"IEEE1588-2008"}],)"
              R"("description":"IP video, audio and ancillary data measuring instrument",)"
              R"("hostname":"nmos-instrument","href":"http://127.0.0.1:3000/",)"
              R"("id":"1177556d-baaa-5aa4-a170-8a0f7ed5483c","interfaces":[)"
              R"({"chassis_id":"00-00-5e-00-53-00","name":"media1",)"
              R"("port_id":"00-00-5e-00-53-01"},)"
              R"({"chassis_id":"00-00-5e-00-53-00","name":"media2",)"
              R"("port_id":"00-00-5e-00-53-02"}],"label":"QX3100/QX3300","services":[],)"
              R"("tags":{},"version":"1735689637:0"})");
    EXPECT_EQ(printed({"root", "node"}), "[\n    \"v1.2/\"\n]\n");
    EXPECT_EQ(printed({"root"}), "[\n    \"x-nmos/\"\n]\n");
    EXPECT_EQ(printed({"root x-nmos"}),
              "[\n    \"node/\",\n    \"registration/\",\n    \"connection/\"\n]\n");
}

TEST(Print, PrintsAnSdpFileWithItsLineEnds)
{
    EXPECT_EQ(printed({"sdp", "4"}), "v=0\r\n"
                                     "o=HALDEN 2865008721738225700 1735689637 IN IP4 192.0.2.10\r\n"
                                     "s=QX3100 OPT21/22\r\n"
                                     "t=0 0\r\n"
                                     "a=group:DUP primary secondary\r\n"
                                     "m=audio 5004 RTP/AVP 97\r\n"
                                     "c=IN IP4 233.252.0.15/64\r\n"
                                     "a=rtpmap:97 L24/48000/16\r\n"
                                     "a=ptime:0.125\r\n"
                                     "a=source-filter: incl IN IP4 233.252.0.15 192.0.2.10\r\n"
                                     "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
                                     "a=mediaclk:direct=0\r\n"
                                     "a=mid:primary\r\n"
                                     "m=audio 5004 RTP/AVP 97\r\n"
                                     "c=IN IP4 233.252.0.25/64\r\n"
                                     "a=rtpmap:97 L24/48000/16\r\n"
                                     "a=ptime:0.125\r\n"
                                     "a=source-filter: incl IN IP4 233.252.0.25 198.51.100.10\r\n"
                                     "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
                                     "a=mediaclk:direct=0\r\n"
                                     "a=mid:secondary\r\n");
}

TEST(Print, IndentsForReading)
{
    EXPECT_EQ(printed({"source", "1", "--pretty"}),
              "{\n"
              "    \"caps\": {},\n"
              "    \"channels\": [\n"
              "        {\n"
              "            \"label\": \"\"\n"
              "        }\n"
              "    ],\n"
              "    \"clock_name\": \"clk0\",\n"
              "    \"description\": \"Audio generated by the instrument\",\n"
              "    \"device_id\": \"663a44cc-81c6-5258-bcff-d40438c7c00d\",\n"
              "    \"format\": \"urn:x-nmos:format:audio\",\n"
              "    \"id\": \"87b08a58-1f8e-5c30-bb8e-66690e5a500c\",\n"
              "    \"label\": \"Source for Audio\",\n"
              "    \"parents\": [],\n"
              "    \"tags\": {},\n"
              "    \"version\": \"1735689637:0\"\n"
              "}\n");
}

TEST(Print, TheListingThatIsNoJsonKeepsItsComma)
{
    const std::string listing = printed({"single-receivers", "--receiver-filter", "1"});
    EXPECT_THAT(listing, testing::EndsWith("/\",\n]\n"));
    EXPECT_EQ(printed({"single-receivers", "--receiver-filter", "1", "--pretty"}), listing);
}

std::size_t listed_in(const std::vector<std::string>& arguments)
{
    return nlohmann::json::parse(printed(arguments)).size();
}

TEST(Print, SelectorsDecideWhatIsShown)
{
    EXPECT_EQ(listed_in({"senders"}), 6U);
    EXPECT_EQ(listed_in({"senders", "--sender-filter", "0"}), 3U);
    EXPECT_EQ(listed_in({"senders", "--sender-filter", "-1"}), 6U);
    EXPECT_EQ(listed_in({"receivers"}), 24U);
    EXPECT_EQ(listed_in({"receivers", "--audio-group-filter", "0"}), 12U);
    EXPECT_EQ(listed_in({"receivers", "--audio-group-filter=1"}), 16U);
    EXPECT_EQ(listed_in({"receivers", "--receiver-filter", "1"}), 4U);
    EXPECT_EQ(listed_in({"resource-receivers", "--receiver-filter", "1"}), 24U);
    EXPECT_EQ(listed_in({"single-senders", "--sender-filter", "0"}), 3U);
    const nlohmann::json device = nlohmann::json::parse(
        printed({"device", "0", "--receiver-filter", "1", "--sender-filter", "0"}));
    EXPECT_EQ(device["senders"].size(), 3U);
    EXPECT_EQ(device["receivers"].size(), 4U);
}

TEST(Print, TakesAConfiguration)
{
    const TemporaryFile file("// Studio 2\n{\"node\": {\"label\": \"Studio 2\"},"
                             " \"server\": {\"address\": \"192.0.2.7\", \"port\": 8080},"
                             " \"streams\": {\"senders\": \"stream 1\"}}\n");
    EXPECT_THAT(printed({"self", "--config", file.name()}),
                AllOf(HasSubstr(R"("label":"Studio 2")"),
                      HasSubstr(R"("href":"http://192.0.2.7:8080/")"),
                      HasSubstr(R"({"host":"192.0.2.7","port":8080,"protocol":"http"})")));
    EXPECT_THAT(printed({"service", "--config", file.name()}), HasSubstr("<port>8080</port>"));
    EXPECT_EQ(listed_in({"senders", "--config", file.name()}), 3U);
    EXPECT_EQ(listed_in({"senders", "--config", file.name(), "--sender-filter", "1"}), 6U);
}

TEST(Print, ConstraintsNameTheInterfacesOfTheConfiguration)
{
    const TemporaryFile file(
        R"({"interfaces": [{"address": "10.0.0.1"}, {"address": "10.0.1.1"}]})");
    for (const char* const text : {"senders-constraints", "receivers-constraints"})
        EXPECT_THAT(printed({text, "0", "--config", file.name()}),
                    AllOf(HasSubstr("        \"10.0.0.1\""), HasSubstr("        \"10.0.1.1\"")));
}

TEST(Print, TheIndexEndsWithWhatTheConfigurationHas)
{
    const std::string example = EXAMPLES_DIRECTORY "/video-senders-only.json";
    const ProgramRun run = run_program({"print", "sdp", "4", "--config", example});
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.errors, HasSubstr("(0 to 3)"));
}

TEST(Print, ARefusedConfigurationIsStatus1)
{
    const TemporaryFile file(R"({"server": {"port": 0}, "video": {"lines": 480}})");
    for (const char* const what : {"self", "--list", "--check-config", "--print-config"}) {
        const ProgramRun run = run_program({"print", what, "--config", file.name()});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errors, file.name() + ": /server/port: found 0, allowed: 1 to 65535\n" +
                                  file.name() +
                                  ": /video/lines: found 480, allowed: 2160, 1080, 720\n");
        EXPECT_THAT(run.out, IsEmpty());
    }
}

TEST(Print, AnUnreadableConfigurationIsStatus2)
{
    for (const char* const name : {"/no/such/file", ""}) {
        const ProgramRun run = run_program({"print", "self", "--config", name});
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.errors, "--config " + std::string(name) + ": No such file or directory\n");
    }
    EXPECT_THAT(run_program({"print", "self", "--config", "/"}).errors,
                HasSubstr("--config /: Is a directory"));
}

TEST(Print, PrintsAConfigurationThatItTakesAgain)
{
    const std::string example = EXAMPLES_DIRECTORY "/st-2022-6.json";
    const std::string complete = printed({"--print-config", "--config", example});
    EXPECT_THAT(complete, AllOf(HasSubstr("\"serial_number\": \"QX0000003\""),
                                HasSubstr("\"video\": 98"), HasSubstr("\"port\": 3000")));
    const TemporaryFile file(complete);
    EXPECT_EQ(printed({"--print-config", "--config", file.name()}), complete);
    EXPECT_EQ(printed({"--check-config", "--config", file.name()}), "");
}

} // namespace

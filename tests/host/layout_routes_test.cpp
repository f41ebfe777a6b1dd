// SPDX-License-Identifier: Apache-2.0

#include "routes/router.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "instrument/adopt_records.h"
#include "records/record_text.h"
#include "routes/routes.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::ordered_json;
using testing::ElementsAre;
using testing::StartsWith;

/// What "/layout" says.
std::string layout_text(Instrument& instrument)
{
    HttpClient client{Log()};
    ManifestFetcher manifests(client, ManifestHosts({}, {0x7f000000, 8}, {}));
    ClientLog log{Log()};
    RequestCounts counts(all_routes().paths());
    RecentRefusals refusals;
    const Router router(
        {instrument, manifests, log, counts, refusals, nullptr, ChangePermission()});
    HttpRequest request;
    request.method = "GET";
    request.path = "/layout";
    HttpResponse answer;
    router.handle(request, [&](HttpResponse response) { answer = std::move(response); });
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.content_type, "application/json");
    return answer.body;
}

std::string layout_text(const Configuration& configuration)
{
    Instrument instrument(configuration, NodeAddress(), tai_now, Log());
    return layout_text(instrument);
}

/// A line for each sender or receiver of a stream, counted from 1: "audio G2: IP Stream 1 ...", and
/// behind it why it is hidden.
std::vector<std::string> lines(const std::string& layout, std::size_t stream, const char* side)
{
    std::vector<std::string> all;
    const ordered_json document = ordered_json::parse(layout);
    EXPECT_EQ(document["streams"].size(), 4U);
    const ordered_json& entry = document["streams"][stream - 1];
    EXPECT_EQ(entry["stream"], stream);
    for (const ordered_json& resource : entry[side]) {
        std::string line = resource["essence"].get<std::string>();
        if (!resource["group"].is_null())
            line += ' ' + resource["group"].get<std::string>();
        line += ": ";
        line += resource["label"].is_null() ? "null" : resource["label"].get<std::string>();
        if (!resource["hidden"].is_null())
            line += "; " + resource["hidden"].get<std::string>();
        all.push_back(line);
        EXPECT_EQ(resource["id"].is_null(), resource["label"].is_null());
        EXPECT_EQ(resource["id"].is_null() ? 36U : resource["id"].get<std::string>().size(), 36U);
    }
    return all;
}

TEST(LayoutRoutes, Text)
{
    EXPECT_THAT(layout_text(Configuration()), StartsWith(R"({
 "streams": [
  {
   "stream": 1,
   "senders": [
    {
     "id": ")"));
    EXPECT_THAT(layout_text(Configuration()), testing::HasSubstr(R"(",
     "essence": "video",
     "group": null,
     "label": "IP Stream 1 Video Sender",
     "hidden": null
    },
)"));
    EXPECT_THAT(layout_text(Configuration()), testing::EndsWith(R"(
 ],
 "interfaces": [
  {
   "name": "media1",
   "address": "192.0.2.10"
  },
  {
   "name": "media2",
   "address": "198.51.100.10"
  }
 ]
}
)"));
}

TEST(LayoutRoutes, Everything)
{
    const std::string layout = layout_text(Configuration());
    EXPECT_THAT(lines(layout, 1, "senders"),
                ElementsAre("video: IP Stream 1 Video Sender", "audio: IP Stream 1 Audio Sender",
                            "ancillary: IP Stream 1 ANCILLARY Sender"));
    EXPECT_THAT(lines(layout, 2, "senders"), ElementsAre("video: IP Stream 2 Video Sender"));
    EXPECT_THAT(lines(layout, 4, "senders"), ElementsAre("video: IP Stream 4 Video Sender"));
    EXPECT_THAT(
        lines(layout, 1, "receivers"),
        ElementsAre("video: IP Stream 1 for Video", "audio G1: IP Stream 1 G1 for Audio",
                    "audio G2: IP Stream 1 G2 for Audio", "audio G3: IP Stream 1 G3 for Audio",
                    "audio G4: IP Stream 1 G4 for Audio", "ancillary: IP Stream 1 for ANCILLARY"));
    EXPECT_THAT(
        lines(layout, 4, "receivers"),
        ElementsAre("video: IP Stream 4 for Video", "audio G1: IP Stream 4 G1 for Audio",
                    "audio G2: IP Stream 4 G2 for Audio", "audio G3: IP Stream 4 G3 for Audio",
                    "audio G4: IP Stream 4 G4 for Audio", "ancillary: IP Stream 4 for ANCILLARY"));
}

TEST(LayoutRoutes, WhatTheConfigurationHides)
{
    Configuration configuration;
    configuration.streams.senders = SenderStreams::stream_1;
    configuration.streams.sender_essences = Essences::video_only;
    configuration.streams.audio_groups = AudioGroups::g1_and_g2;
    const std::string layout = layout_text(configuration);
    EXPECT_THAT(
        lines(layout, 1, "senders"),
        ElementsAre(
            "video: IP Stream 1 Video Sender",
            R"(audio: null; streams.sender_essences is "video only": only senders of video)",
            R"(ancillary: null; streams.sender_essences is "video only": only senders )"
            "of video"));
    EXPECT_THAT(lines(layout, 3, "senders"),
                ElementsAre(R"(video: IP Stream 3 Video Sender; streams.senders is "stream 1": )"
                            "of the video senders only that of stream 1"));
    EXPECT_THAT(
        lines(layout, 2, "receivers"),
        ElementsAre("video: IP Stream 2 for Video", "audio G1: IP Stream 2 G1 for Audio",
                    "audio G2: IP Stream 2 G2 for Audio",
                    "audio G3: IP Stream 2 G3 for Audio; streams.audio_groups is 2: only groups G1 "
                    "and G2",
                    "audio G4: IP Stream 2 G4 for Audio; streams.audio_groups is 2: only groups G1 "
                    "and G2",
                    "ancillary: IP Stream 2 for ANCILLARY"));

    configuration.streams.audio_groups = AudioGroups::g1;
    EXPECT_EQ(lines(layout_text(configuration), 3, "receivers")[2],
              "audio G2: IP Stream 3 G2 for Audio; streams.audio_groups is 1: only group G1");
    configuration.streams.receiver_essences = Essences::video_only;
    const std::vector<std::string> receivers = lines(layout_text(configuration), 3, "receivers");
    EXPECT_EQ(receivers[0], "video: IP Stream 3 for Video");
    EXPECT_EQ(receivers[1], R"(audio G1: IP Stream 3 G1 for Audio; streams.receiver_essences is )"
                            R"("video only": only receivers of video)");
    EXPECT_EQ(receivers[5], R"(ancillary: IP Stream 3 for ANCILLARY; streams.receiver_essences )"
                            R"(is "video only": only receivers of video)");
}

// Somebody else's records need not have what the selection hides.
TEST(LayoutRoutes, SlotsThatAreNotThere)
{
    FilledRecords filled = filled_records(Configuration(), NodeAddress(), {1000, 0});
    Records& records = *filled.records;
    records.selection = {1, 2, 0};
    records.node.senders[1] = SENDER_IS04_ST();
    set_text(records.node.devices[0].senders[1], "");
    records.node.receivers_count = 4;
    records.node.devices[0].receiver_ids_count = 4;
    Instrument instrument(adopt_records(records.node, records.connections, records.settings,
                                        records.selection, Configuration(), NodeAddress(),
                                        {1000, 0}),
                          NodeAddress(), tai_now, Log());
    const std::string layout = layout_text(instrument);
    EXPECT_THAT(
        lines(layout, 2, "senders"),
        ElementsAre("video: null; streams.senders is \"stream 1\": of the video senders only "
                    "that of stream 1"));
    EXPECT_THAT(lines(layout, 2, "receivers"),
                ElementsAre("video: IP Stream 2 for Video",
                            StartsWith("audio G1: null; streams.receiver_essences is"),
                            StartsWith("audio G2: null; "), StartsWith("audio G3: null; "),
                            StartsWith("audio G4: null; "), StartsWith("ancillary: null; ")));
    instrument.change_records(
        [](Records& its) { set_text(its.node.receivers[1].label, "Camera 2"); });
    EXPECT_THAT(lines(layout_text(instrument), 2, "receivers"),
                testing::Contains("video: Camera 2"));
}

} // namespace
} // namespace nmos_instrument::host

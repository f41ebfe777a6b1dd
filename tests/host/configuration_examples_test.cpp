// SPDX-License-Identifier: Apache-2.0
//
// The configurations that we give away as examples.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "configuration/configuration.h"
#include "records/fill_records.h"
#include "records/stream_selection.h"
#include "text/whole_file.h"

namespace nmos_instrument::host {
namespace {

Configuration example(const std::string& name)
{
    return load_configuration(std::string(EXAMPLES_DIRECTORY) + '/' + name);
}

// The other examples send their readers there.
TEST(DefaultExample, ExplainsEveryKeyAndChangesNothing)
{
    EXPECT_EQ(example("default.json"), Configuration());
    EXPECT_EQ(read_whole_file(EXAMPLES_DIRECTORY "/default.json", 1'000'000),
              explain_configuration(Configuration()))
        << "nmos-instrument print --print-config >docs/examples/default.json";
}

TEST(SingleStreamVideoExample, ShowsOneSenderAndFourReceivers)
{
    const auto records = make_records(example("single-stream-video.json"), NodeAddress(), {});
    EXPECT_EQ(records->selection, (StreamSelection{1, 0, 0}));
    EXPECT_EQ(records->node.senders_count, 4);
    EXPECT_EQ(records->node.flows_count, 1);
    EXPECT_EQ(records->node.flows[0].frame_height, 2160);
}

TEST(St2022_6Example, IsInterlacedVideoOfPayloadType98)
{
    const Configuration configuration = example("st-2022-6.json");
    EXPECT_EQ(configuration.carriage, Carriage::st2022_6);
    EXPECT_EQ(configuration.payload_types.video, 98);
    EXPECT_EQ(configuration.video.frame_rate, FrameRate::fps_29_97);
}

TEST(VideoSendersOnlyExample, HasFourSendersAndAllReceivers)
{
    const auto records = make_records(example("video-senders-only.json"), NodeAddress(), {});
    EXPECT_EQ(records->selection, (StreamSelection{0, 1, 1}));
    EXPECT_EQ(records->node.senders_count, 4);
    EXPECT_EQ(records->node.receivers_count, 24);
    EXPECT_STREQ(records->node.clocks[0].ref_type, "internal");
}

// Two instruments of one serial number cannot live in one network.
TEST(Examples, AllHaveTheirOwnSerialNumber)
{
    std::vector<std::string> serial_numbers;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLES_DIRECTORY)) {
        if (entry.path().extension() == ".json")
            serial_numbers.push_back(example(entry.path().filename().string()).serial_number);
    }
    EXPECT_THAT(serial_numbers,
                testing::UnorderedElementsAre("QX0000001", "QX0000002", "QX0000003", "QX0000004"));
}

} // namespace
} // namespace nmos_instrument::host

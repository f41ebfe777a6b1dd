// SPDX-License-Identifier: Apache-2.0
//
// The state file in a folder that can be moved away, which is like a full disk.

#include "instrument/state_file.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "support/temporary_folder.h"
#include "text/whole_file.h"

namespace nmos_instrument::host {
namespace {

using testing::HasSubstr;

class StateFileTest : public testing::Test
{
protected:
    StateFileTest() { std::filesystem::create_directory(present_); }

    void change(int port)
    {
        ConnectionPatch patch;
        patch.legs[0].destination_port = port;
        ASSERT_FALSE(instrument_.change({Side::receiver, 0}, patch).is_refusal());
    }

    std::string content() const { return read_whole_file(file_, 1'000'000); }

    std::string expected() { return write_saved_state(instrument_.saved_state()); }

    static std::string outcome_of(StateFile& state_file)
    {
        const auto outcome = std::make_shared<std::promise<std::string>>();
        std::future<std::string> future = outcome->get_future();
        state_file.when_saved(
            [outcome](const std::string& trouble) { outcome->set_value(trouble); });
        if (future.wait_for(std::chrono::seconds(20)) != std::future_status::ready)
            return "no answer";
        return future.get();
    }

    static bool is_well_soon(StateFile& state_file)
    {
        for (int i = 0; i < 2000 && !state_file.trouble().empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return state_file.trouble().empty();
    }

    const TemporaryFolder folder_;
    const std::filesystem::path present_ = folder_.path() / "present";
    const std::filesystem::path away_ = folder_.path() / "away";
    const std::string file_ = present_ / "state";
    Instrument instrument_{Configuration(), NodeAddress(), [] { return TaiTime{1000, 0}; }, Log()};
};

TEST_F(StateFileTest, TriesAgainUntilTheChangeIsSaved)
{
    StateFile state_file(ReplacedFile(file_), instrument_, Log());
    instrument_.listen({[&] { state_file.changed(); }, {}});
    EXPECT_EQ(content(), expected());
    change(6000);
    EXPECT_EQ(outcome_of(state_file), "");
    EXPECT_EQ(content(), expected());

    std::filesystem::rename(present_, away_);
    change(6001);
    EXPECT_THAT(outcome_of(state_file), HasSubstr("No such file or directory"));
    EXPECT_THAT(state_file.trouble(), HasSubstr("No such file or directory"));
    change(6002);
    // There is no point in waiting for what is known.
    EXPECT_THAT(outcome_of(state_file), HasSubstr("No such file or directory"));

    std::filesystem::rename(away_, present_);
    EXPECT_TRUE(is_well_soon(state_file));
    EXPECT_EQ(outcome_of(state_file), "");
    EXPECT_EQ(content(), expected());
    EXPECT_TRUE(state_file.finish());
}

TEST_F(StateFileTest, TriesOnceMoreAtTheEnd)
{
    StateFilePatience patience;
    patience.first_pause = patience.longest_pause = std::chrono::hours(1);
    StateFile state_file(ReplacedFile(file_), instrument_, Log(), patience);
    instrument_.listen({[&] { state_file.changed(); }, {}});
    std::filesystem::rename(present_, away_);
    change(6001);
    EXPECT_NE(outcome_of(state_file), "");
    std::filesystem::rename(away_, present_);
    EXPECT_NE(content(), expected());
    EXPECT_TRUE(state_file.finish());
    EXPECT_EQ(content(), expected());
}

TEST_F(StateFileTest, TellsAtTheEndWhatIsNotSaved)
{
    StateFile state_file(ReplacedFile(file_), instrument_, Log());
    instrument_.listen({[&] { state_file.changed(); }, {}});
    std::filesystem::rename(present_, away_);
    change(6001);
    EXPECT_FALSE(state_file.finish());
    EXPECT_FALSE(state_file.finish()) << "the answer stays";
    EXPECT_NE(outcome_of(state_file), "") << "nobody is left without an answer";
}

TEST_F(StateFileTest, AnAnswerThatThrowsEndsNothing)
{
    StateFile state_file(ReplacedFile(file_), instrument_, Log());
    instrument_.listen({[&] { state_file.changed(); }, {}});
    std::filesystem::rename(present_, away_);
    // The thread of the state file cannot begin before the instrument is free again.
    instrument_.read([&](Records&) {
        state_file.changed();
        state_file.when_saved([](const std::string&) { throw std::bad_alloc(); });
    });
    EXPECT_NE(outcome_of(state_file), "");
    std::filesystem::rename(away_, present_);
    EXPECT_TRUE(is_well_soon(state_file));
    EXPECT_TRUE(state_file.finish());
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "advertisement/advertisement.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/service_text.h"
#include "support/temporary_folder.h"
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr seconds patience{20};

class AdvertisementTest : public testing::Test
{
protected:
    AdvertisementTest() { file_ = folder_.path() / "nmos-node.service"; }

    AdvertisementSettings settings(Advertise when) const { return {file_.string(), when}; }

    /// Nothing if there is no file.
    std::optional<std::string> text() const
    {
        std::ifstream file(file_);
        if (!file)
            return std::nullopt;
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    /// Whether it becomes true before patience ends.
    template <class Condition>
    static bool comes(Condition condition)
    {
        for (const auto end = Clock::now() + patience; Clock::now() < end;) {
            if (condition())
                return true;
            std::this_thread::sleep_for(milliseconds(2));
        }
        return condition();
    }

    bool is_written(const std::string& expected) const
    {
        return comes([&] { return text() == expected; });
    }

    bool is_removed() const
    {
        return comes([&] { return !std::filesystem::exists(file_); });
    }

    void activate()
    {
        ConnectionPatch patch;
        patch.activation = ActivationRequest{ActivationMode::immediate, {}, {}};
        ASSERT_FALSE(instrument_.change({Side::receiver, 0}, patch).is_refusal());
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }

    TemporaryFolder folder_;
    std::filesystem::path file_;
    Instrument instrument_{Configuration(),
                           {"192.0.2.10", 3000},
                           [] {
                               return TaiTime{1, 0};
                           },
                           Log()};
};

TEST_F(AdvertisementTest, AlwaysIsFromTheStartToTheEnd)
{
    const mode_t before = umask(0077);
    {
        Advertisement advertisement(instrument_, settings(Advertise::always), Log());
        ASSERT_TRUE(is_written(fresh_service));
        ASSERT_TRUE(comes([&] { return advertisement.status().present; }));
        EXPECT_EQ(advertisement.status().state, "advertised");
        EXPECT_EQ(advertisement.status().file, file_.string());
        EXPECT_EQ(advertisement.status().trouble, "");
        EXPECT_THAT(names(), testing::ElementsAre("nmos-node.service"));
        EXPECT_EQ(std::filesystem::status(file_).permissions(),
                  static_cast<std::filesystem::perms>(0644));
        advertisement.has_registry(true); // which does not matter
        EXPECT_EQ(advertisement.status().state, "advertised");
    }
    umask(before);
    EXPECT_THAT(names(), testing::IsEmpty());
}

TEST_F(AdvertisementTest, PeerToPeerIsWhileThereIsNoRegistry)
{
    Advertisement advertisement(instrument_, settings(Advertise::peer_to_peer), Log());
    EXPECT_EQ(advertisement.status().state, "waiting for the registration");
    EXPECT_FALSE(advertisement.status().present);
    advertisement.has_registry(false);
    EXPECT_TRUE(is_written(fresh_service));
    advertisement.has_registry(true);
    EXPECT_TRUE(is_removed());
    EXPECT_EQ(advertisement.status().state, "withdrawn while registered");
    ASSERT_TRUE(comes([&] { return !advertisement.status().present; }));
    advertisement.has_registry(false);
    EXPECT_TRUE(is_written(fresh_service));
}

TEST_F(AdvertisementTest, WithoutAFileItIsOff)
{
    Advertisement advertisement(instrument_, {std::nullopt, Advertise::always}, Log());
    advertisement.changed();
    advertisement.has_registry(false);
    EXPECT_EQ(advertisement.status().state, "off");
    EXPECT_EQ(advertisement.status().file, "");
}

// What a killed process has left behind.
TEST_F(AdvertisementTest, AFileThatIsThereAtTheStartIsOurs)
{
    for (const Advertise when : {Advertise::never, Advertise::peer_to_peer, Advertise::always}) {
        std::ofstream(file_) << "old";
        std::ofstream(file_.string() + ".new") << "half of";
        const Advertisement advertisement(instrument_, settings(when), Log());
        if (when == Advertise::always)
            EXPECT_TRUE(is_written(fresh_service));
        else
            EXPECT_TRUE(is_removed());
        EXPECT_EQ(advertisement.status().state == "off", when == Advertise::never);
    }
}

TEST_F(AdvertisementTest, ALinkIsReplacedAndNotFollowed)
{
    const std::filesystem::path other = folder_.path() / "other";
    std::ofstream(other) << "of somebody else";
    std::filesystem::create_symlink(other, file_);
    std::filesystem::create_symlink(other, file_.string() + ".new");
    {
        const Advertisement advertisement(instrument_, settings(Advertise::always), Log());
        EXPECT_TRUE(is_written(fresh_service));
        EXPECT_FALSE(std::filesystem::is_symlink(file_));
    }
    EXPECT_THAT(names(), testing::ElementsAre("other"));
    EXPECT_EQ(std::filesystem::file_size(other), 16U);
}

TEST_F(AdvertisementTest, TheCountersFollowWhatChanges)
{
    Advertisement advertisement(instrument_, settings(Advertise::always), Log());
    instrument_.listen({.changed = [&] { advertisement.changed(); }, .scheduled = {}});
    ASSERT_TRUE(is_written(fresh_service));
    activate();
    std::string expected = fresh_service;
    expected.replace(expected.find("ver_rcv=0"), 9, "ver_rcv=1");
    EXPECT_TRUE(is_written(expected));
    instrument_.move_to({"192.0.2.11", 81});
    expected.replace(expected.find("<port>3000"), 10, "<port>81");
    expected.replace(expected.find("ver_slf=0"), 9, "ver_slf=1");
    expected.replace(expected.find("ver_dvc=0"), 9, "ver_dvc=1");
    expected.replace(expected.find("ver_snd=0"), 9, "ver_snd=1");
    EXPECT_TRUE(is_written(expected));
    instrument_.listen({});
}

/// Of the file that is there now; each write makes another one.
ino_t number_of(const std::filesystem::path& file)
{
    struct stat status
    {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

/// The second in which the content was written, which is all that avahi-daemon compares.
time_t second_of(const std::filesystem::path& file)
{
    struct stat status
    {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_mtime : 0;
}

TEST_F(AdvertisementTest, ManyChangesAreOneWriteASecond)
{
    Advertisement advertisement(instrument_, settings(Advertise::always), Log());
    ASSERT_TRUE(is_written(fresh_service));
    std::vector<ino_t> seen = {number_of(file_)};
    std::vector<time_t> times = {second_of(file_)};
    const auto begin = Clock::now();
    while (Clock::now() - begin < milliseconds(3500)) {
        activate();
        advertisement.changed();
        if (const ino_t now = number_of(file_); now != 0 && now != seen.back()) {
            seen.push_back(now);
            times.push_back(second_of(file_));
        }
        std::this_thread::sleep_for(milliseconds(1));
    }
    const auto whole_seconds = std::chrono::duration_cast<seconds>(Clock::now() - begin).count();
    EXPECT_GE(seen.size(), 2U);
    EXPECT_LE(seen.size(), 2U + static_cast<std::size_t>(whole_seconds));
    EXPECT_EQ(std::adjacent_find(times.begin(), times.end()), times.end());
}

TEST_F(AdvertisementTest, WithoutChangeNothingIsWritten)
{
    Advertisement advertisement(instrument_, settings(Advertise::always), Log());
    ASSERT_TRUE(is_written(fresh_service));
    const ino_t before = number_of(file_);
    advertisement.changed();
    std::this_thread::sleep_for(milliseconds(1300));
    EXPECT_EQ(number_of(file_), before);
}

TEST_F(AdvertisementTest, AFolderThatIsMissingMayComeLater)
{
    file_ = folder_.path() / "services" / "nmos-node.service";
    Advertisement advertisement(instrument_, settings(Advertise::always), Log());
    ASSERT_TRUE(comes([&] { return !advertisement.status().trouble.empty(); }));
    EXPECT_EQ(advertisement.status().trouble, "there is no such folder");
    EXPECT_EQ(advertisement.status().state, "not advertised yet");
    EXPECT_FALSE(advertisement.status().present);
    std::filesystem::create_directory(folder_.path() / "services");
    advertisement.changed(); // it would be tried again without it, only later
    EXPECT_TRUE(is_written(fresh_service));
    ASSERT_TRUE(comes([&] { return advertisement.status().trouble.empty(); }));
    EXPECT_EQ(advertisement.status().state, "advertised");
}

TEST_F(AdvertisementTest, AFolderThatCannotBeWritten)
{
    std::ofstream(folder_.path() / "services") << "no folder";
    file_ = folder_.path() / "services" / "nmos-node.service";
    Advertisement advertisement(instrument_, settings(Advertise::always), Log());
    ASSERT_TRUE(comes([&] { return !advertisement.status().trouble.empty(); }));
    EXPECT_EQ(advertisement.status().trouble, "Not a directory");
}

TEST_F(AdvertisementTest, ADirectoryInPlaceOfTheFile)
{
    std::filesystem::create_directory(file_);
    Advertisement advertisement(instrument_, settings(Advertise::always), Log());
    ASSERT_TRUE(comes([&] { return !advertisement.status().trouble.empty(); }));
    EXPECT_EQ(advertisement.status().trouble, "Is a directory");
    EXPECT_THAT(names(), testing::ElementsAre("nmos-node.service"));
}

TEST_F(AdvertisementTest, WhereThereIsNoFolderThereIsNothingToWithdraw)
{
    file_ = folder_.path() / "services" / "nmos-node.service";
    Advertisement advertisement(instrument_, settings(Advertise::peer_to_peer), Log());
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(advertisement.status().trouble, "");
}

} // namespace
} // namespace nmos_instrument::host

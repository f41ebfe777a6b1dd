// SPDX-License-Identifier: Apache-2.0
//
// The service file on disk. The whole program moves into a mount namespace of its own and lays an
// empty file system over /etc, so that the machine's own services are never touched. Where that is
// refused (some containers, chroots), the tests are skipped; nmos_test.cpp checks the text anyway.

#include <fcntl.h>
#include <linux/magic.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument/Nmos.h"
#include "support/service_text.h"
#include "support/varied.h"

namespace {

namespace fs = std::filesystem;

const fs::path services = "/etc/avahi/services";
const fs::path service_file = services / "nmos-node.service";

std::string because(const std::string& step)
{
    return step + ": " + std::strerror(errno);
}

bool write_to(const char* path, const std::string& text)
{
    const int file = open(path, O_WRONLY);
    if (file < 0)
        return false;
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return written;
}

/// Without a mapping of our own user, nothing can be created in the new namespace.
std::string map_this_user(uid_t user, gid_t group)
{
    if (!write_to("/proc/self/setgroups", "deny"))
        return because("/proc/self/setgroups");
    if (!write_to("/proc/self/uid_map", "0 " + std::to_string(user) + " 1"))
        return because("/proc/self/uid_map");
    if (!write_to("/proc/self/gid_map", "0 " + std::to_string(group) + " 1"))
        return because("/proc/self/gid_map");
    return "";
}

/// Empty when this program has an empty /etc of its own, else why not.
std::string move_into_an_own_etc()
{
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return because("unshare");
        if (std::string refusal = map_this_user(user, group); !refusal.empty())
            return refusal;
    }
    if (mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0)
        return because("mount --make-rprivate /");
    struct stat before = {};
    if (stat("/etc", &before) != 0)
        return because("stat /etc");
    if (mount("tmpfs", "/etc", "tmpfs", 0, "mode=0755") != 0)
        return because("mount tmpfs /etc");

    // Believe it only when it shows.
    struct stat after = {};
    struct statfs system = {};
    if (stat("/etc", &after) != 0 || statfs("/etc", &system) != 0)
        return because("stat /etc");
    if (after.st_dev == before.st_dev || system.f_type != TMPFS_MAGIC || !fs::is_empty("/etc"))
        return "/etc is still the machine's own";
    return "";
}

const std::string& why_not_in_an_own_etc()
{
    static const std::string reason = move_into_an_own_etc();
    return reason;
}

class ServiceFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!why_not_in_an_own_etc().empty())
            GTEST_SKIP() << "no mount namespace here: " << why_not_in_an_own_etc();
        fs::remove_all("/etc/avahi");
        fs::create_directories(services);
    }

    static void write_file(const std::string& content)
    {
        std::ofstream(service_file, std::ios::binary) << content;
        ASSERT_EQ(fs::file_size(service_file), content.size());
    }

    static std::string read_file()
    {
        std::ifstream file(service_file, std::ios::binary);
        EXPECT_TRUE(file.is_open());
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
};

TEST_F(ServiceFile, IsCreatedWithTheWholeService)
{
    EXPECT_EQ(Nmos().make_node_service(0, 0, 1), 0);
    EXPECT_EQ(read_file(), fresh_service);
}

TEST_F(ServiceFile, IsTheOnlyFileInItsFolder)
{
    Nmos().make_node_service(0, 0, 1);
    int entries = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(services))
        ++entries;
    EXPECT_EQ(entries, 1);
}

TEST_F(ServiceFile, ShowsPortProtocolAndCounters)
{
    Nmos nmos;
    nmos.update_txt_port_number(8080);
    nmos.update_txt_protocol(1);
    nmos.update_txt_ver_slf();
    for (int i = 0; i < 2; ++i)
        nmos.update_txt_ver_src();
    for (int i = 0; i < 3; ++i)
        nmos.update_txt_ver_flw();
    for (int i = 0; i < 4; ++i)
        nmos.update_txt_ver_dvc();
    for (int i = 0; i < 254; ++i)
        nmos.update_txt_ver_snd();
    for (int i = 0; i < 255; ++i)
        nmos.update_txt_ver_rcv();
    EXPECT_EQ(nmos.make_node_service(0, 0, 1), 0);
    EXPECT_EQ(read_file(), varied(fresh_service, {{"<port>3000<", "<port>8080<"},
                                                  {"=http<", "=https<"},
                                                  {"ver_slf=0", "ver_slf=1"},
                                                  {"ver_src=0", "ver_src=2"},
                                                  {"ver_flw=0", "ver_flw=3"},
                                                  {"ver_dvc=0", "ver_dvc=4"},
                                                  {"ver_snd=0", "ver_snd=254"}}));
}

TEST_F(ServiceFile, WithAProtocolThatDoesNotExistSaysHttp)
{
    for (const int protocol : {2, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(protocol);
        Nmos nmos;
        nmos.update_txt_protocol(protocol);
        EXPECT_EQ(nmos.make_node_service(0, 0, 1), 0);
        EXPECT_EQ(read_file(), fresh_service);
    }
}

TEST_F(ServiceFile, IsEmptiedUnlessEnabled)
{
    for (const int enable : {0, 2, -1, 257, INT_MIN, INT_MAX}) {
        write_file("whatever was advertised before\n");
        EXPECT_EQ(Nmos().make_node_service(1, 1, enable), 0);
        EXPECT_EQ(fs::file_size(service_file), 0u) << enable;
    }
}

TEST_F(ServiceFile, IsCreatedEmptyUnlessEnabled)
{
    EXPECT_EQ(Nmos().make_node_service(0, 0, 0), 0);
    ASSERT_TRUE(fs::exists(service_file));
    EXPECT_EQ(fs::file_size(service_file), 0u);
}

TEST_F(ServiceFile, HoldsOneCopyHoweverOftenItIsWritten)
{
    Nmos nmos;
    nmos.make_node_service(0, 0, 1);
    nmos.make_node_service(0, 0, 1);
    EXPECT_EQ(read_file(), fresh_service);
}

TEST_F(ServiceFile, KeepsNothingOfALongerOne)
{
    write_file(std::string(100'000, 'x'));
    Nmos().make_node_service(0, 0, 1);
    EXPECT_EQ(read_file(), fresh_service);
}

TEST_F(ServiceFile, ComesBackAfterItWasWithdrawn)
{
    Nmos nmos;
    nmos.make_node_service(0, 0, 1);
    nmos.make_node_service(0, 0, 0);
    EXPECT_EQ(read_file(), "");
    nmos.make_node_service(0, 0, 1);
    EXPECT_EQ(read_file(), fresh_service);
}

TEST_F(ServiceFile, IgnoresTheFirstTwoArguments)
{
    for (const unsigned int first : {0u, 1u, UINT_MAX}) {
        SCOPED_TRACE(first);
        for (const int second : {0, 1, -1, INT_MIN, INT_MAX}) {
            SCOPED_TRACE(second);
            EXPECT_EQ(Nmos().make_node_service(first, second, 1), 0);
            EXPECT_EQ(read_file(), fresh_service);
        }
    }
}

TEST_F(ServiceFile, LeavesTheMembersAsTheyWere)
{
    Nmos nmos;
    nmos.text = "text";
    nmos.port = 1;
    nmos.protocol = 2;
    nmos.ver_slf = 3;
    nmos.ver_src = 4;
    nmos.ver_flw = 5;
    nmos.ver_dvc = 6;
    nmos.ver_snd = 7;
    nmos.ver_rcv = 8;
    nmos.make_node_service(0, 0, 1);
    nmos.make_node_service(0, 0, 0);
    EXPECT_EQ(nmos.text, "text");
    EXPECT_EQ(nmos.port, 1);
    EXPECT_EQ(nmos.protocol, 2);
    EXPECT_EQ(nmos.ver_slf, 3);
    EXPECT_EQ(nmos.ver_src, 4);
    EXPECT_EQ(nmos.ver_flw, 5);
    EXPECT_EQ(nmos.ver_dvc, 6);
    EXPECT_EQ(nmos.ver_snd, 7);
    EXPECT_EQ(nmos.ver_rcv, 8);
}

TEST_F(ServiceFile, KeepsThePlaceThatALinkPointsTo)
{
    const fs::path elsewhere = "/etc/elsewhere";
    fs::create_symlink(elsewhere, service_file);
    EXPECT_EQ(Nmos().make_node_service(0, 0, 1), 0);
    EXPECT_TRUE(fs::is_symlink(service_file));
    EXPECT_EQ(fs::file_size(elsewhere), fresh_service.size());
    fs::remove(elsewhere);
}

TEST_F(ServiceFile, WithoutItsFolderIsNotReported)
{
    fs::remove_all("/etc/avahi");
    EXPECT_EQ(Nmos().make_node_service(0, 0, 1), 0);
    EXPECT_EQ(Nmos().make_node_service(0, 0, 0), 0);
    EXPECT_FALSE(fs::exists("/etc/avahi"));
}

TEST_F(ServiceFile, ThatCannotBeOpenedIsNotReported)
{
    fs::create_directory(service_file);
    EXPECT_EQ(Nmos().make_node_service(0, 0, 1), 0);
    EXPECT_EQ(Nmos().make_node_service(0, 0, 0), 0);
    EXPECT_TRUE(fs::is_directory(service_file));
}

TEST_F(ServiceFile, ThatCannotBeWrittenIsNotReported)
{
    fs::create_symlink("/dev/full", service_file);
    EXPECT_EQ(Nmos().make_node_service(0, 0, 1), 0);
    EXPECT_EQ(Nmos().make_node_service(0, 0, 0), 0);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0

#include "text/whole_file.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::string_literals;

/// What is said against a file; empty when nothing is.
std::string trouble_with(const std::string& name, std::size_t limit)
{
    try {
        read_whole_file(name, limit);
        return "";
    } catch (const UnreadableFile& error) {
        return error.what();
    }
}

TEST(ReadWholeFile, ReadsEveryByte)
{
    const std::string name = testing::TempDir() + "whole_file_test";
    const std::string content = "a\0\xff\r\n"s + std::string(200'000, 'x');
    std::ofstream(name, std::ios::binary) << content;
    EXPECT_EQ(read_whole_file(name, content.size()), content);
    EXPECT_EQ(trouble_with(name, content.size() - 1), "larger than 200004 bytes");
    std::filesystem::remove(name);
}

TEST(ReadWholeFile, SaysWhyAFileIsNotReadable)
{
    EXPECT_EQ(trouble_with("/no/such/file", 10), "No such file or directory");
    EXPECT_EQ(trouble_with("/", 10), "Is a directory");
    EXPECT_EQ(trouble_with("", 10), "No such file or directory");
    EXPECT_EQ(trouble_with("/dev/zero", 1000), "larger than 1000 bytes");
    EXPECT_EQ(trouble_with("/dev/null", 0), "");
}

} // namespace
} // namespace nmos_instrument::host

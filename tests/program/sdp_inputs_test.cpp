// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_inputs.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/temporary_folder.h"

namespace nmos_instrument::program {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class SdpInputs : public testing::Test
{
protected:
    void make_file(const std::string& name) const { std::ofstream(path(name)) << "v=0\n"; }
    void make_folder(const std::string& name) const { fs::create_directory(path(name)); }

    std::string path(const std::string& name) const { return folder_.path() / name; }

    /// Names relative to the folder. Expects no errors.
    std::vector<std::string> found(const std::vector<std::string>& names) const
    {
        std::vector<std::string> relative;
        for (const SdpInput& input : sdp_inputs(names)) {
            EXPECT_THAT(input.error, IsEmpty());
            relative.push_back(fs::path(input.name).lexically_relative(folder_.path()));
        }
        return relative;
    }

    TemporaryFolder folder_;
};

TEST_F(SdpInputs, FilesStandForThemselvesWhateverTheirNames)
{
    make_file("a.txt");
    const std::vector<SdpInput> inputs = sdp_inputs({"-", path("a.txt"), "/no/such/file"});
    ASSERT_THAT(inputs, SizeIs(3));
    EXPECT_EQ(inputs[0].name, "-");
    EXPECT_EQ(inputs[1].name, path("a.txt"));
    EXPECT_EQ(inputs[2].name, "/no/such/file");
    for (const SdpInput& input : inputs)
        EXPECT_THAT(input.error, IsEmpty());
}

TEST_F(SdpInputs, ADirectoryStandsForItsSdpFilesSortedByName)
{
    for (const char* const name : {"b.sdp", "a.SDP", "readme.md", "sdp", "c.sdp.bak"})
        make_file(name);
    make_folder("b");
    make_file("b/z.sdp");
    make_file("b/y.txt");
    make_folder("folder.sdp");
    fs::create_symlink(path("b.sdp"), path("link.sdp"));
    fs::create_symlink(path("nowhere"), path("broken.sdp"));
    fs::create_directory_symlink(folder_.path(), path("b/loop"));
    EXPECT_THAT(found({folder_.path()}), ElementsAre("a.SDP", "b/z.sdp", "b.sdp", "link.sdp"));
}

TEST_F(SdpInputs, ADirectoryWithoutSdpFilesIsAnError)
{
    make_file("a.txt");
    make_folder("empty");
    make_file("b.sdp");
    const std::vector<SdpInput> inputs = sdp_inputs({path("empty"), path("b.sdp")});
    ASSERT_THAT(inputs, SizeIs(2));
    EXPECT_EQ(inputs[0].name, path("empty"));
    EXPECT_THAT(inputs[0].error, HasSubstr("ends in \".sdp\""));
    EXPECT_THAT(inputs[1].error, IsEmpty());
}

} // namespace
} // namespace nmos_instrument::program

// SPDX-License-Identifier: Apache-2.0
//
// A host may load the library as a plug-in and drop it again. Nothing of it may stay behind.

#include <dlfcn.h>

#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

bool is_mapped()
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libnmos-instrument") != std::string::npos)
            return true;
    }
    return false;
}

TEST(LoadUnload, LeavesNothingInMemory)
{
    ASSERT_FALSE(is_mapped()) << "the test itself is linked with the library";

    // Twice: what a first unloading leaves behind, a second loading would trip over.
    for (int round = 0; round < 2; ++round) {
        void* library = dlopen(LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_TRUE(is_mapped());
        EXPECT_NE(dlsym(library, "_ZN4NmosC1Ev"), nullptr) << "Nmos::Nmos()";

        ASSERT_EQ(dlclose(library), 0) << dlerror();
        EXPECT_EQ(dlopen(LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr);
        EXPECT_FALSE(is_mapped());
    }
}

} // namespace

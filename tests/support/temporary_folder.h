// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

/// A folder that is gone with the object.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "nmos-instrument-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("cannot create " + pattern);
        path_ = pattern;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

#endif

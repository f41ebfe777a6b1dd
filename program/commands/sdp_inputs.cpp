// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_inputs.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "text/ascii.h"

namespace nmos_instrument::program {
namespace {

namespace fs = std::filesystem;

/// ".SDP" too.
bool is_sdp_name(const fs::path& path)
{
    std::string extension = path.extension();
    std::transform(extension.begin(), extension.end(), extension.begin(), host::to_lower);
    return extension == ".sdp";
}

/// What is in `folder`, sorted by name.
std::vector<fs::directory_entry> entries_of(const fs::path& folder, std::error_code& error)
{
    std::vector<fs::directory_entry> entries;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        entries.push_back(*entry);
    std::sort(entries.begin(), entries.end());
    return entries;
}

void add_folder(const fs::path& folder, std::vector<SdpInput>& inputs)
{
    std::error_code error;
    const std::vector<fs::directory_entry> entries = entries_of(folder, error);
    if (error)
        inputs.push_back({folder, error.message()});
    for (const fs::directory_entry& entry : entries) {
        std::error_code ignored;
        if (entry.is_directory(ignored) && !entry.is_symlink(ignored))
            add_folder(entry.path(), inputs);
        else if (is_sdp_name(entry.path()) && entry.is_regular_file(ignored))
            inputs.push_back({entry.path(), ""});
    }
}

} // namespace

std::vector<SdpInput> sdp_inputs(const std::vector<std::string>& names)
{
    std::vector<SdpInput> inputs;
    for (const std::string& name : names) {
        std::error_code ignored;
        if (name == "-" || !fs::is_directory(name, ignored)) {
            inputs.push_back({name, ""});
            continue;
        }
        const std::size_t before = inputs.size();
        add_folder(name, inputs);
        if (inputs.size() == before)
            inputs.push_back({name, "no regular file in it or below it has a name that ends in "
                                    "\".sdp\""});
    }
    return inputs;
}

} // namespace nmos_instrument::program

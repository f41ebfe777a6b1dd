// SPDX-License-Identifier: Apache-2.0

#include <stdexcept>

#include "fuzz_input.h"
#include "nmos_instrument/ConnectionApi.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string line = FuzzInput(data, size).rest();
    const std::string before = line;
    try {
        const std::string path = ConnectionApi::make_fullpath_from_request(line);
        // From the first slash on, less " HTTP/1.1".
        const std::string from_slash = line.substr(line.find('/'));
        const std::size_t shown = from_slash.size() < 9 ? 0 : from_slash.size() - 9;
        REQUIRE(path == from_slash.substr(0, shown));
    } catch (const std::out_of_range&) {
        REQUIRE(line.find('/') == std::string::npos);
    }
    REQUIRE(line == before);
    return 0;
}

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
        REQUIRE(path.empty() || path.front() == '/');
    } catch (const std::out_of_range&) {
        REQUIRE(line.find('/') == std::string::npos);
    }
    REQUIRE(line == before);
    return 0;
}

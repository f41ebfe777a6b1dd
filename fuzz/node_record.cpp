// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as an IS-04 record: no terminating NULs, absurd counts, NaN.

#include <memory>

#include "fuzz_input.h"
#include "record_operations.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto connections = std::make_unique<NMOS_IS05_ST>();
    static const auto settings = std::make_unique<st_param_sys>();
    const auto node = std::make_unique<NMOS_IS04_ST>();

    FuzzInput fuzz(data, size);
    OperationInput input{node.get(), connections.get(), settings.get(), "/"};
    input.index = fuzz.byte() % 28 - 2;
    input.first_selector = fuzz.byte() % 3 - 1;
    input.second_selector = fuzz.byte() % 4 - 1;
    input.third_selector = fuzz.byte() % 2;
    fuzz.fill(*node);
    input.index = input.index > 23 ? 23 : input.index; // the receivers of IS-05 that there are
    call_all_operations(input);
    return 0;
}

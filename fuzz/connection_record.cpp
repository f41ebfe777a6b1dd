// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as an IS-05 record and as the table of settings.

#include <memory>

#include "fuzz_input.h"
#include "record_operations.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto node = std::make_unique<NMOS_IS04_ST>();
    const auto connections = std::make_unique<NMOS_IS05_ST>();
    const auto settings = std::make_unique<st_param_sys>();

    FuzzInput fuzz(data, size);
    OperationInput input{node.get(), connections.get(), settings.get(), "/"};
    input.index = fuzz.byte() % 26 - 2; // up to 23, the receivers that there are
    // The interesting half first: the bytes repeat over the whole record.
    fuzz.fill(*settings);
    fuzz.fill(connections->senders[input.index < 0 || input.index > 5 ? 0 : input.index]);
    connections->receivers[input.index < 0 ? 0 : input.index] = connections->senders[0];
    call_all_operations(input);
    return 0;
}

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
    // Each gets bytes of its own, also of a short input: they repeat over the whole record.
    const std::size_t size_for_settings = fuzz.byte();
    fuzz.part(size_for_settings).fill(*settings);
    CONNECTION_IS05_ST connection{};
    fuzz.fill(connection);
    connections->senders[input.index < 0 || input.index > 5 ? 0 : input.index] = connection;
    connections->receivers[input.index < 0 ? 0 : input.index] = connection;
    call_all_operations(input);
    return 0;
}

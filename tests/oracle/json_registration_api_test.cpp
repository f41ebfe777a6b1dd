// SPDX-License-Identifier: Apache-2.0
//
// The bodies of the Registration API on random records, and the operations that write into them.

#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/calls.h"
#include "oracle/json_oracle.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/run.h"
#include "support/same_bytes.h"

namespace {

constexpr NodeOperation registration_api[] = {
    NODE_OPERATION(RegistrationApi, make_resource_node, 1),
    NODE_OPERATION(RegistrationApi, make_resource_devices, 1, with.receiver_filter,
                   with.audio_group_filter, with.sender_filter),
    NODE_OPERATION(RegistrationApi, make_resource_deviceid, 4, with.index, with.receiver_filter,
                   with.audio_group_filter, with.sender_filter),
    NODE_OPERATION(RegistrationApi, make_resource_sources, 1),
    NODE_OPERATION(RegistrationApi, make_resource_sourceid, 4, with.index),
    NODE_OPERATION(RegistrationApi, make_resource_flows, 1),
    NODE_OPERATION(RegistrationApi, make_resource_flowid, 4, with.index),
    NODE_OPERATION(RegistrationApi, make_resource_senders, 1),
    NODE_OPERATION(RegistrationApi, make_resource_senderid, 6, with.index),
    NODE_OPERATION(RegistrationApi, make_resource_receivers, 1),
    NODE_OPERATION(RegistrationApi, make_resource_receiverid, 24, with.index),
};

TEST(JsonOracle, RegistrationApi)
{
    compare_node_operations(30, registration_api);
}

TEST(RecordUpdatesOracle, RegistrationApi)
{
    constexpr const char* starts[] = {"", "", "", " ", "\t\n", "+", "-", "0x", "junk", "1e", "."};
    constexpr const char* numbers[] = {"80",  "3212", "65536",  "1e400", "-1e400", "1e-400", "inf",
                                       "nan", "0x1F", "5004.5", ".5",    "1,5",    "",       "-0"};
    const auto of_library = std::make_unique<NMOS_IS04_ST>();
    const auto of_oracle = std::make_unique<NMOS_IS04_ST>();
    for_each_record(10, [&](Random& random) {
        randomise(random, *of_oracle);
        std::memcpy(of_library.get(), of_oracle.get(), sizeof *of_oracle);

        RegistrationApi().update_version(of_library.get());
        oracle::update_version(*of_oracle);
        ASSERT_TRUE(same_bytes(*of_library, *of_oracle))
            << "update_version: " << visible({of_library->version, 48}) << ", "
            << visible({of_oracle->version, 48});

        const std::string ip = std::string("192.168.0.1").substr(0, random.below(12));
        std::string port = random.pick(starts);
        port += random.pick(numbers);
        if (random.one_in(4))
            port.insert(random.below(static_cast<std::uint32_t>(port.size() + 1)), 1, '\0');
        RegistrationApi().update_ipAddress(of_library.get(), ip, port);
        oracle::update_ip_address(*of_oracle, ip, port);
        ASSERT_TRUE(same_bytes(*of_library, *of_oracle))
            << "update_ipAddress: ip " << visible(ip) << ", port " << visible(port);
    });
}

} // namespace

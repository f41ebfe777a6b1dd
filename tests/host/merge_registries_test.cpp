// SPDX-License-Identifier: Apache-2.0

#include "discovery/merge_registries.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

/// "a.example:1", or with a protocol "https://a.example:1"
Registry registry(const std::string& server, const std::string& address, int priority,
                  const std::string& origin = "mDNS")
{
    const std::string protocol = server.find("//") == std::string::npos ? "http://" : "";
    return {protocol + server + "/x-nmos/registration/v1.2", address, priority, origin};
}

using Registries = std::vector<Registry>;

TEST(MergeRegistries, NothingOfNothing)
{
    EXPECT_EQ(merge_registries({}), Registries());
}

TEST(MergeRegistries, SortsByPriority)
{
    EXPECT_EQ(merge_registries({registry("c.example:1", "192.0.2.3", 20),
                                registry("b.example:1", "192.0.2.2", 100),
                                registry("a.example:1", "192.0.2.1", 3)}),
              (Registries{registry("a.example:1", "192.0.2.1", 3),
                          registry("c.example:1", "192.0.2.3", 20),
                          registry("b.example:1", "192.0.2.2", 100)}));
}

TEST(MergeRegistries, TheFirstOfOneEndpointStays)
{
    EXPECT_EQ(merge_registries({registry("reg.example.com:80", "192.0.2.1", 10, "DNS-SD"),
                                registry("reg.local:80", "192.0.2.1", 20),
                                registry("reg.local:80", "192.0.2.1", 20)}),
              (Registries{registry("reg.example.com:80", "192.0.2.1", 10, "DNS-SD")}));
}

TEST(MergeRegistries, AnotherPortProtocolOrAddressIsAnotherEndpoint)
{
    const Registries four = {
        registry("a.local:80", "192.0.2.1", 1), registry("a.local:81", "192.0.2.1", 1),
        registry("b.local:80", "192.0.2.2", 1), registry("https://a.local:80", "192.0.2.1", 1)};
    EXPECT_EQ(merge_registries(four), four);
}

TEST(MergeRegistries, Ipv6OnlyWithoutIpv4)
{
    EXPECT_EQ(merge_registries({registry("a.local:80", "2001:db8::1", 1),
                                registry("b.local:80", "2001:db8::2", 1),
                                registry("a.local:80", "192.0.2.1", 1)}),
              (Registries{registry("a.local:80", "192.0.2.1", 1),
                          registry("b.local:80", "2001:db8::2", 1)}));
    EXPECT_EQ(merge_registries({registry("[2001:db8::2]:80", "2001:db8::2", 1),
                                registry("[2001:db8::2]:81", "2001:db8::2", 1)}),
              (Registries{registry("[2001:db8::2]:80", "2001:db8::2", 1),
                          registry("[2001:db8::2]:81", "2001:db8::2", 1)}));
}

TEST(MergeRegistries, TheOrderIsThatOfPriorityUrlAndAddress)
{
    const Registries sorted = {registry("a.local:80", "192.0.2.1", 1),
                               registry("a.local:80", "192.0.2.2", 1),
                               registry("b.local:80", "192.0.2.3", 1)};
    EXPECT_EQ(merge_registries({sorted[2], sorted[1], sorted[0]}), sorted);
}

} // namespace
} // namespace nmos_instrument::host

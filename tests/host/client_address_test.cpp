// SPDX-License-Identifier: Apache-2.0

#include "http/client_address.h"

#include <cstring>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace nmos_instrument::host {
namespace {

sockaddr_storage ipv4(const char* address)
{
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(50123);
    EXPECT_EQ(inet_pton(AF_INET, address, &name.sin_addr), 1);
    sockaddr_storage storage{};
    std::memcpy(&storage, &name, sizeof name);
    return storage;
}

sockaddr_storage ipv6(const char* address)
{
    sockaddr_in6 name{};
    name.sin6_family = AF_INET6;
    name.sin6_port = htons(50123);
    EXPECT_EQ(inet_pton(AF_INET6, address, &name.sin6_addr), 1);
    sockaddr_storage storage{};
    std::memcpy(&storage, &name, sizeof name);
    return storage;
}

std::string peer_of(const sockaddr_storage& name)
{
    return peer_text(reinterpret_cast<const sockaddr*>(&name));
}

ClientKey key_of(const sockaddr_storage& name)
{
    return client_key(reinterpret_cast<const sockaddr*>(&name));
}

TEST(ClientAddress, ReadsAsInAUrl)
{
    EXPECT_EQ(peer_of(ipv4("192.0.2.1")), "192.0.2.1:50123");
    EXPECT_EQ(peer_of(ipv6("2001:db8::1")), "[2001:db8::1]:50123");
    EXPECT_EQ(peer_of(ipv6("::ffff:192.0.2.1")), "192.0.2.1:50123");
    EXPECT_EQ(peer_of(ipv6("::")), "[::]:50123");
}

TEST(ClientAddress, WithoutPort)
{
    EXPECT_EQ(address_of("192.0.2.1:50123"), "192.0.2.1");
    EXPECT_EQ(address_of("[2001:db8::1]:50123"), "2001:db8::1");
    EXPECT_EQ(address_of("http:"), "http"); // what stands in the log where there is no client
}

TEST(ClientAddress, AnIpv4AddressIsOneClient)
{
    EXPECT_EQ(client_of("192.0.2.1:50123"), "192.0.2.1");
    EXPECT_EQ(key_of(ipv4("192.0.2.1")), key_of(ipv6("::ffff:192.0.2.1")));
    EXPECT_NE(key_of(ipv4("192.0.2.1")), key_of(ipv4("192.0.2.2")));
    EXPECT_NE(key_of(ipv4("0.0.0.0")), key_of(ipv6("::")));
}

TEST(ClientAddress, AnIpv6NetworkOf64BitsIsOneClient)
{
    EXPECT_EQ(client_of("[2001:db8:0:1:2:3:4:5]:50123"), "2001:db8:0:1::/64");
    EXPECT_EQ(client_of("[2001:db8:0:1:ffff::]:1"), "2001:db8:0:1::/64");
    EXPECT_EQ(client_of("[::1]:50123"), "::/64");
    EXPECT_EQ(key_of(ipv6("2001:db8:0:1::")), key_of(ipv6("2001:db8:0:1:ffff:ffff:ffff:ffff")));
    EXPECT_NE(key_of(ipv6("2001:db8:0:1::")), key_of(ipv6("2001:db8:0:2::")));
}

} // namespace
} // namespace nmos_instrument::host

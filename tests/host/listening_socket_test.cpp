// SPDX-License-Identifier: Apache-2.0

#include "http/listening_socket.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

const ListenAt loopback{.address = "127.0.0.1"};

TEST(ListeningSocket, APortInUseIsNamed)
{
    const ListeningSocket first(loopback, 0);
    try {
        const ListeningSocket second(loopback, first.port());
        FAIL() << "two sockets listen at one port";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::address_in_use);
        EXPECT_NE(std::string(error.what()).find("127.0.0.1:" + std::to_string(first.port())),
                  std::string::npos)
            << error.what();
    }
}

TEST(ListeningSocket, ThePortIsFreeAgainAfterIt)
{
    std::uint16_t port = 0;
    {
        ListeningSocket first(loopback, 0);
        port = first.port();
        const ListeningSocket moved(std::move(first));
        EXPECT_THROW(ListeningSocket(loopback, port), std::system_error);
    }
    EXPECT_EQ(ListeningSocket(loopback, port).port(), port);
}

TEST(ListeningSocket, TheFirstFreePortIsTaken)
{
    const ListeningSocket used(loopback, 0);
    const ListeningSocket next = listen_at_first_free_port(loopback, used.port());
    EXPECT_GT(next.port(), used.port());
}

TEST(ListeningSocket, OnlyAddresses)
{
    for (const char* address : {"localhost", "10.1", "127.0.0.1 ", "[::1]", "fe80::1%lo", "any"}) {
        EXPECT_THROW(ListeningSocket({.address = address}, 0), std::invalid_argument) << address;
        EXPECT_THROW(listen_at_first_free_port({.address = address}, 1), std::invalid_argument);
    }
}

/// What is said about a place where nobody can listen.
std::string refusal_of(const ListenAt& where)
{
    try {
        const ListeningSocket socket(where, 40007);
        return "";
    } catch (const std::system_error& error) {
        return error.what();
    }
}

TEST(ListeningSocket, SaysWhereItCannotListen)
{
    EXPECT_EQ(refusal_of({.address = "192.0.2.1"}),
              "192.0.2.1:40007: Cannot assign requested address");
    EXPECT_EQ(refusal_of({.interface = "absent0"}), "absent0:40007: No such device");
}

bool has_ipv6()
{
    try {
        ListeningSocket({.address = "::1"}, 0);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

bool is_reached_at(const std::string& address, std::uint16_t port)
{
    addrinfo numeric{};
    numeric.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    numeric.ai_socktype = SOCK_STREAM;
    addrinfo* name = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &numeric, &name) != 0)
        return false;
    const int client = socket(name->ai_family, name->ai_socktype | SOCK_CLOEXEC, 0);
    const bool is_connected = connect(client, name->ai_addr, name->ai_addrlen) == 0;
    close(client);
    freeaddrinfo(name);
    return is_connected;
}

TEST(ListeningSocket, EveryAddressIsIpv4AndIpv6)
{
    const ListeningSocket any({}, 0);
    EXPECT_TRUE(is_reached_at("127.0.0.1", any.port()));
    EXPECT_TRUE(is_reached_at("127.0.0.2", any.port()));
    EXPECT_TRUE(!has_ipv6() || is_reached_at("::1", any.port()));
}

TEST(ListeningSocket, AnIpv6AddressAlone)
{
    if (!has_ipv6())
        GTEST_SKIP() << "this machine has no IPv6";
    const ListeningSocket socket({.address = "::1"}, 0);
    EXPECT_TRUE(is_reached_at("::1", socket.port()));
    EXPECT_FALSE(is_reached_at("127.0.0.1", socket.port()));
    EXPECT_EQ(text_of({.address = "::1"}, 80), "[::1]:80");
}

TEST(ListeningSocket, AnInterface)
{
    const ListeningSocket lo({.interface = "lo"}, 0);
    EXPECT_TRUE(is_reached_at("127.0.0.1", lo.port()));
    EXPECT_TRUE(is_reached_at("127.0.0.2", lo.port()));
    EXPECT_EQ(text_of({.interface = "lo"}, 80), "lo:80");
}

} // namespace
} // namespace nmos_instrument::host

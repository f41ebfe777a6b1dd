// SPDX-License-Identifier: Apache-2.0

#include "http/listening_socket.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(ListeningSocket, APortInUseIsNamed)
{
    const ListeningSocket first("127.0.0.1", 0);
    try {
        const ListeningSocket second("127.0.0.1", first.port());
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
        ListeningSocket first("127.0.0.1", 0);
        port = first.port();
        const ListeningSocket moved(std::move(first));
        EXPECT_THROW(ListeningSocket("127.0.0.1", port), std::system_error);
    }
    EXPECT_EQ(ListeningSocket("127.0.0.1", port).port(), port);
}

TEST(ListeningSocket, TheFirstFreePortIsTaken)
{
    const ListeningSocket used("127.0.0.1", 0);
    const ListeningSocket next = listen_at_first_free_port("127.0.0.1", used.port());
    EXPECT_GT(next.port(), used.port());
}

TEST(ListeningSocket, OnlyIpv4)
{
    EXPECT_THROW(ListeningSocket("localhost", 0), std::invalid_argument);
    EXPECT_THROW(listen_at_first_free_port("::1", 1), std::invalid_argument);
}

} // namespace
} // namespace nmos_instrument::host

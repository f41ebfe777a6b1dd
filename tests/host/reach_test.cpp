// SPDX-License-Identifier: Apache-2.0

#include "network/reach.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "network/address_source.h"
#include "network/followed_address.h"

namespace nmos_instrument::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t loopback = 0x7f000001;    // 127.0.0.1
constexpr std::uint32_t first = 0xc000020a;       // 192.0.2.10
constexpr std::uint32_t second = 0xc000020b;      // 192.0.2.11
constexpr std::uint32_t other = 0xcb00710a;       // 203.0.113.10
constexpr std::uint32_t link_local = 0xa9fe0101;  // 169.254.1.1
constexpr std::uint32_t link_local2 = 0xa9fe0102; // 169.254.1.2

NetworkInterface interface_of(const std::string& name, const std::vector<std::uint32_t>& addresses)
{
    NetworkInterface interface;
    interface.name = name;
    interface.is_up = true;
    for (const std::uint32_t address : addresses)
        interface.ipv4.push_back({address, 24});
    return interface;
}

NetworkInterface lo()
{
    NetworkInterface interface = interface_of("lo", {loopback});
    interface.is_loopback = true;
    return interface;
}

NetworkInterface with_default_route(NetworkInterface interface)
{
    interface.has_default_route = true;
    return interface;
}

TEST(ReachOf, WhatIsMissingFollowsFromTheOther)
{
    const ListenAt any;
    const ListenAt at_loopback{.address = "127.0.0.1"};
    const ListenAt at_eth0{.interface = "eth0"};
    const ListenAt at_address{.address = "192.0.2.10"};
    EXPECT_EQ(reach_of({}, {}), (Reach{at_loopback, {.fixed = "127.0.0.1"}}));
    EXPECT_EQ(reach_of({}, "192.0.2.10"), (Reach{at_address, {.fixed = "192.0.2.10"}}));
    EXPECT_EQ(reach_of({}, "eth0"), (Reach{at_eth0, {.interface = "eth0"}}));
    EXPECT_EQ(reach_of("192.0.2.10", {}), (Reach{at_address, {.fixed = "192.0.2.10"}}));
    EXPECT_EQ(reach_of("eth0", {}), (Reach{at_eth0, {.interface = "eth0"}}));
    EXPECT_EQ(reach_of("any", {}), (Reach{any, {}}));
    EXPECT_EQ(reach_of("::", {}), (Reach{any, {}}));
    EXPECT_EQ(reach_of("0.0.0.0", {}), (Reach{{.address = "0.0.0.0"}, {}}));
}

TEST(ReachOf, BothMayBeNamed)
{
    EXPECT_EQ(reach_of("any", "203.0.113.10"), (Reach{{}, {.fixed = "203.0.113.10"}}));
    EXPECT_EQ(reach_of("any", "eth0"), (Reach{{}, {.interface = "eth0"}}));
    EXPECT_EQ(reach_of("::1", "127.0.0.1"), (Reach{{.address = "::1"}, {.fixed = "127.0.0.1"}}));
    EXPECT_EQ(reach_of("eth0", "eth1"), (Reach{{.interface = "eth0"}, {.interface = "eth1"}}));
}

TEST(ReachOf, AnIpv6AddressAloneCannotBeNamed)
{
    try {
        reach_of("2001:db8::1", {});
        FAIL() << "it can";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "listening at 2001:db8::1, but the texts of the instrument can "
                                   "name an IPv4 address only: name one too (--address)");
    }
}

TEST(ReachOf, AnUnknownInterfaceIsAnsweredWithThoseThatThereAre)
{
    const std::vector<NetworkInterface> interfaces = {lo(), interface_of("eth0", {})};
    EXPECT_NO_THROW(expect_interfaces(reach_of("eth0", "lo"), interfaces));
    EXPECT_NO_THROW(expect_interfaces(reach_of("any", "203.0.113.10"), interfaces));
    for (const Reach& reach : {reach_of("eth7", {}), reach_of("any", "eth7")}) {
        try {
            expect_interfaces(reach, interfaces);
            FAIL() << "it is there";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "no network interface \"eth7\"; there are lo, eth0");
        }
    }
}

TEST(ChooseAddress, TheFirstOfTheInterface)
{
    const AddressSource eth0{.interface = "eth0"};
    EXPECT_EQ(choose_address(eth0, {lo(), interface_of("eth0", {first, second})}, {}), first);
    EXPECT_EQ(choose_address(eth0, {lo(), interface_of("eth1", {first})}, {}), std::nullopt);
    EXPECT_EQ(choose_address(eth0, {lo(), interface_of("eth0", {})}, {}), std::nullopt);
    EXPECT_EQ(choose_address({.interface = "lo"}, {lo()}, {}), loopback);
    // It has no carrier, but it has an address.
    NetworkInterface down = interface_of("eth0", {first});
    down.is_up = false;
    EXPECT_EQ(choose_address(eth0, {down}, {}), first);
}

TEST(ChooseAddress, StaysWhileItIsThere)
{
    const AddressSource eth0{.interface = "eth0"};
    EXPECT_EQ(choose_address(eth0, {interface_of("eth0", {first, second})}, second), second);
    EXPECT_EQ(choose_address(eth0, {interface_of("eth0", {first, second})}, other), first);
}

TEST(ChooseAddress, LinkLocalOnlyWithoutAnother)
{
    const AddressSource eth0{.interface = "eth0"};
    EXPECT_EQ(choose_address(eth0, {interface_of("eth0", {link_local})}, {}), link_local);
    EXPECT_EQ(choose_address(eth0, {interface_of("eth0", {link_local, link_local2})}, link_local2),
              link_local2);
    EXPECT_EQ(choose_address(eth0, {interface_of("eth0", {link_local, first})}, link_local), first);
}

TEST(ChooseAddress, OfAnyInterfaceThatIsUpAndNoLoopback)
{
    NetworkInterface down = interface_of("eth0", {first});
    down.is_up = false;
    EXPECT_EQ(choose_address({}, {lo(), down}, {}), std::nullopt);
    EXPECT_EQ(choose_address({}, {lo(), down, interface_of("eth1", {other})}, {}), other);
}

TEST(ChooseAddress, OfTheDefaultRouteIfPossible)
{
    const NetworkInterface eth0 = interface_of("eth0", {first});
    const NetworkInterface eth1 = interface_of("eth1", {other});
    EXPECT_EQ(choose_address({}, {lo(), eth0, with_default_route(eth1)}, {}), other);
    EXPECT_EQ(choose_address({}, {lo(), eth0, with_default_route(eth1)}, first), other);
    EXPECT_EQ(choose_address({}, {lo(), eth0, eth1}, other), other);
    EXPECT_EQ(choose_address({}, {lo(), eth0, with_default_route(interface_of("eth1", {}))}, {}),
              first);
}

TEST(ChooseAddress, AFixedOneWhateverTheMachineHas)
{
    EXPECT_EQ(choose_address({.fixed = "203.0.113.10"}, {}, {}), other);
}

/// What was called with each address, as the interfaces change.
class FollowedAddressTest : public testing::Test
{
protected:
    void look_at(const std::vector<NetworkInterface>& interfaces)
    {
        interfaces_ = interfaces;
        address_.look([this](const std::string& address) { moves_.push_back(address); });
    }

    std::vector<NetworkInterface> interfaces_;
    std::vector<std::string> moves_;
    FollowedAddress address_{{.interface = "eth0"}, Log(), [this] { return interfaces_; }};
};

TEST_F(FollowedAddressTest, TellsEachAddressOnce)
{
    look_at({interface_of("eth0", {})});
    EXPECT_THAT(moves_, IsEmpty());
    look_at({interface_of("eth0", {first})});
    look_at({interface_of("eth0", {first})});
    look_at({interface_of("eth0", {second, first})});
    EXPECT_THAT(moves_, ElementsAre("192.0.2.10"));
    look_at({interface_of("eth0", {second})});
    EXPECT_THAT(moves_, ElementsAre("192.0.2.10", "192.0.2.11"));
}

TEST_F(FollowedAddressTest, ALostOneStaysUntilThereIsAnother)
{
    look_at({interface_of("eth0", {first})});
    look_at({interface_of("eth0", {})});
    look_at({});
    look_at({interface_of("eth0", {first})});
    EXPECT_THAT(moves_, ElementsAre("192.0.2.10"));
    look_at({interface_of("eth0", {})});
    look_at({interface_of("eth0", {second})});
    EXPECT_THAT(moves_, ElementsAre("192.0.2.10", "192.0.2.11"));
}

TEST_F(FollowedAddressTest, AMoveThatFailsIsTriedAgain)
{
    interfaces_ = {interface_of("eth0", {first})};
    EXPECT_THROW(address_.look([](const std::string&) { throw std::bad_alloc(); }), std::bad_alloc);
    look_at(interfaces_);
    EXPECT_THAT(moves_, ElementsAre("192.0.2.10"));
}

TEST(FollowedAddress, AFixedOneDoesNotMove)
{
    EXPECT_FALSE(FollowedAddress({.fixed = "192.0.2.10"}, Log()).may_move());
    EXPECT_TRUE(FollowedAddress({.interface = "eth0"}, Log()).may_move());
    EXPECT_TRUE(FollowedAddress({}, Log()).may_move());
}

TEST(NetworkInterfaces, OfThisMachine)
{
    const std::vector<NetworkInterface> interfaces = network_interfaces();
    const NetworkInterface* const loopback_interface = find_interface(interfaces, "lo");
    ASSERT_NE(loopback_interface, nullptr);
    EXPECT_TRUE(loopback_interface->is_loopback);
    EXPECT_THAT(loopback_interface->ipv4, testing::Contains(NetworkInterface::Ipv4{loopback, 8}));
    EXPECT_EQ(find_interface(interfaces, "absent0"), nullptr);
}

TEST(NetworkInterfaces, TheDefaultRouteIsThatOfTheLowestMetric)
{
    const std::string title =
        "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
    EXPECT_EQ(interface_of_default_route(""), "");
    EXPECT_EQ(interface_of_default_route(title), "");
    EXPECT_EQ(interface_of_default_route(
                  title + "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"),
              "");
    EXPECT_EQ(interface_of_default_route(
                  title + "wlan0\t00000000\t010200C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n" +
                  "eth0\t00000000\t010200C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n" +
                  "eth1\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"),
              "eth0");
    EXPECT_EQ(interface_of_default_route(title + "eth0\t00000000\tnonsense"), "");
}

} // namespace
} // namespace nmos_instrument::host

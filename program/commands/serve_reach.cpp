// SPDX-License-Identifier: Apache-2.0

#include "commands/serve_reach.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "http/url.h"
#include "network/network_interfaces.h"
#include "text/ipv4_address.h"
#include "text/word_list.h"

namespace nmos_instrument::program {
namespace {

/// Not more often: a client that learns of an address a second later has lost nothing.
constexpr std::chrono::seconds between_looks{1};

/// "192.0.2.10 (eth0), ::1 (lo)"
std::string own_addresses()
{
    std::vector<std::string> addresses;
    for (const host::NetworkInterface& interface : host::network_interfaces()) {
        for (const host::NetworkInterface::Ipv4& own : interface.ipv4)
            addresses.push_back(host::dotted_quad(own.address) + " (" + interface.name + ')');
        for (const std::string& own : interface.ipv6)
            addresses.push_back(own + " (" + interface.name + ')');
    }
    return host::word_list(addresses);
}

bool is_elsewhere(const std::string& url)
{
    const std::optional<host::Url> parts = host::parse_url(url);
    return parts && !host::is_loopback(parts->host);
}

/// Whom others hear of the instrument from; empty: nobody.
std::string announced_by(const host::Configuration& configuration)
{
    const host::RegistrationSettings& registration = configuration.registration;
    if (configuration.advertisement.service_file &&
        configuration.advertisement.when != host::Advertise::never)
        return *configuration.advertisement.service_file;
    const auto& registries = registration.registries;
    const auto registry = std::find_if(registries.begin(), registries.end(), is_elsewhere);
    return registration.enabled && registry != registries.end() ? *registry : "";
}

/// What goes wrong is tried again at the next look; said is what was said last.
void look_at(host::FollowedAddress& address, const host::FollowedAddress::Moved& moved,
             host::InterfaceBinding& binding, std::string& said, const host::Log& log) noexcept
{
    try {
        try {
            binding.look();
            if (address.may_move())
                address.look(moved);
            said.clear();
        } catch (const std::exception& error) {
            if (said != error.what())
                log.error("the address of the instrument cannot be followed: {}", error.what());
            said = error.what();
        }
    } catch (...) {
        return; // memory is short
    }
}

} // namespace

host::ListeningSocket listen(const host::ListenAt& where, std::uint16_t port, IfPortInUse if_in_use)
{
    if (if_in_use == IfPortInUse::take_next_free_one)
        return host::listen_at_first_free_port(where, port);
    try {
        return {where, port};
    } catch (const std::system_error& error) {
        const std::string what = error.what();
        if (error.code() == std::errc::address_in_use)
            throw std::runtime_error(what + "; use --port PORT for another port, or "
                                            "--first-free-port for the next free one");
        if (error.code() == std::errc::address_not_available)
            throw std::runtime_error(what + "; this machine has " + own_addresses());
        throw;
    }
}

std::optional<std::string> first_address(const host::AddressSource& source,
                                         host::FollowedAddress& address, EndSignals& end_signals,
                                         const host::Log& log)
{
    std::optional<std::string> found;
    const auto take = [&](const std::string& first) { found = first; };
    for (;;) {
        address.look(take);
        if (found)
            return found;
        if (source.interface.empty())
            return "127.0.0.1";
        if (const std::optional<std::string> signal = end_signals.wait_for(between_looks)) {
            log.info("stopping on {}", *signal);
            return std::nullopt;
        }
    }
}

std::string follow_until_signal(host::FollowedAddress& address,
                                const host::FollowedAddress::Moved& moved,
                                host::InterfaceBinding& binding, EndSignals& end_signals,
                                const host::Log& log)
{
    if (!address.may_move() && !binding.is_needed())
        return end_signals.wait();
    std::string said;
    for (;;) {
        if (const std::optional<std::string> signal = end_signals.wait_for(between_looks))
            return *signal;
        look_at(address, moved, binding, said, log);
    }
}

void log_reach(const host::ListenAt& listen, const host::NodeAddress& address,
               const host::Configuration& configuration, const host::Log& log)
{
    if (host::is_loopback(listen.address))
        log.info("only this machine can reach {}: serve --listen eth0, or \"listen\" in the "
                 "configuration, is for a network",
                 listen.address);
    const std::string announced = announced_by(configuration);
    if (host::is_loopback(address.host) && !announced.empty())
        log.warning("{}", host::loopback_warning(address, announced));
}

} // namespace nmos_instrument::program

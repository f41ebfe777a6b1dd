// SPDX-License-Identifier: Apache-2.0

#include "network/reach.h"

#include <stdexcept>

#include "text/ipv4_address.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

bool is_ipv4(const std::string& text)
{
    return ipv4_from_dotted_quad(text).has_value();
}

ListenAt listen_at(const std::string& text)
{
    if (text == "any" || text == "::")
        return {};
    if (is_ipv4(text) || is_ipv6(text))
        return {.address = text};
    return {.interface = text};
}

AddressSource address_of_listening(const ListenAt& listen)
{
    if (is_ipv6(listen.address))
        throw std::runtime_error("listening at " + listen.address +
                                 ", but the texts of the instrument can name an IPv4 address only: "
                                 "name one too (--address)");
    if (listen.address == "0.0.0.0")
        return {};
    return {.fixed = listen.address, .interface = listen.interface};
}

void expect_interface(const std::string& name, const std::vector<NetworkInterface>& interfaces)
{
    if (name.empty() || find_interface(interfaces, name) != nullptr)
        return;
    throw std::runtime_error("no network interface " + in_quotes(name) + "; there are " +
                             word_list(interfaces, &NetworkInterface::name));
}

} // namespace

Reach reach_of(const std::optional<std::string>& listen, const std::optional<std::string>& address)
{
    Reach reach;
    reach.listen = listen_at(listen ? *listen : address.value_or("127.0.0.1"));
    if (!address)
        reach.address = address_of_listening(reach.listen);
    else if (is_ipv4(*address))
        reach.address.fixed = *address;
    else
        reach.address.interface = *address;
    return reach;
}

void expect_interfaces(const Reach& reach, const std::vector<NetworkInterface>& interfaces)
{
    expect_interface(reach.listen.interface, interfaces);
    expect_interface(reach.address.interface, interfaces);
}

} // namespace nmos_instrument::host

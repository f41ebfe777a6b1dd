// SPDX-License-Identifier: Apache-2.0

#include "records/addresses.h"

#include <cstdint>

#include "records/record_text.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

bool is_host_address(const std::string& text)
{
    const auto address = ipv4_from_dotted_quad(text);
    return address && is_unicast(*address);
}

} // namespace

NodeAddress configured_address(const ServerSettings& server)
{
    NodeAddress address;
    address.port = server.advertised_port.value_or(server.port);
    const std::optional<std::string>& named = server.address ? server.address : server.listen;
    if (named && is_host_address(*named))
        address.host = *named;
    return address;
}

std::string base_url(const NodeAddress& address)
{
    return "http://" + address.host + ':' + std::to_string(address.port) + '/';
}

std::string connection_api_url(const NodeAddress& address)
{
    return base_url(address) + "x-nmos/connection/v1.0/";
}

std::string transport_file_url(const NodeAddress& address, const std::string& sender_id)
{
    return connection_api_url(address) + "single/senders/" + sender_id + "/transportfile";
}

std::string loopback_warning(const NodeAddress& address, const std::string& from)
{
    return "others hear of " + base_url(address) + " from " + from +
           ", but for each of them that is their own machine: --listen or --address names another "
           "address";
}

void set_address(NMOS_IS04_ST& node, const NodeAddress& address)
{
    set_text(node.href, base_url(address));
    set_text(node.endpoints[0].host, address.host);
    node.endpoints[0].port = address.port;
    set_text(node.devices[0].controls[0].href, connection_api_url(address));
    for (std::int32_t i = 0; i < node.senders_count; ++i) {
        SENDER_IS04_ST& sender = node.senders[i];
        set_text(sender.manifest_href,
                 transport_file_url(address, std::string(text_of(sender.id))));
    }
}

} // namespace nmos_instrument::host

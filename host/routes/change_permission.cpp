// SPDX-License-Identifier: Apache-2.0

#include "routes/change_permission.h"

#include "http/client_address.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {

std::string ChangePermission::refusal_of(const std::string& peer) const
{
    if (read_only)
        return "this instrument is read-only";
    const std::string address = address_of(peer);
    const auto client = ipv4_from_dotted_quad(address);
    if (clients.empty() || (client && any_contains(clients, *client)))
        return "";
    return address + " is not among the clients that may change something";
}

} // namespace nmos_instrument::host

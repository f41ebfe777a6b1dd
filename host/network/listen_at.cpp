// SPDX-License-Identifier: Apache-2.0

#include "network/listen_at.h"

namespace nmos_instrument::host {
namespace {

std::string place_of(const ListenAt& where)
{
    if (!where.interface.empty())
        return where.interface;
    if (where.address.empty())
        return "any";
    const bool is_ipv6 = where.address.find(':') != std::string::npos;
    return is_ipv6 ? '[' + where.address + ']' : where.address;
}

} // namespace

std::string text_of(const ListenAt& where, std::uint16_t port)
{
    return place_of(where) + ':' + std::to_string(port);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// Who is at the other end of a connection. An IPv4 client of a socket for both (RFC 3493 3.7,
// ::ffff:192.0.2.1) is an IPv4 client.

#ifndef NMOS_INSTRUMENT_HOST_HTTP_CLIENT_ADDRESS_H
#define NMOS_INSTRUMENT_HOST_HTTP_CLIENT_ADDRESS_H

#include <array>
#include <cstdint>
#include <string>

#include <sys/socket.h>

namespace nmos_instrument::host {

/// What counts as one client: an IPv4 address, or the first 64 bits of an IPv6 address, since
/// whoever has one of those has all that begin with them (RFC 4291 2.5.4).
using ClientKey = std::array<std::uint8_t, 16>;

/// Needs no memory.
ClientKey client_key(const sockaddr* address);

/// Address and port: "192.0.2.1:50123", "[2001:db8::1]:50123".
std::string peer_text(const sockaddr* address);

/// The address in such a text: "192.0.2.1", "2001:db8::1".
std::string address_of(const std::string& peer);

/// The client in such a text, as client_key() counts it: "192.0.2.1", "2001:db8::/64".
std::string client_of(const std::string& peer);

} // namespace nmos_instrument::host

#endif

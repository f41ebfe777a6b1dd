// SPDX-License-Identifier: Apache-2.0
//
// The two ways in which a text is an IPv4 address.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_IPV4_TEXT_H
#define NMOS_INSTRUMENT_SRC_TEXT_IPV4_TEXT_H

#include <string_view>

namespace nmos_instrument {

/// Four numbers from 0 to 255, none with a leading zero, which some readers take as octal: what a
/// record should hold.
bool is_dotted_quad(std::string_view text);

/// What inet_aton takes, up to the first NUL: what an SDP file may hold. Short, octal and
/// hexadecimal forms count too, and anything may follow after a space.
bool is_inet_aton_address(std::string_view text);

} // namespace nmos_instrument

#endif

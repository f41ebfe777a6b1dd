// SPDX-License-Identifier: Apache-2.0
//
// What a value of the configuration may be, and the words for it: where the instrument is reached
// and whom it reaches.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_NETWORK_RULES_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_NETWORK_RULES_H

#include "configuration/value_rules.h"

namespace nmos_instrument::host {

/// "any", an IPv4 or IPv6 address, or what can be the name of an interface. The brackets of an IPv6
/// address are removed.
TextRule listening_place();

/// An IPv4 address, or what can be the name of an interface. No IPv6: the record of the node has
/// room for an IPv4 address only.
TextRule own_address();

/// Rewritten to what registry_url() makes of it.
TextRule registry_address();

/// RFC 1035 2.3.1; a dot at the end is removed.
TextRule domain_name();

TextRule file_path();

/// avahi-daemon reads no other files than those whose names end in ".service".
TextRule service_file_path();

} // namespace nmos_instrument::host

#endif

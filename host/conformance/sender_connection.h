// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_SENDER_CONNECTION_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_SENDER_CONNECTION_H

#include <string>

namespace nmos_instrument::host {

/// The active half of a sender, as IS-05 wants it.
std::string corrected_active_sender(std::string text);

} // namespace nmos_instrument::host

#endif

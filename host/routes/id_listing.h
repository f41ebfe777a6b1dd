// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ID_LISTING_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ID_LISTING_H

#include <string>

namespace nmos_instrument::host {

/// Removes the comma that the listings of "single/senders" and "single/receivers" keep in their
/// last line when the entries after it are hidden: with it they are not JSON. All else stays byte
/// for byte.
std::string without_trailing_comma(std::string listing);

} // namespace nmos_instrument::host

#endif

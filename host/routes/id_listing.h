// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ID_LISTING_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ID_LISTING_H

#include <string>

namespace nmos_instrument::host {

/// The listings of "single/senders" and "single/receivers" keep the comma of the last line when the
/// entries behind it are hidden, which is no JSON. Here it goes. All else stays byte for byte.
std::string without_trailing_comma(std::string listing);

} // namespace nmos_instrument::host

#endif

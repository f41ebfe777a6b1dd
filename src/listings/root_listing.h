// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_LISTINGS_ROOT_LISTING_H
#define NMOS_INSTRUMENT_SRC_LISTINGS_ROOT_LISTING_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace nmos_instrument {

/// Listing of the children of an API path: one name a line, indented by four spaces, a comma after
/// all but the last. Names are given without the slash that ends them in the listing.
std::string root_listing(std::initializer_list<std::string_view> names);

} // namespace nmos_instrument

#endif

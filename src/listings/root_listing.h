// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_LISTINGS_ROOT_LISTING_H
#define NMOS_INSTRUMENT_SRC_LISTINGS_ROOT_LISTING_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace nmos_instrument {

/// Listing of an API level's children: one name a line, four blanks in front, comma behind all but
/// the last. Names are given without the slash that ends them in the listing.
std::string root_listing(std::initializer_list<std::string_view> names);

} // namespace nmos_instrument

#endif

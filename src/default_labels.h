// SPDX-License-Identifier: Apache-2.0
//
// The texts of the label tables.

#ifndef NMOS_INSTRUMENT_SRC_DEFAULT_LABELS_H
#define NMOS_INSTRUMENT_SRC_DEFAULT_LABELS_H

#include <cstddef>
#include <string>

namespace nmos_instrument {

/// An array, since a pointer to each text would be one more relocation when the library is loaded.
using TableText = char[32];

extern const TableText protocol_names[2];
extern const TableText default_labels[46];

/// Writes the `count` texts into the strings.
void fill_strings(std::string* strings, const TableText* texts, std::size_t count);

} // namespace nmos_instrument

#endif

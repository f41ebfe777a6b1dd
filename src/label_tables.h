// SPDX-License-Identifier: Apache-2.0
//
// The protocol names and the instrument's default resource labels.
//
// Each unit that includes this header holds its own copy, built when the library is loaded
// (protocols first, then labels) and released when it is unloaded. No operation reads the labels:
// they reach the bodies through the `label` fields that the host writes. Their positions are the
// numbers that the membership rules use.

#ifndef NMOS_INSTRUMENT_SRC_LABEL_TABLES_H
#define NMOS_INSTRUMENT_SRC_LABEL_TABLES_H

#include <array>
#include <cstddef>
#include <string>

#include "default_labels.h"

namespace nmos_instrument {

/// Strings that are built when the library is loaded and released when it is unloaded.
template <std::size_t N>
struct StringTable : std::array<std::string, N>
{
    explicit StringTable(const TableText (&texts)[N]) { fill_strings(this->data(), texts, N); }
};

} // namespace nmos_instrument

[[maybe_unused]] static const nmos_instrument::StringTable<2>
    str_protocol(nmos_instrument::protocol_names);

[[maybe_unused]] static const nmos_instrument::StringTable<46>
    uuid_label_list(nmos_instrument::default_labels);

#endif

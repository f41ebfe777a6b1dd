// SPDX-License-Identifier: Apache-2.0
//
// The hand-indented texts of the Connection API: id listings and constraints.

#ifndef NMOS_INSTRUMENT_SRC_LISTINGS_CONNECTION_LISTINGS_H
#define NMOS_INSTRUMENT_SRC_LISTINGS_CONNECTION_LISTINGS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "records/record_fields.h"
#include "text/text_buffer.h"

namespace nmos_instrument {

/// Listing of the ids of those valid entries for which `is_listed(i)` is true. Intentional: a comma
/// follows each of them but the last valid one, even when all later ones are hidden; see
/// ConnectionApi::make_single_senders.
template <typename Entry, std::size_t N, typename IsListed>
std::string id_listing(const Entry (&entries)[N], std::int32_t count, IsListed is_listed)
{
    TextBuffer text;
    text.append("[\n");
    const std::size_t valid = valid_count(entries, count);
    for (std::size_t i = 0; i < valid; ++i) {
        if (!is_listed(i))
            continue;
        text.append("  \"", field_text(entries[i].id), i + 1 < valid ? "/\",\n" : "/\"\n");
    }
    text.append("]\n");
    return text.take();
}

/// Constraints of a sender: one source address a leg, all else free.
std::string sender_constraints(std::string_view leg1_source, std::string_view leg2_source);

/// Constraints of a receiver: one interface address or "auto" a leg, all else free.
std::string receiver_constraints(std::string_view leg1_interface, std::string_view leg2_interface);

} // namespace nmos_instrument

#endif

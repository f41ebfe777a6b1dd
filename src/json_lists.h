// SPDX-License-Identifier: Apache-2.0
//
// What wraps a body: a list of bodies, a registration envelope, nothing.

#ifndef NMOS_INSTRUMENT_SRC_JSON_LISTS_H
#define NMOS_INSTRUMENT_SRC_JSON_LISTS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "json_writer.h"
#include "record_fields.h"

namespace nmos_instrument {

/// The text of one body: `write(text)` writes it.
template <typename WriteBody>
std::string make_text(Slashes slashes, WriteBody write)
{
    JsonText text(slashes);
    write(text);
    return text.take();
}

/// Array of the bodies of the first `count` entries, within the array. `write(text, entry, i)`
/// writes the body of entry i, or nothing to leave it out.
template <typename Entry, std::size_t N, typename WriteBody>
std::string make_list(Slashes slashes, const Entry (&entries)[N], std::int32_t count,
                      WriteBody write)
{
    return make_text(slashes, [&](JsonText& text) {
        const std::size_t valid = bounded_count(count, N);
        JsonWriter(text).begin_array();
        for (std::size_t i = 0; i < valid; ++i) {
            write(text, entries[i], i);
            text.set_progress(i + 1, valid);
        }
        JsonWriter(text).end_array();
    });
}

/// Registration API envelope {"data":<body>,"type":"<type>"}; `write(text)` writes the body.
template <std::size_t N, typename WriteBody>
void write_registration(JsonText& text, const char (&type)[N], WriteBody write)
{
    {
        JsonWriter json(text);
        json.begin_object();
        json.key("data");
    }
    write(text);
    {
        JsonWriter json(text);
        json.key("type").literal(type);
        json.end_object();
    }
}

} // namespace nmos_instrument

#endif

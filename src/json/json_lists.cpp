// SPDX-License-Identifier: Apache-2.0

#include "json/json_lists.h"

namespace nmos_instrument {

std::string make_text(Slashes slashes, const WriteBody& write)
{
    JsonText text(slashes);
    write(text);
    return text.take();
}

std::string make_list(Slashes slashes, std::size_t count, const WriteEntry& write)
{
    JsonText text(slashes);
    JsonWriter(text).begin_array();
    for (std::size_t i = 0; i < count; ++i) {
        write(text, i);
        text.set_progress(i + 1, count);
    }
    JsonWriter(text).end_array();
    return text.take();
}

void write_registration(JsonText& text, std::string_view type, const WriteBody& write)
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

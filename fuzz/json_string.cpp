// SPDX-License-Identifier: Apache-2.0
//
// What JsonWriter writes of a field, picojson reads back as the field's text, UTF-8 or not.

#include <memory>
#include <picojson.h>

#include "fuzz_input.h"
#include "json/json_writer.h"

using namespace nmos_instrument;

namespace {

template <std::size_t N>
void require_same_text(FuzzInput fuzz, Slashes slashes)
{
    const auto field = std::make_unique<char[]>(N); // on the heap, where every overrun is seen
    auto& array = *reinterpret_cast<char(*)[N]>(field.get());
    fuzz.fill(array);
    JsonText text(slashes);
    {
        JsonWriter json(text);
        json.begin_array();
        json.string(array);
    }
    {
        JsonWriter json(text);
        json.string(array);
        json.end_array();
    }
    const std::string written = text.take();
    picojson::value value;
    REQUIRE(picojson::parse(value, written).empty());
    const std::string want(field_text(array));
    REQUIRE(value.get(0).get<std::string>() == want);
    REQUIRE(value.get(1).get<std::string>() == want);
    if (slashes == Slashes::escaped)
        REQUIRE(value.serialize() == written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput fuzz(data, size);
    const Slashes slashes = fuzz.byte() % 2 != 0 ? Slashes::escaped : Slashes::plain;
    require_same_text<16>(fuzz, slashes);
    require_same_text<20>(fuzz, slashes);
    require_same_text<39>(fuzz, slashes);
    require_same_text<48>(fuzz, slashes);
    require_same_text<144>(fuzz, slashes);
    require_same_text<2080>(fuzz, slashes);
    require_same_text<4096>(fuzz, slashes);
    return 0;
}

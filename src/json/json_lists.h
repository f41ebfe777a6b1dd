// SPDX-License-Identifier: Apache-2.0
//
// What wraps a body: a list of bodies, a registration envelope, nothing.

#ifndef NMOS_INSTRUMENT_SRC_JSON_JSON_LISTS_H
#define NMOS_INSTRUMENT_SRC_JSON_JSON_LISTS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "json/json_writer.h"

namespace nmos_instrument {

/// Refers to a callable that outlives the call, so that the wrappers below need not be templates.
template <typename... Arguments>
class WriteCall
{
public:
    template <typename Callable>
    WriteCall(const Callable& callable) noexcept // implicit: it stands for the callable
        : callable_(&callable),
          call_([](const void* target, JsonText& text, Arguments... arguments) {
              (*static_cast<const Callable*>(target))(text, arguments...);
          })
    {}

    void operator()(JsonText& text, Arguments... arguments) const
    {
        call_(callable_, text, arguments...);
    }

private:
    const void* callable_;
    void (*call_)(const void*, JsonText&, Arguments...);
};

/// `write(text)` writes one body.
using WriteBody = WriteCall<>;

/// `write(text, i)` writes the body of entry i, or nothing to leave it out.
using WriteEntry = WriteCall<std::size_t>;

/// The text of one body.
std::string make_text(Slashes slashes, const WriteBody& write);

/// The text of an array of the bodies of entries 0 to `count` - 1.
std::string make_list(Slashes slashes, std::size_t count, const WriteEntry& write);

/// Registration API envelope {"data":<body>,"type":"<type>"}.
void write_registration(JsonText& text, std::string_view type, const WriteBody& write);

} // namespace nmos_instrument

#endif

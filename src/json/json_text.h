// SPDX-License-Identifier: Apache-2.0
//
// JsonText: the JSON text that grows, handed from body to body. A JsonWriter writes into it.

#ifndef NMOS_INSTRUMENT_SRC_JSON_JSON_TEXT_H
#define NMOS_INSTRUMENT_SRC_JSON_JSON_TEXT_H

#include <string>

#include "json/key_order.h"
#include "json/ordinary_bytes.h"
#include "json/slashes.h"
#include "text/text_buffer.h"

namespace nmos_instrument {

class JsonText : public TextBuffer
{
public:
    explicit JsonText(Slashes slashes) noexcept : slashes_(slashes) {}

    Slashes slashes() const noexcept { return slashes_; }

    /// The keys of the objects that are open. They belong to the text, since one object may be
    /// written by several writers in turn.
    KeyOrder& keys() noexcept { return keys_; }

    /// The finished text.
    std::string take()
    {
        set_position(position() - 1); // the comma after the outermost value
        return TextBuffer::take();
    }

private:
    Slashes slashes_;
    [[no_unique_address]] KeyOrder keys_;
};

} // namespace nmos_instrument

#endif

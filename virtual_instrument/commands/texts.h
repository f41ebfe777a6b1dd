// SPDX-License-Identifier: Apache-2.0
//
// Every text that the library makes, by name.

#ifndef VIRTUAL_INSTRUMENT_COMMANDS_TEXTS_H
#define VIRTUAL_INSTRUMENT_COMMANDS_TEXTS_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "instrument/configuration.h"
#include "instrument/fill_records.h"

namespace virtual_instrument {

/// What texts are made from.
struct TextInput
{
    const Configuration& configuration;
    Records& records; ///< some texts stamp or change them
};

enum class TextForm
{
    json,       ///< may be indented
    fixed_lines ///< laid out by hand, or no JSON: printed as it is
};

struct Text
{
    std::string_view name; ///< one word, or two
    std::string_view description;
    TextForm form;
    /// How many of the instrument's resources the text can be asked for; null when it takes no
    /// index.
    std::size_t (*count)(const Records&);
    std::string (*make)(const TextInput&, int index);
};

std::span<const Text> all_texts();

/// Null when there is none of that name.
const Text* find_text(std::string_view name);

} // namespace virtual_instrument

#endif

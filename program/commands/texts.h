// SPDX-License-Identifier: Apache-2.0
//
// Every text that the library makes, by name.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_TEXTS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_TEXTS_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "configuration/configuration.h"
#include "records/fill_records.h"

namespace nmos_instrument::program {

/// What the texts are made from.
struct TextInput
{
    const host::Configuration& configuration;
    host::Records& records; ///< some texts stamp or change them
};

enum class TextForm
{
    json,       ///< may be indented
    fixed_lines ///< laid out by hand, or not JSON: printed as it is
};

struct Text
{
    std::string_view name; ///< one word, or two
    std::string_view description;
    TextForm form;
    /// How many resources of the instrument have this text; null if it takes no index.
    std::size_t (*count)(const host::Records&);
    std::string (*make)(const TextInput&, int index);
};

std::span<const Text> all_texts();

/// Null if no text has that name.
const Text* find_text(std::string_view name);

} // namespace nmos_instrument::program

#endif

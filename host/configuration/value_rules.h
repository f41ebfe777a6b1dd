// SPDX-License-Identifier: Apache-2.0
//
// What a value of the configuration may be, and the words for it.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_VALUE_RULES_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_VALUE_RULES_H

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "text/word_list.h"

namespace nmos_instrument::host {

struct TextRule
{
    std::string allowed; ///< the rule in words
    /// Whether the text obeys the rule. May rewrite an accepted text to its usual spelling.
    std::function<bool(std::string&)> accept;
};

/// Any text without control characters that fits into a record's field of `field_size` bytes, one
/// of which is for the NUL at the end.
TextRule text_for_field(std::size_t field_size);

/// Like text_for_field, but not empty.
TextRule name_for_field(std::size_t field_size);

/// RFC 1123 2.1: letters, digits, "-" and ".".
TextRule host_name_for_field(std::size_t field_size);

/// IS-04 v1.2, clock_ptp.json: "clk" and digits.
TextRule clock_name_for_field(std::size_t field_size);

/// `octets` pairs of hexadecimal digits with "-" or ":" between them, rewritten to lower case with
/// "-": 6 for a MAC address, 8 for the identity of a PTP clock.
TextRule octets(int octets, const std::string& example);

TextRule unicast_address();
TextRule multicast_address();

/// `text` and nothing else.
TextRule exactly(const std::string& text);

/// "1 to 65535", or the one number that is allowed.
std::string number_range(int lowest, int highest);

/// One value that a key may have, as the file spells it (JSON), and what it means.
template <class Meaning>
struct Choice
{
    std::string_view json;
    Meaning meaning;
};

/// The values, separated by commas.
template <class Meaning, std::size_t N>
std::string list_of(const std::array<Choice<Meaning>, N>& choices)
{
    return word_list(choices, &Choice<Meaning>::json);
}

} // namespace nmos_instrument::host

#endif

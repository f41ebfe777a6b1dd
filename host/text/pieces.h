// SPDX-License-Identifier: Apache-2.0
//
// Texts cut into pieces, which live as long as the text.

#ifndef NMOS_INSTRUMENT_HOST_TEXT_PIECES_H
#define NMOS_INSTRUMENT_HOST_TEXT_PIECES_H

#include <optional>
#include <string_view>
#include <vector>

namespace nmos_instrument::host {

/// Takes the piece in front of the first `separator` from `rest`, and the separator; without one, all
/// of it.
std::string_view cut_off(std::string_view& rest, char separator);

/// The words of `text`, which one or more blanks separate.
std::vector<std::string_view> words_of(std::string_view text);

/// `text` without blanks at its ends.
std::string_view trimmed(std::string_view text);

/// The number that `text` is, in decimal digits and nothing else; nothing for any other text.
std::optional<long> number_from_to(long least, long most, std::string_view text);

} // namespace nmos_instrument::host

#endif

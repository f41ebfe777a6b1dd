// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_QUOTED_TEXT_H
#define NMOS_INSTRUMENT_HOST_TEXT_QUOTED_TEXT_H

#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// Visible ASCII as it is, other bytes as \xHH, so that text from a stranger cannot move a
/// terminal's cursor.
std::string printable(std::string_view text);

/// "one\ntwo\n" as "one | two".
std::string one_line(std::string_view text);

/// `text` in quotes, for a message or the log: one line of visible ASCII, other bytes as \xHH, and
/// shortened if it is long. This keeps clients from forging log lines.
std::string in_quotes(std::string_view text);

} // namespace nmos_instrument::host

#endif

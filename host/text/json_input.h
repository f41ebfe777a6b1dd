// SPDX-License-Identifier: Apache-2.0
//
// JSON that comes from people and other programs.

#ifndef NMOS_INSTRUMENT_HOST_TEXT_JSON_INPUT_H
#define NMOS_INSTRUMENT_HOST_TEXT_JSON_INPUT_H

#include <cstddef>
#include <stdexcept>
#include <string_view>

#include "text/json_document.h"

namespace nmos_instrument::host {

enum class JsonComments
{
    refused,
    allowed ///< "//" and "/* */"
};

/// How deep arrays and objects may be nested. The limit protects later work on the parsed values:
/// copying, comparing and printing them is recursive.
constexpr int json_depth_limit = 64;

/// How many values a text may have, arrays and objects included. The largest request that makes
/// sense has about 1,000: a bulk request for all receivers, with everything that can be set.
constexpr std::size_t json_value_limit = 10'000;

/// How many control characters a text may have; line breaks and tabs count. The parser's messages
/// spell out each in eight bytes, which takes longer than reading it.
constexpr std::size_t json_control_limit = 65'536;

/// Text that is not JSON, JSON that is nested too deep, has too many values or control characters,
/// or an object that has a key twice. what() says where (line and column, or JSON pointer) and what is wrong; it quotes
/// at most a few hundred bytes of the text.
class MalformedJson : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Throws MalformedJson. RFC 8259 does not say what a repeated key means; it is refused here, since
/// one of its values would be lost silently.
JsonDocument parse_json(std::string_view text, JsonComments comments);

} // namespace nmos_instrument::host

#endif

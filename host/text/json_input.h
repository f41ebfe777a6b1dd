// SPDX-License-Identifier: Apache-2.0
//
// JSON that people and other programs hand to us.

#ifndef NMOS_INSTRUMENT_HOST_TEXT_JSON_INPUT_H
#define NMOS_INSTRUMENT_HOST_TEXT_JSON_INPUT_H

#include <stdexcept>
#include <string_view>

#include <nlohmann/json.hpp>

namespace nmos_instrument::host {

enum class JsonComments
{
    refused,
    allowed ///< "//" and "/* */"
};

/// Arrays and objects may stand this deep in one another. The limit protects what walks the parsed
/// values later: copying, comparing and printing them recurses.
constexpr int json_depth_limit = 64;

/// Text that is not JSON, JSON that is too deep, or an object with one key twice. The text says
/// where (line and column, or JSON pointer) and what is wrong.
class MalformedJson : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Throws MalformedJson. RFC 8259 leaves open what a repeated key means; here it is refused, since
/// one of its values would be lost without a word.
nlohmann::json parse_json(std::string_view text, JsonComments comments);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_JSON_OUTPUT_H
#define NMOS_INSTRUMENT_HOST_TEXT_JSON_OUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace nmos_instrument::host {

enum class JsonForm
{
    compact, ///< no space at all
    indented ///< one line for each value
};

/// JSON written as it goes, without a tree of values: nlohmann's trees need memory even to be
/// destroyed, and end the program when there is none. The texts are those of its dump(), if members
/// are written in ascending order of their keys.
class JsonOutput
{
public:
    explicit JsonOutput(JsonForm form) : form_(form) {}

    void begin_object() { begin('{'); }
    void end_object() { end('}'); }
    void begin_array() { begin('['); }
    void end_array() { end(']'); }

    /// A value follows.
    JsonOutput& key(std::string_view key);
    /// An element of an array follows.
    JsonOutput& element();

    /// Valid UTF-8.
    void text(std::string_view value);
    template <class Number>
    void number(Number value)
    {
        static_assert(std::is_integral_v<Number>);
        text_ += std::to_string(value);
    }
    void flag(bool value) { text_ += value ? "true" : "false"; }
    void null() { text_ += "null"; }

    std::string take() { return std::move(text_); }

private:
    void begin(char bracket);
    void end(char bracket);
    void next_line();

    const JsonForm form_;
    std::string text_;
    std::size_t depth_ = 0;
    bool is_first_ = true; ///< of its object or array
};

} // namespace nmos_instrument::host

#endif

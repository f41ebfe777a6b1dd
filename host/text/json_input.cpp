// SPDX-License-Identifier: Apache-2.0

#include "text/json_input.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "text/json_pointer.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

/// nlohmann's messages begin with "[json.exception.parse_error.101] ", which means nothing to a
/// user.
std::string without_tag(std::string message)
{
    const std::size_t end = message.find("] ");
    if (message.starts_with('[') && end != std::string::npos)
        message.erase(0, end + 2);
    return message;
}

/// `message` with the text that the parser has read last, which is the sender's, as a short quote.
std::string with_short_quote(std::string message, const std::string& last_read)
{
    const std::string quoted = '\'' + last_read + '\'';
    const std::size_t at = message.find(quoted);
    if (at != std::string::npos)
        message.replace(at, quoted.size(), in_quotes(last_read));
    return message;
}

/// Makes the document as the parser goes through the text, and throws as soon as it is not
/// acceptable: what is refused costs no more than reading up to there.
///
/// It does not use the callback of json::parse: with a callback the parser walks through the whole
/// array after every object in it, so that 1 MiB of "[{},{},..." takes minutes.
class Builder : public json::json_sax_t
{
public:
    explicit Builder(json& document) : document_(document) {}

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(json::number_integer_t value) override { return add(value); }
    bool number_unsigned(json::number_unsigned_t value) override { return add(value); }
    bool number_float(json::number_float_t value, const json::string_t&) override
    {
        return add(value);
    }
    bool string(json::string_t& value) override { return add(std::move(value)); }
    bool binary(json::binary_t&) override { return false; } // JSON has none

    bool start_object(std::size_t) override { return enter(json::value_t::object); }
    bool start_array(std::size_t) override { return enter(json::value_t::array); }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }

    bool key(json::string_t& key) override
    {
        Level& level = levels_.back();
        const auto [member, is_new] =
            level.container->get_ref<json::object_t&>().try_emplace(std::move(key));
        level.member = member;
        if (!is_new)
            throw MalformedJson(path() + ": this key is given twice");
        return true;
    }

    bool parse_error(std::size_t, const std::string& last_read,
                     const json::exception& error) override
    {
        throw MalformedJson(with_short_quote(without_tag(error.what()), last_read));
    }

private:
    struct Level
    {
        json* container;
        json::object_t::iterator member; ///< of an object: the one that is being read
    };

    /// Where the next value goes.
    template <class Value>
    json& place(Value&& value)
    {
        if (levels_.empty())
            return document_ = std::forward<Value>(value);
        const Level& level = levels_.back();
        if (level.container->is_object())
            return level.member->second = std::forward<Value>(value);
        return level.container->get_ref<json::array_t&>().emplace_back(std::forward<Value>(value));
    }

    template <class Value>
    bool add(Value&& value)
    {
        place(std::forward<Value>(value));
        count();
        return true;
    }

    void count()
    {
        if (++count_ > json_value_limit)
            throw MalformedJson(path() + ": found more than " + std::to_string(json_value_limit) +
                                " values, allowed: " + std::to_string(json_value_limit));
    }

    bool enter(json::value_t kind)
    {
        json& added = place(kind);
        count();
        if (static_cast<int>(levels_.size()) == json_depth_limit)
            throw MalformedJson(path() + ": nested deeper than " +
                                std::to_string(json_depth_limit) + " levels");
        levels_.push_back({&added, {}});
        return true;
    }

    bool leave()
    {
        levels_.pop_back();
        return true;
    }

    /// JSON pointer of the value that is being read.
    std::string path() const
    {
        std::string pointer;
        for (const Level& level : levels_) {
            const bool array = level.container->is_array();
            pointer += '/';
            pointer += array ? std::to_string(level.container->size() - 1)
                             : json_pointer_token(level.member->first);
        }
        return in_short(pointer);
    }

    json& document_;
    std::size_t count_ = 0;
    std::vector<Level> levels_;
};

/// "line 1, column 18", as in the parser's own messages.
std::string place_of(std::string_view text, std::size_t at)
{
    const std::string_view before = text.substr(0, at);
    const auto line_breaks = std::count(before.begin(), before.end(), '\n');
    const std::size_t line_begin = before.rfind('\n') + 1; // npos + 1 is 0
    return "line " + std::to_string(line_breaks + 1) + ", column " +
           std::to_string(at - line_begin + 1);
}

std::size_t count_of_controls(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return c >= 0 && c < ' '; }));
}

} // namespace

JsonDocument parse_json(std::string_view text, JsonComments comments)
{
    // The parser would take a NUL for the end and ignore the rest.
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos)
        throw MalformedJson("parse error at " + place_of(text, nul) + ": a NUL byte");
    if (count_of_controls(text) > json_control_limit)
        throw MalformedJson("found more than " + std::to_string(json_control_limit) +
                            " line breaks and other control characters, allowed: " +
                            std::to_string(json_control_limit));
    JsonDocument document;
    Builder builder(document.value());
    json::sax_parse(text, &builder, json::input_format_t::json, true,
                    comments == JsonComments::allowed);
    return document;
}

} // namespace nmos_instrument::host

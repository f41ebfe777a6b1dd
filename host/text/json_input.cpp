// SPDX-License-Identifier: Apache-2.0

#include "text/json_input.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

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

/// Follows the parser through the text and throws if the structure is not acceptable.
///
/// It does not use the callback of json::parse: with a callback the parser walks through the whole
/// array after every object in it, so that 1 MiB of "[{},{},..." takes minutes.
class StructureGuard : public json::json_sax_t
{
public:
    bool null() override { return element(); }
    bool boolean(bool) override { return element(); }
    bool number_integer(json::number_integer_t) override { return element(); }
    bool number_unsigned(json::number_unsigned_t) override { return element(); }
    bool number_float(json::number_float_t, const json::string_t&) override { return element(); }
    bool string(json::string_t&) override { return element(); }
    bool binary(json::binary_t&) override { return element(); }

    bool start_object(std::size_t) override { return enter(false); }
    bool start_array(std::size_t) override { return enter(true); }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }

    bool key(json::string_t& key) override
    {
        levels_.back().place = key;
        if (!levels_.back().keys.insert(key).second)
            throw MalformedJson(path() + ": this key is given twice");
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const json::exception& error) override
    {
        throw MalformedJson(without_tag(error.what()));
    }

private:
    struct Level
    {
        bool is_array = false;
        std::size_t next_index = 0;
        std::string place; ///< key or index of the member that is being read
        std::set<std::string> keys;
    };

    bool element()
    {
        if (!levels_.empty() && levels_.back().is_array)
            levels_.back().place = std::to_string(levels_.back().next_index++);
        return true;
    }

    bool enter(bool is_array)
    {
        element();
        if (static_cast<int>(levels_.size()) == json_depth_limit)
            throw MalformedJson(path() + ": nested deeper than " +
                                std::to_string(json_depth_limit) + " levels");
        levels_.emplace_back();
        levels_.back().is_array = is_array;
        return true;
    }

    bool leave()
    {
        levels_.pop_back();
        return true;
    }

    std::string path() const
    {
        json::json_pointer pointer;
        for (const Level& level : levels_)
            pointer.push_back(level.place);
        return pointer.to_string();
    }

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

} // namespace

json parse_json(std::string_view text, JsonComments comments)
{
    // The parser would take a NUL for the end and ignore the rest.
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos)
        throw MalformedJson("parse error at " + place_of(text, nul) + ": a NUL byte");
    const bool ignore_comments = comments == JsonComments::allowed;
    try {
        StructureGuard guard;
        json::sax_parse(text, &guard, json::input_format_t::json, true, ignore_comments);
        return json::parse(text, nullptr, true, ignore_comments);
    } catch (const json::exception& error) {
        throw MalformedJson(without_tag(error.what()));
    }
}

} // namespace nmos_instrument::host

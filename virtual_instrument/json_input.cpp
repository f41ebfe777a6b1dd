// SPDX-License-Identifier: Apache-2.0

#include "json_input.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace virtual_instrument {
namespace {

using nlohmann::json;

/// Follows the parser through the text and throws where the structure is not acceptable.
class StructureGuard
{
public:
    void see(json::parse_event_t event, const json& parsed)
    {
        switch (event) {
        case json::parse_event_t::object_start:
        case json::parse_event_t::array_start:
            enter_element();
            if (static_cast<int>(levels_.size()) == json_depth_limit)
                throw MalformedJson(path() + ": deeper than " + std::to_string(json_depth_limit) +
                                    " levels");
            levels_.emplace_back();
            levels_.back().is_array = event == json::parse_event_t::array_start;
            break;
        case json::parse_event_t::object_end:
        case json::parse_event_t::array_end:
            levels_.pop_back();
            break;
        case json::parse_event_t::key:
            enter_member(levels_.back(), parsed.get<std::string>());
            break;
        case json::parse_event_t::value:
            enter_element();
            break;
        }
    }

private:
    struct Level
    {
        bool is_array = false;
        std::size_t next_index = 0;
        std::string place; ///< key or index of the member that is being read
        std::set<std::string> keys;
    };

    void enter_member(Level& object, const std::string& key)
    {
        object.place = key;
        if (!object.keys.insert(key).second)
            throw MalformedJson(path() + ": this key is given twice");
    }

    void enter_element()
    {
        if (!levels_.empty() && levels_.back().is_array)
            levels_.back().place = std::to_string(levels_.back().next_index++);
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

/// nlohmann's messages begin with "[json.exception.parse_error.101] ", which says nothing to a
/// reader.
std::string without_tag(std::string message)
{
    const std::size_t end = message.find("] ");
    if (message.starts_with('[') && end != std::string::npos)
        message.erase(0, end + 2);
    return message;
}

} // namespace

json parse_json(std::string_view text, JsonComments comments)
{
    StructureGuard guard;
    const auto callback = [&guard](int, json::parse_event_t event, json& parsed) {
        guard.see(event, parsed);
        return true;
    };
    try {
        return json::parse(text, callback, true, comments == JsonComments::allowed);
    } catch (const json::exception& error) {
        throw MalformedJson(without_tag(error.what()));
    }
}

} // namespace virtual_instrument

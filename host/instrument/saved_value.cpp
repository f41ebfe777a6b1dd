// SPDX-License-Identifier: Apache-2.0

#include "instrument/saved_value.h"

#include <optional>

#include <nlohmann/json.hpp>

#include "connection/json_place.h"
#include "instrument/saved_state.h"
#include "text/json_pointer.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {

SavedValue SavedValue::member(const std::string& key) const
{
    if (!value_.is_object())
        refuse("an object");
    const auto found = value_.find(key);
    if (found == value_.end())
        throw DamagedState(path_of(key) + " is missing");
    return {*found, path_of(key)};
}

std::string SavedValue::path_of(const std::string& key) const
{
    return path_ + '/' + json_pointer_token(key);
}

std::vector<std::string> SavedValue::keys(std::size_t most) const
{
    if (!value_.is_object())
        refuse("an object");
    if (value_.size() > most)
        throw DamagedState(path_ + ": found " + std::to_string(value_.size()) +
                           " members, allowed: at most " + std::to_string(most));
    std::vector<std::string> keys;
    for (const auto& [key, value] : value_.items())
        keys.push_back(key);
    return keys;
}

SavedValue SavedValue::element(std::size_t index, std::size_t size) const
{
    if (!value_.is_array() || value_.size() != size)
        refuse("an array of " + std::to_string(size));
    return {value_[index], path_ + '/' + std::to_string(index)};
}

std::uint64_t SavedValue::whole_number(std::uint64_t least, std::uint64_t most) const
{
    // What the program writes is never negative, and so never of the signed kind.
    if (value_.is_number_unsigned()) {
        const auto number = value_.get<std::uint64_t>();
        if (number >= least && number <= most)
            return number;
    }
    refuse("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

bool SavedValue::flag() const
{
    if (!value_.is_boolean())
        refuse("true or false");
    return value_.get<bool>();
}

const std::string& SavedValue::text(std::size_t most) const
{
    if (!value_.is_string())
        refuse("a text");
    const auto& text = value_.get_ref<const std::string&>();
    if (text.size() > most || text.find('\0') != std::string::npos)
        refuse("a text of at most " + std::to_string(most) + " bytes without NUL");
    return text;
}

TaiTime SavedValue::version() const
{
    const std::optional<TaiTime> time =
        value_.is_string() ? parse_tai_time(value_.get_ref<const std::string&>()) : std::nullopt;
    if (!time || *time > latest_version)
        refuse("\"<seconds>:<nanoseconds>\", at most " + to_text(latest_version));
    return *time;
}

void SavedValue::refuse(const std::string& allowed) const
{
    throw DamagedState(path_ + ": found " + describe(value_) + ", allowed: " + allowed);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "configuration/configuration_reader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

#include <nlohmann/json.hpp>

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

/// A value as a finding shows it: shortened, and with its length if that may be the problem.
std::string shown(const json& value)
{
    constexpr std::size_t longest = 80;
    constexpr std::size_t size_worth_saying = 16;
    std::string text = value.dump(-1, ' ', true, json::error_handler_t::replace);
    if (text.size() > longest)
        text.replace(longest, std::string::npos, "...");
    if (const auto* const string = value.get_ptr<const std::string*>();
        string != nullptr && string->size() > size_worth_saying)
        text += " (" + std::to_string(string->size()) + " bytes)";
    return text;
}

} // namespace

ConfigurationReader::ConfigurationReader(const json& root, std::string file)
    : file_(std::move(file))
{
    levels_.push_back({&root, "", {}});
    if (!root.is_object()) {
        find(file_ + ": found " + shown(root) + ", allowed: an object");
        levels_.back().value = nullptr;
    }
}

void ConfigurationReader::text(std::string_view key, std::string& value, const TextRule& rule,
                               std::string_view)
{
    const json* const found = look_up(key);
    if (found == nullptr)
        return;
    if (found->is_string()) {
        std::string text = found->get<std::string>();
        if (rule.accept(text)) {
            value = text;
            return;
        }
    }
    refuse(key, *found, rule.allowed);
}

void ConfigurationReader::text_or_null(std::string_view key, std::optional<std::string>& value,
                                       const TextRule& rule, std::string_view explanation)
{
    const json* const found = look_up(key);
    if (found != nullptr && found->is_null()) {
        value.reset();
        return;
    }
    std::string text = value.value_or("");
    const std::size_t findings_before = count_;
    this->text(key, text, {rule.allowed + ", or null", rule.accept}, explanation);
    if (found != nullptr && count_ == findings_before)
        value = text;
}

void ConfigurationReader::texts(std::string_view key, std::vector<std::string>& values,
                                const TextRule& rule, std::size_t most,
                                std::string_view explanation)
{
    const json* const found = look_up(key);
    if (found == nullptr)
        return;
    if (!found->is_array() || found->size() > most) {
        refuse_array(key, *found, "at most " + std::to_string(most) + " entries");
        return;
    }
    levels_.push_back({found, pointer_to(key), {}});
    values.assign(found->size(), "");
    for (std::size_t i = 0; i < values.size(); ++i)
        text(std::to_string(i), values[i], rule, explanation);
    levels_.pop_back();
}

std::optional<int> ConfigurationReader::number_in(const json& found, int lowest, int highest)
{
    // The parser makes numbers above 2^63 unsigned; they are too large for any limit.
    if (!found.is_number_integer() ||
        (found.is_number_unsigned() && found.get<std::uint64_t>() > std::uint64_t{INT32_MAX}))
        return std::nullopt;
    const auto number = found.get<std::int64_t>();
    if (number < lowest || number > highest)
        return std::nullopt;
    return static_cast<int>(number);
}

void ConfigurationReader::number(std::string_view key, int& value, int lowest, int highest,
                                 std::string_view)
{
    const json* const found = look_up(key);
    if (found == nullptr)
        return;
    if (const std::optional<int> number = number_in(*found, lowest, highest))
        value = *number;
    else
        refuse(key, *found, number_range(lowest, highest));
}

void ConfigurationReader::number_or_null(std::string_view key, std::optional<int>& value,
                                         int lowest, int highest, std::string_view)
{
    const json* const found = look_up(key);
    if (found == nullptr)
        return;
    value = number_in(*found, lowest, highest);
    if (!value && !found->is_null())
        refuse(key, *found, number_range(lowest, highest) + ", or null");
}

void ConfigurationReader::flag(std::string_view key, bool& value, std::string_view)
{
    const json* const found = look_up(key);
    if (found == nullptr)
        return;
    if (found->is_boolean())
        value = found->get<bool>();
    else
        refuse(key, *found, "true, false");
}

void ConfigurationReader::finish()
{
    leave_object();
}

void ConfigurationReader::find(const std::string& finding)
{
    // Nobody reads more than this.
    constexpr std::size_t most = 20;
    if (++count_ <= most)
        findings_.push_back(finding);
}

std::vector<std::string> ConfigurationReader::findings() const
{
    std::vector<std::string> findings = findings_;
    if (const std::size_t more = count_ - findings_.size(); more > 0)
        findings.push_back(file_ + ": and " + std::to_string(more) + " more");
    return findings;
}

void ConfigurationReader::refuse_combination(const std::string& pointer, const std::string& what)
{
    find(file_ + ": " + pointer + ": " + what);
}

bool ConfigurationReader::is_same(const nlohmann::json& found, std::string_view json)
{
    return found == nlohmann::json::parse(json);
}

const json* ConfigurationReader::look_up(std::string_view key)
{
    Level& level = levels_.back();
    if (level.value == nullptr || level.value->is_object()) {
        level.known_keys.emplace_back(key);
        if (level.value == nullptr)
            return nullptr;
        const auto member = level.value->find(std::string(key));
        return member == level.value->end() ? nullptr : &*member;
    }
    std::size_t index = 0;
    std::from_chars(key.data(), key.data() + key.size(), index);
    return &level.value->at(index);
}

std::string ConfigurationReader::pointer_to(std::string_view key) const
{
    return levels_.back().pointer + '/' + std::string(key);
}

void ConfigurationReader::refuse(std::string_view key, const json& found,
                                 const std::string& allowed)
{
    find(file_ + ": " + pointer_to(key) + ": found " + shown(found) + ", allowed: " + allowed);
}

void ConfigurationReader::refuse_array(std::string_view key, const json& found,
                                       const std::string& entries)
{
    if (found.is_array())
        find(file_ + ": " + pointer_to(key) + ": found an array of " +
             std::to_string(found.size()) + ", allowed: " + entries);
    else
        refuse(key, found, "an array of " + entries);
}

void ConfigurationReader::enter_object(std::string_view key)
{
    const json* found = look_up(key);
    if (found != nullptr && !found->is_object()) {
        refuse(key, *found, "an object");
        found = nullptr;
    }
    levels_.push_back({found, pointer_to(key), {}});
}

void ConfigurationReader::leave_object()
{
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    if (level.value == nullptr)
        return;
    const std::string place = level.pointer.empty() ? file_ : file_ + ": " + level.pointer;
    std::string allowed;
    for (const std::string& key : level.known_keys)
        allowed += (allowed.empty() ? "" : ", ") + key;
    for (const auto& member : level.value->items()) {
        const auto& known = level.known_keys;
        if (std::find(known.begin(), known.end(), member.key()) == known.end())
            find(std::string(place)
                     .append(": found the unknown key ")
                     .append(shown(json(member.key())))
                     .append(", allowed: ")
                     .append(allowed));
    }
}

void ConfigurationReader::enter_array(std::string_view key, std::size_t size)
{
    const json* found = look_up(key);
    if (found != nullptr && !(found->is_array() && found->size() == size)) {
        refuse_array(key, *found, std::to_string(size) + " entries");
        found = nullptr;
    }
    levels_.push_back({found, pointer_to(key), {}});
}

} // namespace nmos_instrument::host

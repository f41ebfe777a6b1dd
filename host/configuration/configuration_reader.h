// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_READER_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_READER_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "configuration/configuration_keys.h"
#include "configuration/value_rules.h"

namespace nmos_instrument::host {

/// Visitor that takes values from parsed JSON. An absent key leaves its setting alone; a value that
/// cannot be used becomes a finding, and reading goes on.
class ConfigurationReader
{
public:
    /// Every finding begins with `file`.
    ConfigurationReader(const nlohmann::json& root, std::string file);

    void text(std::string_view key, std::string& value, const TextRule& rule,
              std::string_view explanation);
    void text_or_null(std::string_view key, std::optional<std::string>& value, const TextRule& rule,
                      std::string_view explanation);
    /// An array of any length, up to `most`.
    void texts(std::string_view key, std::vector<std::string>& values, const TextRule& rule,
               std::size_t most, std::string_view explanation);
    void number(std::string_view key, int& value, int lowest, int highest,
                std::string_view explanation);
    void number_or_null(std::string_view key, std::optional<int>& value, int lowest, int highest,
                        std::string_view explanation);
    void flag(std::string_view key, bool& value, std::string_view explanation);

    template <class Meaning, std::size_t N>
    void choice(std::string_view key, Meaning& value, const std::array<Choice<Meaning>, N>& choices,
                std::string_view)
    {
        const nlohmann::json* const found = look_up(key);
        if (found == nullptr)
            return;
        for (const Choice<Meaning>& choice : choices) {
            if (is_same(*found, choice.json)) {
                value = choice.meaning;
                return;
            }
        }
        refuse(key, *found, list_of(choices));
    }

    template <class Body>
    void object(std::string_view key, std::string_view, Body body)
    {
        enter_object(key);
        body();
        leave_object();
    }

    /// An array must have one entry for each thing of the instrument that it lists.
    template <class Value, std::size_t N, class Body>
    void array(std::string_view key, std::array<Value, N>& values, std::string_view, Body body)
    {
        enter_array(key, N);
        for (std::size_t i = 0; i < N; ++i)
            body(std::to_string(i), values[i]);
        levels_.pop_back();
    }

    /// Call it after all keys have been visited.
    void finish();

    /// Adds a finding about values that are acceptable one by one but not together.
    void refuse_combination(const std::string& pointer, const std::string& what);

    bool found_nothing() const { return count_ == 0; }

    /// The first 20, and how many more there are.
    std::vector<std::string> findings() const;

private:
    struct Level
    {
        const nlohmann::json* value; ///< null if the file has nothing here
        std::string pointer;
        std::vector<std::string> known_keys;
    };

    void find(const std::string& finding);
    static std::optional<int> number_in(const nlohmann::json& found, int lowest, int highest);
    static bool is_same(const nlohmann::json& found, std::string_view json);
    const nlohmann::json* look_up(std::string_view key);
    std::string pointer_to(std::string_view key) const;
    void refuse(std::string_view key, const nlohmann::json& found, const std::string& allowed);
    void refuse_array(std::string_view key, const nlohmann::json& found,
                      const std::string& entries);
    void enter_object(std::string_view key);
    void leave_object();
    void enter_array(std::string_view key, std::size_t size);

    std::string file_;
    std::vector<Level> levels_;
    std::size_t count_ = 0; ///< of findings, also of those that are not kept
    std::vector<std::string> findings_;
};

} // namespace nmos_instrument::host

#endif

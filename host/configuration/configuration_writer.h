// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_WRITER_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_WRITER_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "configuration/value_rules.h"

namespace nmos_instrument::host {

/// Visitor that writes a configuration file: JSON, with a comment above each key.
class ConfigurationWriter
{
public:
    void text(std::string_view key, const std::string& value, const TextRule& rule,
              std::string_view explanation);
    void text_or_null(std::string_view key, const std::optional<std::string>& value,
                      const TextRule& rule, std::string_view explanation);
    void texts(std::string_view key, const std::vector<std::string>& values, const TextRule& rule,
               std::size_t most, std::string_view explanation);
    void number(std::string_view key, int value, int lowest, int highest,
                std::string_view explanation);
    void number_or_null(std::string_view key, const std::optional<int>& value, int lowest,
                        int highest, std::string_view explanation);
    void flag(std::string_view key, bool value, std::string_view explanation);

    template <class Meaning, std::size_t N>
    void choice(std::string_view key, Meaning value, const std::array<Choice<Meaning>, N>& choices,
                std::string_view explanation)
    {
        for (const Choice<Meaning>& choice : choices) {
            if (choice.meaning == value)
                member(key, choice.json, explanation, list_of(choices));
        }
    }

    template <class Body>
    void object(std::string_view key, std::string_view explanation, Body body)
    {
        open(key, explanation, '{', false);
        body();
        close('}');
    }

    template <class Value, std::size_t N, class Body>
    void array(std::string_view key, const std::array<Value, N>& values,
               std::string_view explanation, Body body)
    {
        open(key, explanation, '[', true);
        for (std::size_t i = 0; i < N; ++i)
            body(std::to_string(i), values[i]);
        close(']');
    }

    /// The whole file. Call it after all keys have been visited.
    std::string finish();

private:
    struct Level
    {
        bool is_array;
        bool is_empty;
        bool has_comments; ///< false in later entries of an array, which are like the first
    };

    void member(std::string_view key, std::string_view json, std::string_view explanation,
                const std::string& allowed);
    void begin_member(std::string_view key, const std::string& comment);
    void open(std::string_view key, std::string_view explanation, char bracket, bool is_array);
    void close(char bracket);
    void begin_line();
    void write_comment(const std::string& comment);

    std::vector<Level> levels_ = {{false, true, true}};
    std::string text_ = "{";
};

} // namespace nmos_instrument::host

#endif

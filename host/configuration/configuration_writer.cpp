// SPDX-License-Identifier: Apache-2.0

#include "configuration/configuration_writer.h"

#include <nlohmann/json.hpp>

namespace nmos_instrument::host {
namespace {

std::string quoted(const std::string& text)
{
    return nlohmann::json(text).dump();
}

} // namespace

void ConfigurationWriter::text(std::string_view key, const std::string& value, const TextRule& rule,
                               std::string_view explanation)
{
    member(key, quoted(value), explanation, rule.allowed);
}

void ConfigurationWriter::text_or_null(std::string_view key,
                                       const std::optional<std::string>& value,
                                       const TextRule& rule, std::string_view explanation)
{
    member(key, value ? quoted(*value) : "null", explanation, rule.allowed + ", or null");
}

void ConfigurationWriter::texts(std::string_view key, const std::vector<std::string>& values,
                                const TextRule& rule, std::size_t most,
                                std::string_view explanation)
{
    const std::string allowed =
        "at most " + std::to_string(most) + " entries, each a " + rule.allowed;
    if (values.empty()) {
        member(key, "[]", explanation, allowed);
        return;
    }
    open(key, std::string(explanation) + " Allowed: " + allowed + ".", '[', true);
    for (const std::string& value : values)
        member({}, quoted(value), {}, {});
    close(']');
}

void ConfigurationWriter::number(std::string_view key, int value, int lowest, int highest,
                                 std::string_view explanation)
{
    member(key, std::to_string(value), explanation, number_range(lowest, highest));
}

void ConfigurationWriter::number_or_null(std::string_view key, const std::optional<int>& value,
                                         int lowest, int highest, std::string_view explanation)
{
    member(key, value ? std::to_string(*value) : "null", explanation,
           number_range(lowest, highest) + ", or null");
}

void ConfigurationWriter::flag(std::string_view key, bool value, std::string_view explanation)
{
    member(key, value ? "true" : "false", explanation, "true, false");
}

std::string ConfigurationWriter::finish()
{
    text_ += "\n}\n";
    return text_;
}

void ConfigurationWriter::member(std::string_view key, std::string_view json,
                                 std::string_view explanation, const std::string& allowed)
{
    std::string comment(explanation);
    if (!comment.empty())
        comment += " Allowed: " + allowed + ".";
    begin_member(key, comment);
    text_ += json;
}

void ConfigurationWriter::begin_member(std::string_view key, const std::string& comment)
{
    Level& level = levels_.back();
    if (!level.is_empty)
        text_ += ',';
    // Empty lines separate the groups of the file; within a group they would only lengthen it.
    if (levels_.size() == 1 && !level.is_empty)
        text_ += '\n';
    level.is_empty = false;
    if (level.has_comments)
        write_comment(comment);
    begin_line();
    if (!level.is_array)
        text_ += quoted(std::string(key)) + ": ";
}

void ConfigurationWriter::open(std::string_view key, std::string_view explanation, char bracket,
                               bool is_array)
{
    const Level parent = levels_.back();
    begin_member(key, std::string(explanation));
    text_ += bracket;
    const bool is_repetition = parent.is_array && !parent.is_empty;
    levels_.push_back({is_array, true, parent.has_comments && !is_repetition});
}

void ConfigurationWriter::close(char bracket)
{
    levels_.pop_back();
    begin_line();
    text_ += bracket;
}

void ConfigurationWriter::begin_line()
{
    text_ += '\n';
    text_.append(4 * levels_.size(), ' ');
}

void ConfigurationWriter::write_comment(const std::string& comment)
{
    constexpr std::size_t line_width = 96;
    const std::size_t room = line_width - 4 * levels_.size() - 3;
    std::string_view rest = comment;
    while (!rest.empty()) {
        std::size_t end = rest.size();
        if (end > room) {
            end = rest.rfind(' ', room);
            if (end == std::string_view::npos)
                end = rest.size();
        }
        begin_line();
        text_ += "// ";
        text_ += rest.substr(0, end);
        rest.remove_prefix(end < rest.size() ? end + 1 : end);
    }
}

} // namespace nmos_instrument::host

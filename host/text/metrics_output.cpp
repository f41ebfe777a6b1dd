// SPDX-License-Identifier: Apache-2.0

#include "text/metrics_output.h"

#include <fmt/format.h>

namespace nmos_instrument::host {
namespace {

/// As the value of a label: https://prometheus.io/docs/instrumenting/exposition_formats/
std::string escaped(std::string_view text)
{
    std::string value;
    for (const char c : text) {
        if (c == '\n')
            value += "\\n";
        else if (c == '\\' || c == '"')
            value += {'\\', c};
        else
            value += c;
    }
    return value;
}

std::string in_seconds(std::chrono::microseconds time)
{
    constexpr std::int64_t million = 1'000'000;
    return fmt::format("{}.{:06}", time.count() / million, time.count() % million);
}

} // namespace

void MetricsOutput::value(std::uint64_t value, Labels labels)
{
    line("", labels, std::to_string(value));
}

void MetricsOutput::value(std::chrono::microseconds value)
{
    line("", {}, in_seconds(value));
}

void MetricsOutput::summary(std::string_view name, std::string_view help,
                            std::chrono::microseconds sum, std::uint64_t count)
{
    begin(name, "summary", help);
    line("_sum", {}, in_seconds(sum));
    line("_count", {}, std::to_string(count));
}

void MetricsOutput::begin(std::string_view name, std::string_view type, std::string_view help)
{
    name_ = name;
    text_ += fmt::format("# HELP {} {}\n# TYPE {} {}\n", name, help, name, type);
}

void MetricsOutput::line(std::string_view suffix, Labels labels, std::string_view value)
{
    text_.append(name_).append(suffix);
    char before = '{';
    for (const auto& [name, text] : labels) {
        text_ += fmt::format("{}{}=\"{}\"", before, name, escaped(text));
        before = ',';
    }
    if (labels.size() != 0)
        text_ += '}';
    text_.append(" ").append(value) += '\n';
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "configuration/configuration.h"

#include <optional>
#include <utility>

#include <nlohmann/json.hpp>

#include "configuration/configuration_keys.h"
#include "configuration/configuration_reader.h"
#include "configuration/configuration_writer.h"
#include "text/json_input.h"
#include "text/whole_file.h"

namespace nmos_instrument::host {
namespace {

constexpr std::size_t largest_file = std::size_t{1} << 20;

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += (text.empty() ? "" : "\n") + line;
    return text;
}

/// The default of a key can depend on another key.
void set_dependent_defaults(const nlohmann::json& root, Configuration& configuration)
{
    if (root.is_object() && root.contains("carriage") && root["carriage"] == "ST 2022-6")
        configuration.payload_types.video = st2022_6_payload_type;
}

/// Values that are right one by one but impossible together.
void check_combinations(const Configuration& c, ConfigurationReader& reader)
{
    if (c.video.scan == Scan::interlaced && c.video.lines != PictureSize::lines_1080)
        reader.refuse_combination("/video/lines", "found " +
                                                      std::string(facts_of(c.video.lines).json) +
                                                      " with interlaced scan, allowed: 1080");
    if (facts_of(c.video.frame_rate).scan != c.video.scan) {
        const bool interlaced = c.video.scan == Scan::interlaced;
        reader.refuse_combination("/video/frame_rate",
                                  "found " + std::string(facts_of(c.video.frame_rate).json) +
                                      (interlaced
                                           ? " with interlaced scan, allowed: 30, 29.97, 25"
                                           : " with progressive scan, allowed: 60, 59.94, 50"));
    }
    if (c.carriage == Carriage::st2022_6 && c.payload_types.video != st2022_6_payload_type)
        reader.refuse_combination(
            "/payload_types/video",
            "found " + std::to_string(c.payload_types.video) +
                " with ST 2022-6 carriage, allowed: " + std::to_string(st2022_6_payload_type));
    if (c.interfaces[0].name == c.interfaces[1].name)
        reader.refuse_combination(
            "/interfaces/1/name",
            "found the name of the first interface, allowed: a different one");
}

} // namespace

ConfigurationRefused::ConfigurationRefused(std::vector<std::string> findings)
    : std::runtime_error(joined(findings)), findings_(std::move(findings))
{}

Configuration parse_configuration(std::string_view text, const std::string& name)
{
    std::optional<JsonDocument> document;
    try {
        document.emplace(parse_json(text, JsonComments::allowed));
    } catch (const MalformedJson& error) {
        throw ConfigurationRefused({name + ": " + error.what()});
    }

    const nlohmann::json& root = document->value();
    Configuration configuration;
    set_dependent_defaults(root, configuration);
    ConfigurationReader reader(root, name);
    visit_keys(reader, configuration);
    reader.finish();
    // A refused value leaves a default in its place, which need not fit the other values.
    if (reader.found_nothing())
        check_combinations(configuration, reader);
    if (!reader.found_nothing())
        throw ConfigurationRefused(reader.findings());
    return configuration;
}

Configuration load_configuration(const std::string& file)
{
    return parse_configuration(read_whole_file(file, largest_file), file);
}

std::string explain_configuration(const Configuration& configuration)
{
    ConfigurationWriter writer;
    visit_keys(writer, configuration);
    return writer.finish();
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "commands/configuration_options.h"

#include "whole_file.h"

namespace virtual_instrument {

void ConfigurationOptions::add_to(CLI::App& command)
{
    command.add_option("--config", file, "configuration of the instrument, JSON with comments")
        ->type_name("FILE");
    CLI::Option* const print_option = command.add_flag(
        "--print-config", print, "print the configuration with every key explained, and end");
    command.add_flag("--check-config", check, "only check the configuration")
        ->excludes(print_option);
}

std::optional<Configuration> load(const ConfigurationOptions& options, std::ostream& errors,
                                  ExitStatus& status)
{
    status = done;
    if (!options.file)
        return Configuration();
    try {
        return load_configuration(*options.file);
    } catch (const ConfigurationRefused& error) {
        for (const std::string& finding : error.findings())
            errors << finding << '\n';
        status = refused;
    } catch (const UnreadableFile& error) {
        errors << "--config " << *options.file << ": " << error.what() << '\n';
        status = unreadable;
    }
    return std::nullopt;
}

void answer_about(const Configuration& configuration, const ConfigurationOptions& options,
                  std::ostream& out)
{
    if (options.print)
        out << explain_configuration(configuration);
}

} // namespace virtual_instrument

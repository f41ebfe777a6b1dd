// SPDX-License-Identifier: Apache-2.0

#include "commands/configuration_options.h"

#include <CLI/CLI.hpp>

#include "text/quoted_text.h"
#include "text/whole_file.h"

namespace nmos_instrument::program {

void ConfigurationOptions::add_to(CLI::App& command)
{
    command
        .add_option("--config", file,
                    "configuration of the instrument: JSON, with or without comments")
        ->type_name("FILE");
    CLI::Option* const print_option = command.add_flag(
        "--print-config", print, "print the configuration with every key explained, and exit");
    command.add_flag("--check-config", check, "only check the configuration, and exit")
        ->excludes(print_option);
}

std::optional<host::Configuration> load(const ConfigurationOptions& options, std::ostream& errors,
                                        ExitStatus& status)
{
    status = done;
    if (!options.file)
        return host::Configuration();
    try {
        return host::load_configuration(*options.file);
    } catch (const host::ConfigurationRefused& error) {
        for (const std::string& finding : error.findings())
            errors << host::printable(finding) << '\n';
        status = refused;
    } catch (const host::UnreadableFile& error) {
        errors << "--config " << host::printable(*options.file) << ": " << error.what() << '\n';
        status = unreadable;
    }
    return std::nullopt;
}

void answer_about(const host::Configuration& configuration, const ConfigurationOptions& options,
                  std::ostream& out)
{
    if (options.print)
        out << host::explain_configuration(configuration);
}

} // namespace nmos_instrument::program

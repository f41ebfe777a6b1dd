// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_OPTIONS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "commands/cli11_names.h"
#include "commands/configuration_options.h"
#include "commands/exit_status.h"
#include "configuration/configuration.h"
#include "text/ipv4_network.h"
#include <nmos_instrument_host/instrument.h>

namespace nmos_instrument::program {

/// Those that take the place of a key of the configuration are empty where it counts.
struct ServeOptions
{
    ConfigurationOptions configuration;
    std::optional<std::string> state_file;
    bool state_reset = false;

    std::optional<std::string> listen;
    std::optional<std::string> address;
    std::optional<int> port;
    std::optional<int> advertised_port;
    bool first_free_port = false;

    std::vector<std::string> registries;
    std::optional<std::string> registry_ca;
    bool no_registration = false;
    std::optional<std::string> dns_domain;
    bool development_registries = false;
    std::optional<std::string> service_file;
    std::optional<std::string> advertise;

    std::vector<host::Ipv4Network> manifest_hosts;
    unsigned connections_per_address = nmos_instrument_host::Options().connections_per_address;
    bool read_only = false;
    std::vector<host::Ipv4Network> allow_changes;
    bool as_is = false;
    bool no_panel = false;
    std::string log_level = "info";

    /// `command` keeps references to this object.
    void add_to(CLI::App& command);

    /// What the options say takes the place of what the configuration says.
    void replace_in(host::Configuration& settings) const;

    /// What the options say of anything else.
    nmos_instrument_host::Options of_instrument() const;

private:
    void add_reach_to(CLI::App& command);
    void add_registration_to(CLI::App& command);
    void add_advertisement_to(CLI::App& command);
};

/// Adds `serve`, which runs the instrument on the network until SIGTERM or SIGINT.
void add_serve_command(CLI::App& program, ExitStatus& status);

} // namespace nmos_instrument::program

#endif

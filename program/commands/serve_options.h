// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_OPTIONS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands/configuration_options.h"
#include "http/server.h"
#include "routes/change_permission.h"
#include "text/ipv4_network.h"

namespace nmos_instrument::program {

struct ServeOptions
{
    ConfigurationOptions configuration;
    std::optional<std::string> state_file;
    bool state_reset = false;
    std::optional<int> port;
    bool first_free_port = false;
    std::vector<host::Ipv4Network> manifest_hosts;
    unsigned connections_per_address = host::HttpServerOptions().connections_per_address;
    host::ChangePermission changes;
    bool as_is = false;
    std::string log_level = "info";

    /// `command` keeps references to this object.
    void add_to(CLI::App& command);
};

} // namespace nmos_instrument::program

#endif

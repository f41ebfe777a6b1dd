// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_NETWORK_OPTION_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_NETWORK_OPTION_H

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "text/ipv4_network.h"

namespace nmos_instrument::program {

/// An option that may be repeated, and adds one network each time. `networks` must outlive the
/// command.
void add_network_option(CLI::App& command, const std::string& name,
                        std::vector<host::Ipv4Network>& networks, const std::string& explanation);

} // namespace nmos_instrument::program

#endif

// SPDX-License-Identifier: Apache-2.0

#include "commands/serve_options.h"

#include "commands/network_option.h"
#include "commands/number_option.h"

namespace nmos_instrument::program {

void ServeOptions::add_to(CLI::App& command)
{
    configuration.add_to(command);
    CLI::Option* const state =
        command
            .add_option("--state", state_file,
                        "file that keeps connections, versions and counters across restarts; one "
                        "process at a time may use it")
            ->type_name("FILE");
    command
        .add_flag("--state-reset", state_reset,
                  "renames the file to FILE.previous and starts afresh")
        ->needs(state);
    command.add_option("--port", port, "TCP port, instead of the one in the configuration")
        ->check(whole_number(1, 65535, "1 to 65535"))
        ->type_name("PORT");
    command.add_flag("--first-free-port", first_free_port,
                     "if the port is in use, serve at the next free one");
    command.add_flag("--as-is", as_is,
                     "serve the texts of the library unchanged, even where IS-04, IS-05 or the "
                     "standards for SDP files ask for something else");
    command.add_flag("--read-only", changes.read_only,
                     "refuse every change of a connection with 403");
    add_network_option(command, "--allow", changes.clients,
                       "network or address of clients that may change connections; without it, "
                       "every client may");
    add_network_option(command, "--manifest-hosts", manifest_hosts,
                       "network or address that manifests of other senders are fetched from too, "
                       "besides the networks of the instrument's interfaces");
    command
        .add_option("--connections-per-address", connections_per_address,
                    "how many connections one client may have at once; 0: no limit")
        ->check(whole_number(0, 1'000'000, "0 to 1000000"))
        ->capture_default_str()
        ->type_name("N");
    command
        .add_option("--log-level", log_level,
                    "how much is logged to standard error; debug: each request too")
        ->check(CLI::IsMember({"debug", "info", "warning", "error", "off"}))
        ->capture_default_str()
        ->type_name("LEVEL");
}

} // namespace nmos_instrument::program

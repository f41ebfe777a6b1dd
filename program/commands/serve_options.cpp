// SPDX-License-Identifier: Apache-2.0

#include "commands/serve_options.h"

#include <array>
#include <memory>
#include <string_view>

#include <CLI/CLI.hpp>

#include "commands/option_rules.h"
#include "commands/serve.h"
#include "configuration/configuration_keys.h"
#include "configuration/network_rules.h"
#include "log/instrument_log.h"
#include "panel/panel.h"

namespace nmos_instrument::program {
namespace {

struct AdvertiseWord
{
    const char* word;
    host::Advertise meaning;
};

constexpr std::array<AdvertiseWord, 3> advertise_words = {{
    {"always", host::Advertise::always},
    {"peer-to-peer", host::Advertise::peer_to_peer},
    {"never", host::Advertise::never},
}};

std::vector<std::string> words_of_advertise()
{
    std::vector<std::string> words;
    words.reserve(advertise_words.size());
    for (const AdvertiseWord& one : advertise_words)
        words.emplace_back(one.word);
    return words;
}

std::vector<std::string> texts_of(const std::vector<host::Ipv4Network>& networks)
{
    std::vector<std::string> texts;
    texts.reserve(networks.size());
    for (const host::Ipv4Network& network : networks)
        texts.push_back(text_of(network));
    return texts;
}

} // namespace

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
    add_reach_to(command);
    add_registration_to(command);
    add_advertisement_to(command);
    command.add_flag("--as-is", as_is,
                     "serve the texts of the library unchanged, even where IS-04, IS-05 or the "
                     "standards for SDP files ask for something else");
    command.add_flag("--no-panel", no_panel,
                     "do not show browsers the page that operates the instrument");
    command.add_flag("--read-only", read_only, "refuse every change of a connection with 403");
    add_network_option(command, "--allow", allow_changes,
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

void ServeOptions::add_reach_to(CLI::App& command)
{
    command
        .add_option("--listen", listen,
                    "where to listen: an IPv4 or IPv6 address, an interface like eth0, or any for "
                    "every address; 127.0.0.1 unless the configuration says otherwise")
        ->transform(obeys(host::listening_place()))
        ->type_name("ADDR|IFACE|any");
    command
        .add_option("--address", address,
                    "IPv4 address that controllers are told, or the interface that has it; without "
                    "it that of where it listens")
        ->transform(obeys(host::own_address()))
        ->type_name("ADDR|IFACE");
    command.add_option("--port", port, "TCP port, instead of the one in the configuration")
        ->check(whole_number(1, 65535, "1 to 65535"))
        ->type_name("PORT");
    command.add_flag("--first-free-port", first_free_port,
                     "if the port is in use, serve at the next free one");
    command
        .add_option("--advertised-port", advertised_port,
                    "TCP port that controllers are told, if it is not the one to listen at")
        ->check(whole_number(1, 65535, "1 to 65535"))
        ->type_name("PORT");
}

void ServeOptions::add_registration_to(CLI::App& command)
{
    const auto refuse_another = [this](const std::string& word) -> std::string {
        return registries.size() < host::most_registries
                   ? ""
                   : refusal_of(word,
                                "at most " + std::to_string(host::most_registries) + " of them");
    };
    CLI::Option* const registry =
        command
            .add_option_function<std::string>(
                "--registry", [this](const std::string& url) { registries.push_back(url); },
                "registry to register with, like http://registry.example:8080, instead of those "
                "that DNS-SD finds; may be repeated, the first that answers is used")
            ->transform(obeys(host::registry_address()))
            ->check(CLI::Validator(refuse_another, ""))
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->trigger_on_parse()
            ->type_name("URL");
    command
        .add_option("--registry-ca", registry_ca,
                    "certificates (PEM) that are trusted for registries at https, instead of those "
                    "of the system")
        ->transform(obeys(host::file_path()))
        ->type_name("FILE");
    command.add_flag("--no-registration", no_registration, "do not register with any registry")
        ->excludes(registry);
    command
        .add_option("--dns-domain", dns_domain,
                    "domain in which DNS-SD looks for registries, instead of the search domain of "
                    "the machine")
        ->transform(obeys(host::domain_name()))
        ->type_name("DOMAIN");
    command.add_flag("--development-registries", development_registries,
                     "use registries of priority 100 and more too");
}

void ServeOptions::add_advertisement_to(CLI::App& command)
{
    command
        .add_option("--service-file", service_file,
                    "file of avahi-daemon by which the node is advertised to its neighbours, like "
                    "/etc/avahi/services/nmos-node.service")
        ->transform(obeys(host::service_file_path()))
        ->type_name("PATH");
    command
        .add_option("--advertise", advertise,
                    "when it is advertised: always, peer-to-peer (while there is no registry) or "
                    "never")
        ->check(one_of(words_of_advertise()))
        ->type_name("always|peer-to-peer|never");
}

void ServeOptions::replace_in(host::Configuration& settings) const
{
    const auto replace = [](const auto& option, auto& value) {
        if (option)
            value = *option;
    };
    host::ServerSettings& server = settings.server;
    replace(listen, server.listen);
    replace(address, server.address);
    replace(port, server.port);
    replace(advertised_port, server.advertised_port);

    host::RegistrationSettings& registration = settings.registration;
    if (!registries.empty()) {
        registration.enabled = true;
        registration.registries = registries;
    }
    replace(registry_ca, registration.ca_file);
    if (no_registration)
        registration.enabled = false;
    replace(dns_domain, registration.dns_domain);
    if (development_registries)
        registration.development_registries = true;

    replace(service_file, settings.advertisement.service_file);
    for (const AdvertiseWord& one : advertise_words) {
        if (advertise == one.word)
            settings.advertisement.when = one.meaning;
    }
}

nmos_instrument_host::Options ServeOptions::of_instrument() const
{
    nmos_instrument_host::Options instrument;
    instrument.state_file = state_file;
    instrument.reset_state = state_reset;
    instrument.first_free_port = first_free_port;
    instrument.connections_per_address = connections_per_address;
    if (!no_panel)
        instrument.page = panel();
    instrument.read_only = read_only;
    instrument.changes_from = texts_of(allow_changes);
    instrument.manifests_from = texts_of(manifest_hosts);
    instrument.as_is = as_is;
    instrument.log_level = level_of(log_level);
    instrument.configuration_name = configuration.file.value_or("");
    return instrument;
}

void add_serve_command(CLI::App& program, ExitStatus& status)
{
    const auto options = std::make_shared<ServeOptions>();
    CLI::App* const command =
        program.add_subcommand("serve", "Runs the instrument on the network as an NMOS node");
    options->add_to(*command);
    command->callback([options, &status] { status = serve(*options); });
}

} // namespace nmos_instrument::program

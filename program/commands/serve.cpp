// SPDX-License-Identifier: Apache-2.0

#include "commands/serve.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include "commands/configuration_options.h"
#include "commands/number_option.h"
#include "http/manifest_fetcher.h"
#include "http/manifest_hosts.h"
#include "http/server.h"
#include "instrument/activation_thread.h"
#include "instrument/instrument.h"
#include "instrument/state_file.h"
#include "records/addresses.h"
#include "routes/router.h"
#include "text/ipv4_address.h"
#include "text/ipv4_network.h"
#include "text/quoted_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::program {
namespace {

struct ServeOptions
{
    ConfigurationOptions configuration;
    std::optional<std::string> state_file;
    std::optional<int> port;
    bool first_free_port = false;
    std::vector<std::string> manifest_hosts;
    unsigned connections_per_address = host::HttpServerOptions().connections_per_address;
    std::string log_level = "info";
};

CLI::Validator network_word()
{
    const auto refuse = [](const std::string& word) -> std::string {
        return host::parse_ipv4_network(word)
                   ? ""
                   : refusal_of(word, std::string(host::allowed_ipv4_network()));
    };
    return {refuse, ""};
}

void start_log(const std::string& level)
{
    const auto logger = std::make_shared<spdlog::logger>(
        "nmos-instrument", std::make_shared<spdlog::sinks::stderr_sink_mt>());
    logger->set_level(spdlog::level::from_str(level));
    logger->set_pattern("%Y-%m-%dT%H:%M:%S.%e %l: %v");
    spdlog::set_default_logger(logger);
}

/// Keeps SIGTERM and SIGINT for the thread that waits for them. Make it before any thread starts:
/// threads inherit the blocked signals.
class EndSignals
{
public:
    EndSignals()
    {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGTERM);
        sigaddset(&signals_, SIGINT);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
        // The program does not end because a client goes away.
        static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    }

    int wait() const
    {
        int signal = 0;
        sigwait(&signals_, &signal);
        return signal;
    }

private:
    sigset_t signals_{};
};

host::HttpServerOptions server_options(const ServeOptions& options)
{
    host::HttpServerOptions server;
    server.connections_per_address = options.connections_per_address;
    server.on_request = [](const host::HttpAccess& access) {
        spdlog::debug("{} {} {} {} {} us", access.peer, host::in_quotes(access.method),
                      host::in_quotes(access.path), access.status, access.duration.count());
    };
    server.on_failure = [](const std::string& failure) { spdlog::error("http: {}", failure); };
    server.on_diagnostic = [](const std::string& remark) { spdlog::debug("http: {}", remark); };
    return server;
}

/// Listens where the configuration says; if the options allow it, at the first free port from
/// there on.
host::ListeningSocket listen(const ServeOptions& options, const host::ServerSettings& settings)
{
    const auto port = static_cast<std::uint16_t>(settings.port);
    if (options.first_free_port)
        return host::listen_at_first_free_port(settings.address, port);
    try {
        return {settings.address, port};
    } catch (const std::system_error& error) {
        if (error.code() != std::errc::address_in_use)
            throw;
        throw std::runtime_error(std::string(error.what()) +
                                 "; use --port PORT for another port, or --first-free-port for "
                                 "the next free one");
    }
}

/// The networks of the instrument's addresses, and those that the options add.
host::ManifestHosts manifest_hosts(const ServeOptions& options,
                                   const host::Configuration& configuration)
{
    const auto network_of = [](const std::string& address) {
        return host::network_of_interface(host::ipv4_from_dotted_quad(address).value_or(0));
    };
    std::vector<host::Ipv4Network> own;
    for (const host::MediaInterface& interface : configuration.interfaces)
        own.push_back(network_of(interface.address));
    std::vector<host::Ipv4Network> named;
    for (const std::string& word : options.manifest_hosts)
        named.push_back(host::parse_ipv4_network(word).value());
    return {own, network_of(configuration.server.address), named};
}

void run(const ServeOptions& options, host::Configuration configuration)
{
    const EndSignals end_signals;

    // The port comes first, because the records of the instrument name it.
    host::ListeningSocket socket = listen(options, configuration.server);
    configuration.server.port = socket.port();

    host::Instrument instrument(configuration, host::tai_now);
    std::optional<host::StateFile> state_file;
    if (options.state_file) {
        host::restore_from(*options.state_file, instrument);
        state_file.emplace(*options.state_file, instrument);
    }
    host::ActivationThread activations(instrument);
    instrument.listen({
        .changed =
            [&] {
                if (state_file)
                    state_file->changed();
            },
        .scheduled = [&] { activations.look_again(); },
    });

    const host::ManifestHosts hosts = manifest_hosts(options, configuration);
    spdlog::info("manifests of other senders are fetched from {}", hosts.text());
    host::ManifestFetcher manifests(hosts);
    const host::Router router({instrument, manifests, state_file ? &*state_file : nullptr});
    // The server comes last, so that it stops before anything that its handlers use goes away.
    const host::HttpServer server(
        std::move(socket), server_options(options),
        [&](const host::HttpRequest& request, const host::HttpReply& reply) {
            router.handle(request, reply);
        });

    const std::string url = host::base_url(configuration.server);
    spdlog::info("serving {} (at most {} connections)", url, server.connection_limit());
    if (configuration.server.address.starts_with("127."))
        spdlog::info("only this machine can reach {}: set server.address in the configuration",
                     configuration.server.address);
    std::cout << url << std::endl; // flushed, because a script that started us waits for it

    const int signal = end_signals.wait();
    spdlog::info("stopping on signal {}", signal);
}

ExitStatus serve(const ServeOptions& options)
{
    ExitStatus status = done;
    std::optional<host::Configuration> configuration =
        load(options.configuration, std::cerr, status);
    if (!configuration)
        return status;
    if (options.port)
        configuration->server.port = *options.port;
    if (options.configuration.asks_about_configuration()) {
        answer_about(*configuration, options.configuration, std::cout);
        return done;
    }
    start_log(options.log_level);
    try {
        run(options, *configuration);
    } catch (const std::exception& error) {
        spdlog::critical("cannot serve: {}", error.what());
        return unreadable;
    }
    return done;
}

} // namespace

void add_serve_command(CLI::App& program, ExitStatus& status)
{
    const auto options = std::make_shared<ServeOptions>();
    CLI::App* const command =
        program.add_subcommand("serve", "Runs the instrument on the network as an NMOS node");
    options->configuration.add_to(*command);
    command
        ->add_option("--state", options->state_file,
                     "file that keeps connections, versions and counters across restarts")
        ->type_name("FILE");
    command
        ->add_option("--port", options->port, "TCP port, instead of the one in the configuration")
        ->check(whole_number(1, 65535, "1 to 65535"))
        ->type_name("PORT");
    command->add_flag("--first-free-port", options->first_free_port,
                      "if the port is in use, serve at the next free one");
    command
        ->add_option("--manifest-hosts", options->manifest_hosts,
                     "network or address that manifests of other senders are fetched from too, "
                     "besides the networks of the instrument's interfaces; may be repeated")
        ->allow_extra_args(false)
        ->check(network_word())
        ->type_name("CIDR");
    command
        ->add_option("--connections-per-address", options->connections_per_address,
                     "how many connections one client may have at once; 0: no limit")
        ->check(whole_number(0, 1'000'000, "0 to 1000000"))
        ->capture_default_str()
        ->type_name("N");
    command->add_option("--log-level", options->log_level, "how much is logged to standard error")
        ->check(CLI::IsMember({"debug", "info", "warning", "error", "off"}))
        ->capture_default_str()
        ->type_name("LEVEL");
    command->callback([options, &status] { status = serve(*options); });
}

} // namespace nmos_instrument::program

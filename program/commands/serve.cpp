// SPDX-License-Identifier: Apache-2.0

#include "commands/serve.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include "commands/configuration_options.h"
#include "http/error_response.h"
#include "http/manifest_fetcher.h"
#include "http/server.h"
#include "instrument/activation_thread.h"
#include "instrument/instrument.h"
#include "instrument/state_file.h"
#include "records/addresses.h"
#include "routes/routes.h"
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
    unsigned connections_per_address = host::HttpServerOptions().connections_per_address;
    std::string log_level = "info";
};

void start_log(const std::string& level)
{
    const auto logger = std::make_shared<spdlog::logger>(
        "nmos-instrument", std::make_shared<spdlog::sinks::stderr_sink_mt>());
    logger->set_level(spdlog::level::from_str(level));
    logger->set_pattern("%Y-%m-%dT%H:%M:%S.%e %l: %v");
    spdlog::set_default_logger(logger);
}

/// SIGTERM and SIGINT, for the thread that waits for them and no other. To be made before any
/// thread is started: threads inherit what is blocked.
class EndSignals
{
public:
    EndSignals()
    {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGTERM);
        sigaddset(&signals_, SIGINT);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
        // A client that goes away is no reason to end.
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

host::HttpServerOptions server_options(const ServeOptions& options,
                                       const host::ServerSettings& settings)
{
    host::HttpServerOptions server;
    server.address = settings.address;
    server.port = static_cast<std::uint16_t>(settings.port);
    server.connections_per_address = options.connections_per_address;
    server.on_request = [](const host::HttpAccess& access) {
        spdlog::debug("{} {} {} {} {} us", access.peer, host::in_quotes(access.method),
                      host::in_quotes(access.path), access.status, access.duration.count());
    };
    server.on_failure = [](const std::string& failure) { spdlog::error("http: {}", failure); };
    server.on_diagnostic = [](const std::string& remark) { spdlog::debug("http: {}", remark); };
    return server;
}

/// Stops the server before what its handlers use goes away, however that comes about.
class StopAtEnd
{
public:
    explicit StopAtEnd(host::HttpServer& server) noexcept : server_(server) {}
    StopAtEnd(const StopAtEnd&) = delete;
    StopAtEnd& operator=(const StopAtEnd&) = delete;
    ~StopAtEnd() { server_.stop(); }

private:
    host::HttpServer& server_;
};

/// Serves at the configured port; where the options say so at the first one from there on that
/// nobody uses, which it writes into the settings.
std::unique_ptr<host::HttpServer> open_server(const ServeOptions& options,
                                              host::ServerSettings& settings,
                                              const host::HttpHandler& handler)
{
    for (;; ++settings.port) {
        try {
            return std::make_unique<host::HttpServer>(server_options(options, settings), handler);
        } catch (const std::system_error& error) {
            const bool in_use = error.code() == std::errc::address_in_use;
            if (!options.first_free_port || !in_use || settings.port == 65535)
                throw;
        }
    }
}

void define_ids(host::Router& router, const host::ResourceIndex& index)
{
    constexpr std::pair<const char*, host::ResourceKind> kinds[] = {
        {"source", host::ResourceKind::source},     {"flow", host::ResourceKind::flow},
        {"device", host::ResourceKind::device},     {"sender", host::ResourceKind::sender},
        {"receiver", host::ResourceKind::receiver},
    };
    for (const auto& [name, kind] : kinds)
        router.define_id(name, [&index, kind = kind](auto id) { return index.find(kind, id); });
}

void run(const ServeOptions& options, host::Configuration configuration)
{
    const EndSignals end_signals;

    // The port is known only when the server listens, and the records that the routes show carry
    // it: so there is a moment with a server and no routes.
    std::atomic<const host::Router*> router_in_use = nullptr;
    const auto server = open_server(
        options, configuration.server,
        [&router_in_use](const host::HttpRequest& request, const host::HttpReply& reply) {
            if (const host::Router* const router = router_in_use)
                router->handle(request, reply);
            else
                reply(host::error_response(503, "The instrument is starting"));
        });

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

    host::ManifestFetcher manifests;
    const host::Services services{instrument, manifests, state_file ? &*state_file : nullptr};
    host::Router router;
    define_ids(router, instrument.index());
    host::add_root_routes(router);
    host::add_node_routes(router, services);
    host::add_connection_routes(router, services);
    host::add_status_routes(router, services);
    const StopAtEnd stop_at_end(*server);
    router_in_use = &router;

    const std::string url = host::base_url(configuration.server);
    spdlog::info("serving {} ({} connections at most)", url, server->connection_limit());
    std::cout << url << std::endl; // flushed: whoever started us waits for it

    const int signal = end_signals.wait();
    spdlog::info("ending on signal {}", signal);
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
                     "keeps connections, versions and counters across restarts")
        ->type_name("FILE");
    command->add_option("--port", options->port, "instead of the port of the configuration")
        ->check(CLI::Range(1, 65535))
        ->type_name("PORT");
    command->add_flag("--first-free-port", options->first_free_port,
                      "from the port on, take the first one that nobody uses");
    command
        ->add_option("--connections-per-address", options->connections_per_address,
                     "of one client at the same time; 0: no limit")
        ->capture_default_str()
        ->type_name("N");
    command->add_option("--log-level", options->log_level, "what goes to standard error")
        ->check(CLI::IsMember({"debug", "info", "warning", "error", "off"}))
        ->capture_default_str()
        ->type_name("LEVEL");
    command->callback([options, &status] { status = serve(*options); });
}

} // namespace nmos_instrument::program

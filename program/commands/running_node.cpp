// SPDX-License-Identifier: Apache-2.0

#include "commands/running_node.h"

#include <string>
#include <utility>
#include <vector>

#include <spdlog/fmt/fmt.h>
#include <spdlog/spdlog.h>

#include "http/manifest_hosts.h"
#include "panel/panel.h"
#include "routes/routes.h"
#include "routes/watched_paths.h"
#include "text/ipv4_address.h"
#include "text/ipv4_network.h"
#include "text/quoted_text.h"

namespace nmos_instrument::program {
namespace {

host::HttpServerOptions server_options(const ServeOptions& options, host::ClientLog& log,
                                       host::RequestCounts& counts)
{
    host::HttpServerOptions server;
    server.connections_per_address = options.connections_per_address;
    server.on_request = [&log, &counts](const host::HttpAccess& access) {
        counts.answered(access);
        if (spdlog::should_log(spdlog::level::debug))
            log.debug(access.peer, fmt::format("{} {} {} {} us", host::in_quotes(access.method),
                                               host::in_quotes(access.path), access.status,
                                               access.duration.count()));
    };
    server.on_failure = [&log](const std::string& failure) { log.http_failure(failure); };
    server.on_diagnostic = [&log](const std::string& remark) { log.http_remark(remark); };
    return server;
}

/// The networks of the instrument's addresses, and those that the options add.
host::ManifestHosts manifest_hosts(const ServeOptions& options,
                                   const host::Configuration& configuration,
                                   const std::string& own_address)
{
    const auto network_of = [](const std::string& address) {
        return host::network_of_interface(host::ipv4_from_dotted_quad(address).value_or(0));
    };
    std::vector<host::Ipv4Network> own;
    for (const host::MediaInterface& interface : configuration.interfaces)
        own.push_back(network_of(interface.address));
    host::ManifestHosts hosts(own, network_of(own_address), options.manifest_hosts);
    spdlog::info("manifests of other senders are fetched from {}", hosts.text());
    return hosts;
}

host::BrowserPage page(const ServeOptions& options)
{
    return options.no_panel ? host::BrowserPage() : panel();
}

} // namespace

RunningNode::RunningNode(const ServeOptions& options, host::ListeningSocket socket,
                         host::Instrument& instrument, host::StateFile* state_file)
    : instrument_(instrument),
      state_file_(state_file),
      options_(options),
      request_counts_(host::all_routes(page(options).files).paths()),
      advertisement_(instrument, instrument.configuration().advertisement),
      activations_(instrument),
      manifests_(http_client_,
                 manifest_hosts(options, instrument.configuration(), instrument.address().host)),
      events_(host::watched_paths(instrument),
              [this](const std::string& path) { return read(path); })
{
    const host::RegistrationSettings& registration = instrument.configuration().registration;
    if (registration.enabled) {
        registries_.emplace(registration);
        registration_.emplace(
            http_client_, *registries_, instrument_,
            host::RegistrationClient::Options{
                .ca_file = registration.ca_file.value_or(""),
                .has_registry = [this](bool yes) { advertisement_.has_registry(yes); }});
    } else {
        advertisement_.has_registry(false);
    }
    listen_to_instrument();
    router_.emplace(services(), page(options));
    server_.emplace(std::move(socket), server_options(options, client_log_, request_counts_),
                    [this](host::HttpRequest& request, const host::HttpReply& reply) {
                        router_->handle(request, reply);
                    });
    if (registration_)
        registration_->start();
}

RunningNode::~RunningNode()
{
    // While the node is still served, so that whoever hears of it until then finds it.
    if (registration_)
        registration_->leave();
    // While there is somebody to answer those who wait for it.
    instrument_.end_hardware();
}

void RunningNode::move_to(const std::string& address)
{
    manifests_.allow(manifest_hosts(options_, instrument_.configuration(), address));
    instrument_.move_to({address, instrument_.address().port});
}

void RunningNode::listen_to_instrument()
{
    instrument_.listen({
        .changed =
            [this] {
                if (state_file_)
                    state_file_->changed();
                if (registration_)
                    registration_->changed();
                advertisement_.changed();
            },
        .scheduled = [this] { activations_.look_again(); },
    });
}

host::Services RunningNode::services()
{
    host::Services services{instrument_,      manifests_,  client_log_,     request_counts_,
                            recent_refusals_, state_file_, options_.changes};
    if (registration_)
        services.registration = [this] { return registration_->status(); };
    services.advertisement = [this] { return advertisement_.status(); };
    services.events = &events_;
    return services;
}

/// Every path that is watched is answered at once.
std::optional<std::string> RunningNode::read(const std::string& path) const
{
    host::HttpRequest request;
    request.method = "GET";
    request.path = path;
    std::optional<std::string> text;
    router_->handle(request, [&text](host::HttpResponse response) {
        if (response.status == 200)
            text = std::move(response.body);
    });
    return text;
}

} // namespace nmos_instrument::program

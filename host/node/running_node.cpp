// SPDX-License-Identifier: Apache-2.0

#include "node/running_node.h"

#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "http/manifest_hosts.h"
#include "routes/routes.h"
#include "routes/watched_paths.h"
#include "text/ipv4_address.h"
#include "text/ipv4_network.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

HttpServerOptions server_options(const ServedAs& served, ClientLog& log, RequestCounts& counts,
                                 const Log& plain_log)
{
    HttpServerOptions server;
    server.connections_per_address = served.connections_per_address;
    server.on_request = [&log, &counts, plain_log](const HttpAccess& access) {
        counts.answered(access);
        if (plain_log.wants(LogLevel::debug))
            log.debug(access.peer,
                      fmt::format("{} {} {} {} us", in_quotes(access.method),
                                  in_quotes(access.path), access.status, access.duration.count()));
    };
    server.on_failure = [&log](const std::string& failure) { log.http_failure(failure); };
    server.on_diagnostic = [&log](const std::string& remark) { log.http_remark(remark); };
    return server;
}

/// The networks of the instrument's addresses, and those that the options add.
ManifestHosts manifest_hosts(const ServedAs& served, const Configuration& configuration,
                             const std::string& own_address, const Log& log)
{
    const auto network_of = [](const std::string& address) {
        return network_of_interface(ipv4_from_dotted_quad(address).value_or(0));
    };
    std::vector<Ipv4Network> own;
    for (const MediaInterface& interface : configuration.interfaces)
        own.push_back(network_of(interface.address));
    ManifestHosts hosts(own, network_of(own_address), served.manifest_hosts);
    log.info("manifests of other senders are fetched from {}", hosts.text());
    return hosts;
}

} // namespace

RunningNode::RunningNode(const ServedAs& served, std::optional<ListeningSocket> socket,
                         Instrument& instrument, StateFile* state_file, const Log& log)
    : instrument_(instrument),
      state_file_(state_file),
      served_(served),
      log_(log),
      client_log_(log_),
      request_counts_(all_routes(served.page.files).paths()),
      http_client_(log_),
      advertisement_(instrument, instrument.configuration().advertisement, log_),
      activations_(instrument, log_),
      manifests_(http_client_, manifest_hosts(served_, instrument.configuration(),
                                              instrument.address().host, log_)),
      events_(watched_paths(instrument), [this](const std::string& path) { return read(path); })
{
    const RegistrationSettings registration = instrument.configuration().registration;
    if (registration.enabled) {
        registries_.emplace(registration, log_);
        registration_.emplace(
            http_client_, *registries_, instrument_,
            RegistrationClient::Options{
                .ca_file = registration.ca_file.value_or(""),
                .has_registry = [this](bool yes) { advertisement_.has_registry(yes); }},
            log_);
    } else {
        advertisement_.has_registry(false);
    }
    router_.emplace(services(), served_.page);
    if (socket)
        server_.emplace(*std::move(socket),
                        server_options(served_, client_log_, request_counts_, log_),
                        [this](HttpRequest& request, const HttpReply& reply) {
                            router_->handle(request, reply);
                        });
    if (registration_)
        registration_->start();
}

void RunningNode::leave()
{
    if (registration_)
        registration_->leave();
}

void RunningNode::move_to(const std::string& address)
{
    manifests_.allow(manifest_hosts(served_, instrument_.configuration(), address, log_));
    instrument_.move_to({address, instrument_.address().port});
}

void RunningNode::changed()
{
    if (registration_)
        registration_->changed();
    advertisement_.changed();
}

Services RunningNode::services()
{
    Services services{instrument_,      manifests_,  client_log_,    request_counts_,
                      recent_refusals_, state_file_, served_.changes};
    if (registration_)
        services.registration = [this] { return registration_->status(); };
    services.advertisement = [this] { return advertisement_.status(); };
    services.events = &events_;
    return services;
}

/// Every path that is watched is answered at once.
std::optional<std::string> RunningNode::read(const std::string& path) const
{
    HttpRequest request;
    request.method = "GET";
    request.path = path;
    std::optional<std::string> text;
    router_->handle(request, [&text](HttpResponse response) {
        if (response.status == 200)
            text = std::move(response.body);
    });
    return text;
}

} // namespace nmos_instrument::host

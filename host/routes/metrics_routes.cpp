// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "routes/routes.h"
#include "text/metrics_output.h"

namespace nmos_instrument::host {
namespace {

void add_requests(MetricsOutput& metrics, const RequestCounts& counts)
{
    metrics.counter("nmos_instrument_http_requests_total", "HTTP requests that have ended.");
    counts.visit_requests([&](std::string_view route, std::string_view method,
                              std::string_view status, std::uint64_t count) {
        metrics.value(count, {{"route", route}, {"method", method}, {"status", status}});
    });
    metrics.counter("nmos_instrument_refusals_total", "Changes of connections that were refused.");
    counts.refusals().visit([&](std::string_view status, std::uint64_t count) {
        metrics.value(count, {{"status", status}});
    });
}

void add_activations(MetricsOutput& metrics, const ActivationCounts& counts)
{
    metrics.counter("nmos_instrument_activations_total", "Activations of connections.");
    metrics.value(counts.done, {{"result", "done"}});
    metrics.value(counts.failed, {{"result", "failed"}});
}

void add_registration(MetricsOutput& metrics, const RegistrationStatus& status)
{
    metrics.gauge("nmos_instrument_registration_registered",
                  "1 while all resources are registered with a registry.");
    metrics.value(status.registered ? 1 : 0);
    metrics.counter("nmos_instrument_registration_posts_total",
                    "Resources sent to a registry, whatever it answered.");
    metrics.value(status.posts);
    metrics.counter("nmos_instrument_registration_deletions_total",
                    "Deletions sent to a registry, whatever it answered.");
    metrics.value(status.deletions);
    metrics.counter("nmos_instrument_registration_heartbeats_total",
                    "Heartbeats sent to a registry, whatever it answered.");
    metrics.value(status.heartbeats);
    metrics.counter("nmos_instrument_registration_refusals_total",
                    "Resources that a registry did not take.");
    metrics.value(status.refusals);
    metrics.counter("nmos_instrument_registration_failures_total",
                    "Requests that a registry did not answer as a registry does.");
    metrics.value(status.failures);
    metrics.counter("nmos_instrument_registration_fail_overs_total",
                    "Changes from one registry to another.");
    metrics.value(status.fail_overs);
    metrics.summary("nmos_instrument_heartbeat_lateness_seconds",
                    "How long after they were due heartbeats were sent.", status.heartbeat_lateness,
                    status.heartbeats);
    if (!status.last_heartbeat)
        return;
    metrics.gauge("nmos_instrument_heartbeat_round_trip_seconds",
                  "How long the last heartbeat took that a registry accepted.");
    metrics.value(status.last_heartbeat->round_trip);
}

void add_advertisement(MetricsOutput& metrics, const AdvertisementStatus& status)
{
    metrics.gauge("nmos_instrument_advertisement_present",
                  "1 while the service file of Avahi is there.");
    metrics.value(status.present ? 1 : 0);
}

std::string metrics_text(const Services& services)
{
    const auto uptime = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::steady_clock::now() - services.started);
    MetricsOutput metrics;
    metrics.gauge("nmos_instrument_uptime_seconds", "Since the start of the program.");
    metrics.value(static_cast<std::uint64_t>(uptime.count()));
    add_requests(metrics, services.counts);
    add_activations(metrics, services.instrument.status().counts);
    if (services.registration)
        add_registration(metrics, services.registration());
    if (services.advertisement)
        add_advertisement(metrics, services.advertisement());
    return metrics.take();
}

HttpResponse metrics(const Services& services, std::size_t)
{
    HttpResponse response;
    response.content_type = "text/plain; version=0.0.4; charset=utf-8";
    response.body = metrics_text(services);
    return response;
}

constexpr Route table[] = {
    {"GET", "/metrics", metrics},
};

} // namespace

std::span<const Route> metrics_routes()
{
    return table;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "routes/routes.h"
#include "text/json_output.h"
#include "text/quoted_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

void add_text_or_null(JsonOutput& json, const std::string& text)
{
    if (text.empty())
        json.null();
    else
        json.text(printable(text));
}

void add(JsonOutput& json, const std::vector<ActivationReport>& reports)
{
    json.begin_array();
    for (const ActivationReport& report : reports) {
        json.element().begin_object();
        json.key("resource").text(report.resource);
        json.key("mode").text(report.mode);
        json.key("due").text(to_text(report.due));
        json.key("done").text(to_text(report.done));
        json.key("late_us").number(report.late.count() / 1000);
        if (!report.why.empty())
            json.key("why").text(printable(report.why));
        json.end_object();
    }
    json.end_array();
}

void add(JsonOutput& json, const std::vector<InstrumentStatus::Pending>& activations)
{
    json.begin_array();
    for (const InstrumentStatus::Pending& activation : activations) {
        json.element().begin_object();
        json.key("resource").text(activation.resource);
        json.key("mode").text(activation.mode);
        json.key("due").text(to_text(activation.due));
        json.end_object();
    }
    json.end_array();
}

void add(JsonOutput& json, const std::vector<RefusedChange>& refusals)
{
    json.begin_array();
    for (const RefusedChange& change : refusals) {
        json.element().begin_object();
        json.key("time").text(to_text(change.time));
        json.key("client").text(change.client);
        json.key("what").text(change.what);
        json.key("status").number(change.refusal.status);
        json.key("error").text(change.refusal.error);
        add_text_or_null(json.key("debug"), change.refusal.debug);
        json.end_object();
    }
    json.end_array();
}

void add(JsonOutput& json, const std::optional<RegistrationStatus::Heartbeat>& heartbeat)
{
    if (!heartbeat) {
        json.null();
        return;
    }
    json.begin_object();
    json.key("sent").text(to_text(tai_time_of(heartbeat->sent)));
    json.key("round_trip_us").number(heartbeat->round_trip.count());
    json.key("late_us").number(heartbeat->late.count());
    json.end_object();
}

/// Rounded up; what is overdue is due now.
void add_seconds_until(JsonOutput& json, const std::optional<RegistrationStatus::TimePoint>& time)
{
    if (!time) {
        json.null();
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    json.number(std::chrono::ceil<std::chrono::seconds>(std::max(*time, now) - now).count());
}

void add(JsonOutput& json, const RegistrationStatus& status)
{
    json.begin_object();
    json.key("state").text(printable(status.state));
    json.key("registered").flag(status.registered);
    add_text_or_null(json.key("registry"), status.registry);
    add_text_or_null(json.key("origin"), status.origin);
    json.key("since").text(to_text(tai_time_of(status.since)));
    add(json.key("last_heartbeat"), status.last_heartbeat);
    json.key("posts").number(status.posts);
    json.key("deletions").number(status.deletions);
    json.key("heartbeats").number(status.heartbeats);
    json.key("refusals").number(status.refusals);
    json.key("failures").number(status.failures);
    json.key("fail_overs").number(status.fail_overs);
    add_seconds_until(json.key("next_try_seconds"), status.next_try);
    json.end_object();
}

void add(JsonOutput& json, const AdvertisementStatus& status)
{
    json.begin_object();
    json.key("state").text(printable(status.state));
    add_text_or_null(json.key("file"), status.file);
    if (!status.trouble.empty())
        json.key("trouble").text(printable(status.trouble));
    json.end_object();
}

std::string status_text(const Services& services)
{
    const InstrumentStatus status = services.instrument.status();
    const auto uptime = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::steady_clock::now() - services.started);
    JsonOutput json(JsonForm::indented);
    json.begin_object();
    json.key("uptime_seconds").number(uptime.count());
    json.key("tai").text(to_text(tai_now()));
    add(json.key("pending_activations"), status.pending);
    add(json.key("last_activations"), status.activations);
    add(json.key("last_failures"), status.failures);
    add(json.key("last_refusals"), services.refusals.all());
    if (services.state_file != nullptr) {
        const std::string trouble = services.state_file->trouble();
        json.key("state_file").text(trouble.empty() ? "saved" : printable(trouble));
    }
    if (services.registration)
        add(json.key("registration"), services.registration());
    if (services.advertisement)
        add(json.key("advertisement"), services.advertisement());
    json.end_object();
    return json.take() + '\n';
}

HttpResponse healthz(const Services& services, std::size_t)
{
    // This takes the lock, so a deadlock would show here.
    services.instrument.next_due();
    return json_response("{\"status\":\"ok\"}\n");
}

constexpr Route table[] = {
    {"GET", "/healthz", healthz},
    {"GET", "/status",
     [](const Services& services, std::size_t) { return json_response(status_text(services)); }},
};

} // namespace

std::span<const Route> status_routes()
{
    return table;
}

} // namespace nmos_instrument::host

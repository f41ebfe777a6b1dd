// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <vector>

#include "routes/routes.h"
#include "text/json_output.h"
#include "text/quoted_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

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
    if (services.state_file != nullptr) {
        const std::string trouble = services.state_file->trouble();
        json.key("state_file").text(trouble.empty() ? "saved" : printable(trouble));
    }
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

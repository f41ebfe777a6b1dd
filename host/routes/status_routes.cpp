// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <vector>

#include <nlohmann/json.hpp>

#include "routes/routes.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::ordered_json;

ordered_json json_of(const std::vector<ActivationReport>& reports)
{
    ordered_json list = ordered_json::array();
    for (const ActivationReport& report : reports) {
        ordered_json entry = {
            {"resource", report.resource},
            {"mode", report.mode},
            {"due", to_text(report.due)},
            {"done", to_text(report.done)},
            {"late_us", report.late.count() / 1000},
        };
        if (!report.why.empty())
            entry["why"] = report.why;
        list.push_back(entry);
    }
    return list;
}

std::string status_text(const Services& services)
{
    using std::chrono::duration_cast;
    const InstrumentStatus status = services.instrument.status();
    ordered_json pending = ordered_json::array();
    for (const InstrumentStatus::Pending& activation : status.pending)
        pending.push_back({{"resource", activation.resource},
                           {"mode", activation.mode},
                           {"due", to_text(activation.due)}});
    const auto uptime = std::chrono::steady_clock::now() - services.started;
    ordered_json document = {
        {"uptime_seconds", duration_cast<std::chrono::seconds>(uptime).count()},
        {"tai", to_text(tai_now())},
        {"pending_activations", pending},
        {"last_activations", json_of(status.activations)},
        {"last_failures", json_of(status.failures)},
    };
    if (services.state_file != nullptr) {
        const std::string trouble = services.state_file->trouble();
        document["state_file"] = trouble.empty() ? "saved" : trouble;
    }
    return document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + '\n';
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

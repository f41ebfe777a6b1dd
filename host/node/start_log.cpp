// SPDX-License-Identifier: Apache-2.0

#include "node/start_log.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include <fmt/format.h>
#include <nmos_instrument/version.h>

#include "http/url.h"
#include "records/addresses.h"
#include "records/record_text.h"
#include "text/ipv4_address.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

std::string_view name_or_none(std::string_view name)
{
    return name.empty() ? "none" : name;
}

bool is_elsewhere(const std::string& url)
{
    const std::optional<Url> parts = parse_url(url);
    return parts && !is_loopback(parts->host);
}

/// Whom others hear of the instrument from; empty: nobody.
std::string announced_by(const Configuration& configuration)
{
    const RegistrationSettings& registration = configuration.registration;
    if (configuration.advertisement.service_file &&
        configuration.advertisement.when != Advertise::never)
        return *configuration.advertisement.service_file;
    const auto& registries = registration.registries;
    const auto registry = std::find_if(registries.begin(), registries.end(), is_elsewhere);
    return registration.enabled && registry != registries.end() ? *registry : "";
}

} // namespace

void log_start(const Log& log, Instrument& instrument, const StartedFrom& from)
{
    const auto interfaces = instrument.configuration().interfaces;
    const std::string node_id = instrument.read(
        [](const Records& records) { return std::string(text_of(records.node.id)); });
    const std::string listening = from.place.empty()
                                      ? "by a server of the host"
                                      : fmt::format("listening at {}, at most {} connections",
                                                    from.place, from.connection_limit);
    log.info("nmos-instrument {}: node {}, configuration {}, state {}, interfaces {} and {}, "
             "serving {} ({})",
             nmos_instrument::version(), node_id, name_or_none(from.configuration),
             name_or_none(from.state_file), interfaces[0].address, interfaces[1].address,
             base_url(instrument.address()), listening);
    const std::string warning = clock_warning(utc_now());
    if (!warning.empty())
        log.warning("{}", warning);
}

void log_reach(const Log& log, const std::optional<ListenAt>& listen, Instrument& instrument)
{
    if (listen && is_loopback(listen->address))
        log.info("only this machine can reach {}: \"listen\" in the configuration, or serve "
                 "--listen eth0, is for a network",
                 listen->address);
    const std::string announced = announced_by(instrument.configuration());
    const NodeAddress address = instrument.address();
    if (is_loopback(address.host) && !announced.empty())
        log.warning("{}", loopback_warning(address, announced));
}

} // namespace nmos_instrument::host

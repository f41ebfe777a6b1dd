// SPDX-License-Identifier: Apache-2.0
//
// "/check-sdp/{receiver}": what the receiver would say to an SDP file, without offering it.

#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "routes/routes.h"
#include "sdp/read_sdp.h"
#include "sdp/reading_report.h"

namespace nmos_instrument::host {
namespace {

/// The body is the file, whatever its media type is said to be.
HttpResponse check_sdp(const Services& services, std::size_t receiver, const HttpRequest& request)
{
    const Instrument& instrument = services.instrument;
    const SdpReading reading = read_sdp(request.body, instrument.sdp_receiver(receiver));
    const std::vector<std::string> no_hints;
    return json_response(reading_report({reading, essence_of_receiver(receiver),
                                         instrument.configuration().interfaces, no_hints}) +
                         '\n');
}

constexpr Route table[] = {
    {"POST", "/check-sdp/{receiver}", check_sdp},
};

} // namespace

std::span<const Route> check_sdp_routes()
{
    return table;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// "/check-sdp/{receiver}": what the receiver would say to an SDP file, without offering it.

#include <cstddef>
#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "records/stream_selection.h"
#include "routes/routes.h"
#include "sdp/read_sdp.h"
#include "sdp/reading_report.h"

namespace nmos_instrument::host {
namespace {

/// Which other kinds of receivers that the node shows would take the file.
std::vector<std::string> other_takers(const Instrument& instrument, const std::string& sdp,
                                      Essence asked)
{
    std::vector<std::string> hints;
    for (const Essence other : {Essence::video, Essence::audio, Essence::ancillary}) {
        const std::size_t receiver = first_receiver_of(other);
        const bool is_shown =
            why_receiver_is_hidden(instrument.configuration().streams, receiver) == nullptr;
        if (other != asked && is_shown && read_sdp(sdp, instrument.sdp_receiver(receiver)).taken())
            hints.push_back("a receiver of another kind would take it: " +
                            std::string(name_of(other)));
    }
    return hints;
}

/// The body is the file, whatever its media type is said to be.
HttpResponse check_sdp(const Services& services, std::size_t receiver, const HttpRequest& request)
{
    const Instrument& instrument = services.instrument;
    const Essence kind = essence_of_receiver(receiver);
    const SdpReading reading = read_sdp(request.body, instrument.sdp_receiver(receiver));
    std::vector<std::string> hints;
    if (!reading.taken())
        hints = other_takers(instrument, request.body, kind);
    return json_response(
        reading_report({reading, kind, instrument.configuration().interfaces, hints}) + '\n');
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

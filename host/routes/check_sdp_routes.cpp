// SPDX-License-Identifier: Apache-2.0
//
// "/check-sdp/{receiver}": what the receiver would say to an SDP file, without offering it.

#include <cstddef>
#include <string>
#include <vector>

#include "configuration/resource_counts.h"
#include "records/stream_selection.h"
#include "routes/routes.h"
#include "sdp/other_takers.h"
#include "sdp/read_sdp.h"
#include "sdp/reading_report.h"

namespace nmos_instrument::host {
namespace {

OneOfEachKind shown_receivers(const Instrument& instrument)
{
    OneOfEachKind receivers{};
    const StreamSettings streams = instrument.configuration().streams;
    for (const Essence kind : all_essences) {
        const std::size_t first = first_receiver_of(kind);
        if (why_receiver_is_hidden(streams, first) == nullptr)
            receivers[index_of(kind)] = instrument.sdp_receiver(first);
    }
    return receivers;
}

/// The body is the file, whatever its media type is said to be.
HttpResponse check_sdp(const Services& services, std::size_t receiver, const HttpRequest& request)
{
    const Instrument& instrument = services.instrument;
    const Essence kind = essence_of_receiver(receiver);
    const SdpReading reading = read_sdp(request.body, instrument.sdp_receiver(receiver));
    std::vector<std::string> hints;
    if (!reading.taken()) {
        for (const Essence other : other_takers(request.body, kind, shown_receivers(instrument)))
            hints.push_back("a receiver of another kind would take it: " +
                            std::string(name_of(other)));
    }
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

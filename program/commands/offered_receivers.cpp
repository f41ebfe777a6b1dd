// SPDX-License-Identifier: Apache-2.0

#include "commands/offered_receivers.h"

#include <memory>
#include <utility>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_facts.h"
#include "records/fill_records.h"
#include "sdp/other_takers.h"
#include "sdp/rtp_format.h"
#include "sdp/sdp_description.h"
#include "text/ascii.h"
#include "time/tai_time.h"

namespace nmos_instrument::program {
namespace {

using host::Essence;

Essence kind_of(const host::SdpMedium& medium)
{
    if (host::same_name(medium.kind, "audio"))
        return Essence::audio;
    const bool is_ancillary = host::format_for(medium, {"video/smpte291"}).fit == host::Fit::yes;
    return is_ancillary ? Essence::ancillary : Essence::video;
}

/// That of the first medium that is sent.
Essence first_kind(const std::string& sdp)
{
    const std::string text = ConnectionApi::convertCRLF(sdp, "\n");
    host::SdpFindings ignored;
    const host::SdpDescription description = host::parse_sdp_description(text, ignored);
    for (const host::SdpMedium& medium : description.media) {
        if (medium.port != 0)
            return kind_of(medium);
    }
    return Essence::video;
}

} // namespace

OfferedReceivers::OfferedReceivers(const host::Configuration& configuration)
{
    // What a receiver takes does not depend on the clock.
    const std::unique_ptr<host::Records> records =
        host::make_records(configuration, host::NodeAddress(), {});
    for (const Essence kind : host::all_essences) {
        const std::size_t index = first_receiver_of(kind);
        if (records->selection.shows_receiver(index))
            receivers_[index_of(kind)] =
                host::facts_about(configuration, records->node, {host::Side::receiver, index}).sdp;
    }
}

OfferedFile OfferedReceivers::offer(const std::string& sdp, std::optional<Essence> kind) const
{
    std::vector<std::string> hints;
    const Essence receiver = kind ? *kind : receiver_for(sdp, hints);
    OfferedFile offered = {receiver, host::read_sdp(sdp, receivers_[index_of(receiver)].value()),
                           std::move(hints)};
    if (offered.reading.taken())
        return offered;
    host::OneOfEachKind shown{};
    for (const Essence other : host::all_essences)
        shown[index_of(other)] = are_shown(other) ? receivers_[index_of(other)] : std::nullopt;
    for (const Essence other : host::other_takers(sdp, receiver, shown))
        offered.hints.push_back("a receiver of another kind would take it: --receiver " +
                                std::string(name_of(other)));
    return offered;
}

Essence OfferedReceivers::receiver_for(const std::string& sdp,
                                       std::vector<std::string>& hints) const
{
    const Essence kind = first_kind(sdp);
    if (are_shown(kind))
        return kind;
    hints.push_back("the configuration shows no receivers of kind " + std::string(name_of(kind)) +
                    ", so one of kind video was asked");
    return Essence::video;
}

} // namespace nmos_instrument::program

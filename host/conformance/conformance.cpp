// SPDX-License-Identifier: Apache-2.0

#include "conformance/conformance.h"

#include <utility>

#include "conformance/flow_body.h"
#include "conformance/receiver_body.h"
#include "conformance/sender_connection.h"
#include "conformance/source_body.h"

namespace nmos_instrument::host {

Conformance::Conformance(Presentation presentation, const Configuration& configuration,
                         const NMOS_IS04_ST& node)
    : presentation_(presentation)
{
    if (presentation == Presentation::as_is)
        return;
    sources_ = source_corrections(configuration, node);
    flows_ = flow_corrections(configuration, node);
    receivers_ = receiver_corrections(configuration);
    sdp_facts_ = sdp_facts(configuration);
}

std::string Conformance::active_sender(std::string text) const
{
    return presentation_ == Presentation::as_is ? text : corrected_active_sender(std::move(text));
}

std::string Conformance::sdp(std::string text, Essence essence,
                             const CONNECTION_HALF_IS05_ST& active) const
{
    return presentation_ == Presentation::as_is ? text
                                                : corrected_sdp(text, sdp_facts_, essence, active);
}

} // namespace nmos_instrument::host

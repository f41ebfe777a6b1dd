// SPDX-License-Identifier: Apache-2.0
//
// The one place where the library's texts are put right: the library writes what its callers rely on
// byte for byte, and in some places IS-04, IS-05 or a standard for SDP files asks for something else.

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_CONFORMANCE_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_CONFORMANCE_H

#include <string>
#include <utility>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "configuration/resource_counts.h"
#include "conformance/replacement.h"
#include "conformance/sdp_text.h"

namespace nmos_instrument::host {

/// How the network sees the library's texts.
enum class Presentation
{
    conforming,
    as_is
};

/// The corrections for one node. None of them depends on anything that changes, but for the active
/// half of which an SDP file is made.
class Conformance
{
public:
    Conformance(Presentation presentation, const Configuration& configuration,
                const NMOS_IS04_ST& node);

    // One body, a list of them, or registrations.
    std::string source(std::string text) const { return corrected(std::move(text), sources_); }
    std::string flow(std::string text) const { return corrected(std::move(text), flows_); }
    std::string receiver(std::string text) const { return corrected(std::move(text), receivers_); }

    /// The active half of a sender.
    std::string active_sender(std::string text) const;

    /// The SDP file that the library made of `active`, the active half of a sender.
    std::string sdp(std::string text, Essence essence, const CONNECTION_HALF_IS05_ST& active) const;

private:
    const Presentation presentation_;
    // Empty if the texts are shown as they are.
    std::vector<Replacement> sources_;
    std::vector<Replacement> flows_;
    std::vector<Replacement> receivers_;
    SdpFacts sdp_facts_;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// The receivers of `serve` in the eyes of somebody who has an SDP file for one of them.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_OFFERED_RECEIVERS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_OFFERED_RECEIVERS_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "configuration/configuration.h"
#include "configuration/resource_counts.h"
#include "sdp/read_sdp.h"

namespace nmos_instrument::program {

/// What the receivers of one kind make of a file.
struct OfferedFile
{
    host::Essence receiver;
    host::SdpReading reading;
    std::vector<std::string> hints; ///< worth knowing, and no finding
};

/// One receiver of each kind stands for all of its kind: they differ in nothing that matters here.
class OfferedReceivers
{
public:
    explicit OfferedReceivers(const host::Configuration& configuration);

    /// Whether the configuration shows receivers of this kind: the others cannot be offered a file.
    bool are_shown(host::Essence kind) const { return receivers_[index_of(kind)].has_value(); }

    /// Without `kind`, that of the file's first medium.
    OfferedFile offer(const std::string& sdp, std::optional<host::Essence> kind) const;

private:
    host::Essence receiver_for(const std::string& sdp, std::vector<std::string>& hints) const;

    std::array<std::optional<host::SdpReceiver>, host::all_essences.size()>
        receivers_; ///< by index_of(Essence)
};

} // namespace nmos_instrument::program

#endif

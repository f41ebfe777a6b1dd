// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_SAVED_STATE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_SAVED_STATE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "time/tai_time.h"

namespace nmos_instrument::host {

struct SavedResource
{
    TaiTime version;
    /// Of the body without its version. It tells whether the resource is still the same.
    std::uint64_t body_hash = 0;

    bool operator==(const SavedResource&) const = default;
};

struct SavedConnection
{
    CONNECTION_HALF_IS05_ST staged{};
    CONNECTION_HALF_IS05_ST active{};
    // Senders only.
    std::uint64_t sdp_version = 0;
    std::uint64_t sdp_hash = 0; ///< of the file without its version
};

struct SavedCounters
{
    int self = 0;
    int sources = 0;
    int flows = 0;
    int devices = 0;
    int senders = 0;
    int receivers = 0;

    bool operator==(const SavedCounters&) const = default;
};

/// What survives a restart, by resource id. The configuration determines everything else.
struct SavedState
{
    SavedCounters counters;
    std::map<std::string, SavedResource> resources; ///< all kinds
    std::map<std::string, SavedConnection> senders;
    std::map<std::string, SavedConnection> receivers;

    std::size_t connections() const { return senders.size() + receivers.size(); }
};

/// A text that is not a saved state, or a damaged one.
class DamagedState : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

std::string write_saved_state(const SavedState& state);

/// Throws DamagedState.
SavedState parse_saved_state(const std::string& text);

/// FNV-1a, 64 bits. It must be the same in every build; std::hash is not.
std::uint64_t stable_hash(const std::string& text);

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What a controller wants changed about one sender or receiver: a PATCH of "staged" (IS-05 v1.0),
// an entry of a bulk request, or what follows from a receiver's target (IS-04 v1.2).
//
// A change goes through these steps. All are functions of their arguments; only what comes after
// the last one changes the instrument, and a refusal at any step changes nothing:
//
//   parse_patch      JSON -> ConnectionPatch             types, forms, ranges
//   validate_patch   ConnectionPatch -> ConnectionPatch  constraints, transport file
//   stage_patch      staged half -> staged half
//   activate_staged  staged half -> active half          every "auto" resolved

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_CONNECTION_PATCH_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_CONNECTION_PATCH_H

#include <array>
#include <compare>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "configuration/resource_counts.h"
#include "connection/activation_request.h"

namespace nmos_instrument::host {

enum class Side
{
    sender,
    receiver
};

/// One sender or receiver, by its position in the records.
struct ConnectionKey
{
    Side side = Side::sender;
    std::size_t index = 0;

    // What clang-tidy 14 makes of it is a comparison with 0.
    auto operator<=>(const ConnectionKey&) const = default; // NOLINT(modernize-use-nullptr)
};

/// In a staged half of a record this text stands for "the instrument chooses".
constexpr std::string_view auto_text = "auto";

/// "auto" for ports (IS-05 v1.0).
constexpr int auto_port = 5004;

/// What is not named stays as it is. Addresses are texts as the record holds them: dotted quad,
/// "auto", or "null" for JSON null.
struct LegPatch
{
    std::optional<std::string> source_ip;
    std::optional<std::string> destination_ip; ///< of a receiver: "multicast_ip"
    std::optional<std::string> interface_ip;   ///< receivers only
    std::optional<int> destination_port;
    /// Senders only. The record has no room for it: it is accepted and not kept.
    std::optional<int> source_port;
    std::optional<bool> rtp_enabled;

    bool operator==(const LegPatch&) const = default;
};

/// Members that are not named stay unset; "null" stands for JSON null, which no real content of
/// theirs can be.
struct TransportFilePatch
{
    std::optional<std::string> data;
    std::optional<std::string> type;

    bool operator==(const TransportFilePatch&) const = default;
};

struct ConnectionPatch
{
    std::optional<std::string> peer_id; ///< UUID or "null"
    std::optional<bool> master_enable;
    std::optional<ActivationRequest> activation;
    std::optional<TransportFilePatch> transport_file; ///< receivers only
    std::array<LegPatch, leg_count> legs;

    bool operator==(const ConnectionPatch&) const = default;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// A change of one sender or receiver that a controller asks for: a PATCH of "staged" (IS-05 v1.0),
// an entry of a bulk request, or the consequence of a receiver's target (IS-04 v1.2).
//
// A change goes through these steps. All are functions of their arguments only. The instrument
// itself changes after the last one, so a refusal at any step changes nothing:
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

    // clang-tidy 14 sees a comparison with the literal 0 here.
    auto operator<=>(const ConnectionKey&) const = default; // NOLINT(modernize-use-nullptr)
};

/// Members that are not set stay as they are. Addresses are texts as in the record: a dotted quad,
/// "auto", or "null" for JSON null.
struct LegPatch
{
    std::optional<std::string> source_ip;
    std::optional<std::string> destination_ip; ///< receivers: "multicast_ip"
    std::optional<std::string> interface_ip;   ///< receivers only
    std::optional<int> destination_port;
    /// Senders only. The record has no room for it: it is accepted but not kept.
    std::optional<int> source_port;
    std::optional<bool> rtp_enabled;

    bool operator==(const LegPatch&) const = default;
};

/// Absent members stay unset. The text "null" stands for JSON null; no real file or type has this
/// text.
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

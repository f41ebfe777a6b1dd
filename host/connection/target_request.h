// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_TARGET_REQUEST_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_TARGET_REQUEST_H

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "connection/connection_patch.h"
#include "connection/findings.h"

namespace nmos_instrument::host {

/// The sender that a receiver has to subscribe to.
struct TargetSender
{
    std::string id;
    std::string manifest_href;
};

/// A body for "receivers/{id}/target" (IS-04 v1.2, nodeapi-receiver-target.json). Nothing for `{}`,
/// which unsubscribes, and nothing if there is a finding.
std::optional<TargetSender> parse_target(const nlohmann::json& document, Findings& findings);

/// The change that connects a receiver at once to the sender whose SDP file is `sdp`.
ConnectionPatch patch_to_connect(const std::string& sender_id, const std::string& sdp);

ConnectionPatch patch_to_disconnect();

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// What an instrument tells a registry about itself.

#include "instrument/instrument.h"

#include <algorithm>

#include "records/record_text.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {
namespace {

template <std::size_t N>
TaiTime version_in(const char (&field)[N])
{
    return parse_tai_time(text_of(field)).value_or(TaiTime());
}

/// Calls `visit` with the counter and the version of each resource that make_resource_node stamps.
template <class Visit>
void visit_stamped(NMOS_IS04_ST& node, Visit&& visit)
{
    visit(&Nmos::update_txt_ver_slf, node.version);
    for (std::int32_t i = 0; i < node.devices_count; ++i)
        visit(&Nmos::update_txt_ver_dvc, node.devices[i].version);
    for (std::int32_t i = 0; i < node.receivers_count; ++i)
        visit(&Nmos::update_txt_ver_rcv, node.receivers[i].version);
}

} // namespace

/// RegistrationApi::make_resource_node gives the node, the devices and the receivers one version.
/// That is the latest of theirs, so that none goes back, and those that have it already stay as
/// they are. True if any version has changed.
bool Instrument::stamp_versions()
{
    NMOS_IS04_ST& node = records_->node;
    TaiTime latest;
    visit_stamped(
        node, [&](auto, const auto& version) { latest = std::max(latest, version_in(version)); });
    bool any = false;
    visit_stamped(node, [&](auto count_change, const auto& version) {
        if (version_in(version) == latest)
            return;
        (advertisement_.*count_change)();
        any = true;
    });
    node.version_seconds = latest.seconds;
    node.version_nanoseconds = latest.nanoseconds;
    RegistrationApi().update_version(&node);
    return any;
}

std::string Instrument::registration_of_node()
{
    std::string text;
    bool stamped = false;
    {
        const std::lock_guard lock(mutex_);
        stamped = stamp_versions();
        text = RegistrationApi().make_resource_node(&records_->node);
    }
    if (stamped && listeners_.changed)
        listeners_.changed();
    return text;
}

std::string Instrument::registration_of(const NodeResource& resource)
{
    const std::lock_guard lock(mutex_);
    RegistrationApi api;
    NMOS_IS04_ST& node = records_->node;
    const StreamSelection& selection = records_->selection;
    const int index = static_cast<int>(resource.index);
    switch (resource.type) {
    case NodeResourceType::node:
        break;
    case NodeResourceType::device:
        return api.make_resource_deviceid(&node, index, selection.receiver_filter,
                                          selection.audio_group_filter, selection.sender_filter);
    case NodeResourceType::source:
        return conformance_->source(api.make_resource_sourceid(&node, index));
    case NodeResourceType::flow:
        return conformance_->flow(api.make_resource_flowid(&node, index));
    case NodeResourceType::sender:
        return api.make_resource_senderid(&node, index);
    case NodeResourceType::receiver:
        return conformance_->receiver(api.make_resource_receiverid(&node, index));
    }
    // The envelope of make_resource_node, which would stamp versions.
    return R"({"data":)" + NodeApi().make_self(&node) + R"(,"type":"node"})";
}

} // namespace nmos_instrument::host

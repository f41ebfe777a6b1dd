// SPDX-License-Identifier: Apache-2.0

#include "instrument/node_resource.h"

#include <algorithm>
#include <initializer_list>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

using Type = NodeResourceType;

class ResourceList
{
public:
    void add(Type type, std::size_t index, std::string_view id,
             std::initializer_list<std::string_view> parents)
    {
        NodeResource resource{type, index, std::string(id), {}};
        for (const std::string_view parent : parents) {
            const auto found =
                std::find_if(resources_.begin(), resources_.end(),
                             [=](const NodeResource& one) { return one.id == parent; });
            if (found != resources_.end())
                resource.parents.push_back(static_cast<std::size_t>(found - resources_.begin()));
        }
        resources_.push_back(std::move(resource));
    }

    std::vector<NodeResource> take() { return std::move(resources_); }

private:
    std::vector<NodeResource> resources_;
};

std::size_t counted(std::int32_t count)
{
    return static_cast<std::size_t>(count);
}

} // namespace

std::string_view plural_of(NodeResourceType type)
{
    switch (type) {
    case Type::node:
        return "nodes";
    case Type::device:
        return "devices";
    case Type::source:
        return "sources";
    case Type::flow:
        return "flows";
    case Type::sender:
        return "senders";
    case Type::receiver:
        return "receivers";
    }
    return "";
}

std::vector<NodeResource> shown_resources(const Records& records)
{
    const NMOS_IS04_ST& node = records.node;
    ResourceList list;
    list.add(Type::node, 0, text_of(node.id), {});
    for (std::size_t i = 0; i < counted(node.devices_count); ++i) {
        const DEVICE_IS04_ST& device = node.devices[i];
        list.add(Type::device, i, text_of(device.id), {text_of(device.node_id)});
    }
    for (std::size_t i = 0; i < counted(node.sources_count); ++i) {
        const SOURCE_IS04_ST& source = node.sources[i];
        list.add(Type::source, i, text_of(source.id), {text_of(source.device_id)});
    }
    for (std::size_t i = 0; i < counted(node.flows_count); ++i) {
        const FLOW_IS04_ST& flow = node.flows[i];
        list.add(Type::flow, i, text_of(flow.id),
                 {text_of(flow.device_id), text_of(flow.source_id)});
    }
    for (std::size_t i = 0; i < counted(node.senders_count); ++i) {
        const SENDER_IS04_ST& sender = node.senders[i];
        if (records.selection.shows_sender(i))
            list.add(Type::sender, i, text_of(sender.id),
                     {text_of(sender.device_id), text_of(sender.flow_id)});
    }
    for (std::size_t i = 0; i < counted(node.receivers_count); ++i) {
        const RECEIVER_IS04_ST& receiver = node.receivers[i];
        if (records.selection.shows_receiver(i))
            list.add(Type::receiver, i, text_of(receiver.id), {text_of(receiver.device_id)});
    }
    return list.take();
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <utility>

#include <nmos_instrument/nmos_instrument.h>
#include <spdlog/spdlog.h>

#include "connection/target_request.h"
#include "http/error_response.h"
#include "records/addresses.h"
#include "records/record_text.h"
#include "routes/routes.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// The sender of ours whose SDP file is at `url`.
std::optional<std::size_t> own_sender(const Instrument& instrument, const std::string& url)
{
    const std::string before =
        connection_api_url(instrument.configuration().server) + "single/senders/";
    constexpr std::string_view after = "/transportfile";
    std::string_view id = url;
    if (id.ends_with('/'))
        id.remove_suffix(1);
    if (!id.starts_with(before) || !id.ends_with(after) || id.size() < before.size() + after.size())
        return std::nullopt;
    id.remove_prefix(before.size());
    id.remove_suffix(after.size());
    return instrument.index().find(ResourceKind::sender, id);
}

/// One PUT of a receiver's target, from its arrival to its answer.
struct TargetChange
{
    Services services;
    ConnectionKey receiver;
    std::string body;
    HttpReply reply;

    void apply(const ConnectionPatch& patch) const
    {
        const ChangeOutcome outcome = services.instrument.change(receiver, patch);
        if (outcome.status == 200)
            reply_when_saved(services, reply, json_response(body, 202));
        else
            reply(error_response(outcome.status, outcome.error, outcome.debug));
    }
};

void put_target(const Services& services, const HttpRequest& request, std::size_t receiver,
                const nlohmann::json& document, const HttpReply& reply)
{
    Findings findings;
    const std::optional<TargetSender> sender = parse_target(document, findings);
    if (!findings.empty()) {
        reply(
            error_response(400, "The body is no sender of IS-04 v1.2 and not {}", findings.text()));
        return;
    }
    auto change = std::make_shared<TargetChange>(
        TargetChange{services, {Side::receiver, receiver}, request.body, reply});
    if (!sender) {
        change->body = "{}";
        change->apply(patch_to_disconnect());
        return;
    }
    if (const auto own = own_sender(services.instrument, sender->manifest_href)) {
        change->apply(patch_to_connect(sender->id, services.instrument.sdp_file(*own)));
        return;
    }
    services.manifests.fetch(sender->manifest_href, [change, id = sender->id](
                                                        const FetchedManifest& manifest) {
        if (manifest.fetched) {
            change->apply(patch_to_connect(id, manifest.content));
            return;
        }
        spdlog::info("a target's manifest could not be fetched: {}", manifest.why);
        change->reply(error_response(500, "The sender's manifest cannot be fetched", manifest.why));
    });
}

} // namespace

void add_node_routes(Router& router, const Services& services)
{
    const std::string base = "/x-nmos/node/v1.2";
    Instrument& instrument = services.instrument;

    // GET `path`, answered with what `make` makes of the records.
    const auto get = [&](const std::string& path, auto make) {
        router.get(base + path, [&instrument, make](const HttpRequest&, std::size_t index) {
            return json_response(instrument.read([&](Records& records) {
                return make(records, records.selection, static_cast<int>(index));
            }));
        });
    };
    using Selection = const StreamSelection&;

    router.get("/x-nmos/node", [](const HttpRequest&, std::size_t) {
        return json_response(NodeApi().make_version());
    });
    get("", [](Records& records, Selection, int) { return NodeApi().make_base(&records.node); });
    get("/self",
        [](Records& records, Selection, int) { return NodeApi().make_self(&records.node); });
    get("/sources",
        [](Records& records, Selection, int) { return NodeApi().make_sources(&records.node); });
    get("/sources/{source}", [](Records& records, Selection, int index) {
        return NodeApi().make_sourceid(&records.node, index);
    });
    get("/flows",
        [](Records& records, Selection, int) { return NodeApi().make_flows(&records.node); });
    get("/flows/{flow}", [](Records& records, Selection, int index) {
        return NodeApi().make_flowid(&records.node, index);
    });
    get("/devices", [](Records& records, Selection selection, int) {
        return NodeApi().make_devices(&records.node, selection.receiver_filter,
                                      selection.audio_group_filter, selection.sender_filter);
    });
    get("/devices/{device}", [](Records& records, Selection selection, int index) {
        return NodeApi().make_deviceid(&records.node, index, selection.receiver_filter,
                                       selection.audio_group_filter, selection.sender_filter);
    });
    get("/senders", [](Records& records, Selection selection, int) {
        return NodeApi().make_senders(&records.node, selection.sender_filter);
    });
    get("/senders/{sender}", [](Records& records, Selection, int index) {
        return NodeApi().make_senderid(&records.node, index);
    });
    get("/receivers", [](Records& records, Selection selection, int) {
        return NodeApi().make_receivers(&records.node, selection.receiver_filter,
                                        selection.audio_group_filter);
    });
    get("/receivers/{receiver}", [](Records& records, Selection, int index) {
        return NodeApi().make_receiverid(&records.node, index);
    });
    router.add("PUT", base + "/receivers/{receiver}/target",
               with_json([services](const HttpRequest& request, std::size_t receiver,
                                    const nlohmann::json& document, const HttpReply& reply) {
                   put_target(services, request, receiver, document, reply);
               }));
}

} // namespace nmos_instrument::host

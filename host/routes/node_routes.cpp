// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <optional>
#include <utility>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/target_request.h"
#include "http/manifest_fetcher.h"
#include "records/addresses.h"
#include "records/record_text.h"
#include "routes/change_response.h"
#include "routes/routes.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// The sender of this instrument whose SDP file is at `url`.
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
    HttpRequest request;
    HttpReply reply;
    std::string body; ///< of the answer

    void apply(const ConnectionPatch& patch) const
    {
        // Fetching the manifest took its time.
        if (const std::optional<HttpResponse> refusal = refusal_of_change(services)) {
            reply(*refusal);
            return;
        }
        const ChangeOutcome outcome = change(services, request.peer, receiver, patch, Findings());
        if (outcome.is_refusal())
            reply(refusal_response(outcome));
        else
            reply_when_saved(services, reply, json_response(body, 202));
    }
};

/// The manifest is the SDP file of the sender in the target.
void connect_with_manifest(const Services& services, const TargetSender& sender,
                           const std::shared_ptr<TargetChange>& change)
{
    services.manifests.fetch(sender.manifest_href,
                             [change, id = sender.id](const FetchedManifest& manifest) {
                                 if (manifest.fetched) {
                                     change->apply(patch_to_connect(id, manifest.content));
                                     return;
                                 }
                                 refuse(change->services, change->request, change->reply, 500,
                                        "The sender's manifest cannot be fetched", manifest.why);
                             });
}

void put_target(const Services& services, const JsonRequest& request, const HttpReply& reply)
{
    Findings findings;
    const std::optional<TargetSender> sender = parse_target(request.document, findings);
    if (!findings.empty()) {
        refuse(services, request.http, reply, 400,
               "The body is neither an IS-04 v1.2 sender nor {}", findings.text());
        return;
    }
    const auto change = std::make_shared<TargetChange>(TargetChange{
        services, {Side::receiver, request.index}, request.http, reply, request.http.body});
    if (!sender) {
        change->body = "{}";
        change->apply(patch_to_disconnect());
    } else if (const auto own = own_sender(services.instrument, sender->manifest_href)) {
        change->apply(patch_to_connect(sender->id, services.instrument.sdp_file(*own)));
    } else {
        connect_with_manifest(services, *sender, change);
    }
}

constexpr Route table[] = {
    {"GET", "/x-nmos/node", [](Records&, int) { return NodeApi().make_version(); }},
    {"GET", "/x-nmos/node/v1.2",
     [](Records& records, int) { return NodeApi().make_base(&records.node); }},
    {"GET", "/x-nmos/node/v1.2/self",
     [](Records& records, int) { return NodeApi().make_self(&records.node); }},
    {"GET", "/x-nmos/node/v1.2/sources",
     [](Records& records, int) { return NodeApi().make_sources(&records.node); }},
    {"GET", "/x-nmos/node/v1.2/sources/{source}",
     [](Records& records, int index) { return NodeApi().make_sourceid(&records.node, index); }},
    {"GET", "/x-nmos/node/v1.2/flows",
     [](Records& records, int) { return NodeApi().make_flows(&records.node); }},
    {"GET", "/x-nmos/node/v1.2/flows/{flow}",
     [](Records& records, int index) { return NodeApi().make_flowid(&records.node, index); }},
    {"GET", "/x-nmos/node/v1.2/devices",
     [](Records& records, int) {
         const StreamSelection& selection = records.selection;
         return NodeApi().make_devices(&records.node, selection.receiver_filter,
                                       selection.audio_group_filter, selection.sender_filter);
     }},
    {"GET", "/x-nmos/node/v1.2/devices/{device}",
     [](Records& records, int index) {
         const StreamSelection& selection = records.selection;
         return NodeApi().make_deviceid(&records.node, index, selection.receiver_filter,
                                        selection.audio_group_filter, selection.sender_filter);
     }},
    {"GET", "/x-nmos/node/v1.2/senders",
     [](Records& records, int) {
         return NodeApi().make_senders(&records.node, records.selection.sender_filter);
     }},
    {"GET", "/x-nmos/node/v1.2/senders/{sender}",
     [](Records& records, int index) { return NodeApi().make_senderid(&records.node, index); }},
    {"GET", "/x-nmos/node/v1.2/receivers",
     [](Records& records, int) {
         return NodeApi().make_receivers(&records.node, records.selection.receiver_filter,
                                         records.selection.audio_group_filter);
     }},
    {"GET", "/x-nmos/node/v1.2/receivers/{receiver}",
     [](Records& records, int index) { return NodeApi().make_receiverid(&records.node, index); }},
    {"PUT", "/x-nmos/node/v1.2/receivers/{receiver}/target", put_target},
};

} // namespace

std::span<const Route> node_routes()
{
    return table;
}

} // namespace nmos_instrument::host

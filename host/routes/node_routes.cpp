// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <optional>
#include <utility>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/target_request.h"
#include "http/client_address.h"
#include "http/manifest_fetcher.h"
#include "http/url.h"
#include "records/addresses.h"
#include "records/record_text.h"
#include "routes/change_response.h"
#include "routes/routes.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// The sender of this instrument whose SDP file is at `url`.
std::optional<std::size_t> own_sender(Instrument& instrument, const std::string& url)
{
    const std::string before = connection_api_url(instrument.address()) + "single/senders/";
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

/// Whoever may name a URL may look into the network by it. So one answer stands for all that can be
/// wrong with a manifest of others: it does not say whether anything was there, nor what.
Refusal manifest_refusal()
{
    return {
        500, "The sender's manifest cannot be used",
        "it cannot be fetched, or it is not an SDP file that this receiver takes; the log of the "
        "instrument says why"};
}

Refusal too_many_manifests()
{
    return {503, "Too many manifests are being fetched",
            "allowed: " + std::to_string(ManifestFetcher::limit_for_one_client) +
                " at once for one client, " + std::to_string(ManifestFetcher::limit) + " in all"};
}

/// One PUT of a receiver's target, from its arrival to its answer.
struct TargetChange
{
    const Services& services;
    ConnectionKey receiver;
    std::string peer; ///< who asks for it
    HttpReply reply;
    std::string body; ///< of the answer

    void apply(const ConnectionPatch& patch, Instrument::Then then) const
    {
        change(services, peer, receiver, patch, Findings(), std::move(then));
    }

    /// A refusal that apply() has not counted.
    void refuse(const Refusal& refusal) const
    {
        services.counts.refused_change(refusal.status);
        answer_with(refusal);
    }

    void answer_with(const Refusal& refusal) const
    {
        note_refusal(services, peer, services.instrument.resource_name(receiver), refusal);
        reply(response_of(refusal));
    }

    void answer(const ChangeOutcome& outcome) const
    {
        if (outcome.is_refusal())
            answer_with(refusal_of(outcome));
        else
            reply_when_saved(services, reply, json_response(body, 202));
    }
};

/// Answers with what became of a manifest that was fetched from elsewhere.
void answer_for(const TargetSender& sender, const ChangeOutcome& outcome,
                const TargetChange& change)
{
    // A lock is no secret, but here it would tell that something was fetched.
    if (outcome.result != ChangeResult::invalid && outcome.result != ChangeResult::locked) {
        change.answer(outcome);
        return;
    }
    change.services.log.info(change.peer, "the manifest " + shown_url(sender.manifest_href) +
                                              " was fetched but not used");
    change.answer_with(manifest_refusal());
}

using SharedChange = std::shared_ptr<const TargetChange>;

void connect_with(const TargetSender& sender, const std::string& sdp, const SharedChange& change)
{
    // Fetching took its time.
    if (const std::optional<Refusal> refusal = refusal_of_change(change->services)) {
        change->refuse(*refusal);
        return;
    }
    change->apply(patch_to_connect(sender.id, sdp), [sender, change](const ChangeOutcome& outcome) {
        answer_for(sender, outcome, *change);
    });
}

void answer_about(const TargetSender& sender, const FetchedManifest& manifest,
                  const SharedChange& change)
{
    if (manifest.result == FetchedManifest::Result::fetched) {
        connect_with(sender, manifest.content, change);
        return;
    }
    change->services.log.info(change->peer, "the manifest " + shown_url(sender.manifest_href) +
                                                " was not fetched: " + manifest.why);
    const bool too_many = manifest.result == FetchedManifest::Result::too_many;
    change->refuse(too_many ? too_many_manifests() : manifest_refusal());
}

void fetch_manifest(const TargetSender& sender, const SharedChange& change)
{
    if (const auto locked = change->services.instrument.refusal_while_locked(change->receiver)) {
        change->refuse(refusal_of(*locked));
        return;
    }
    change->services.manifests.fetch(sender.manifest_href, client_of(change->peer),
                                     [sender, change](const FetchedManifest& manifest) {
                                         answer_about(sender, manifest, change);
                                     });
}

void put_target(const Services& services, const JsonRequest& request, const HttpReply& reply)
{
    Findings findings;
    const std::optional<TargetSender> sender = parse_target(request.document, findings);
    if (!findings.empty()) {
        refuse(services, request.http, reply,
               {400, "The body is neither an IS-04 v1.2 sender nor {}", findings.text()});
        return;
    }
    const auto change =
        std::make_shared<const TargetChange>(TargetChange{services,
                                                          {Side::receiver, request.index},
                                                          request.http.peer,
                                                          reply,
                                                          sender ? request.http.body : "{}"});
    const auto answer = [change](const ChangeOutcome& outcome) { change->answer(outcome); };
    if (!sender)
        change->apply(patch_to_disconnect(), answer);
    else if (const auto own = own_sender(services.instrument, sender->manifest_href))
        change->apply(patch_to_connect(sender->id, services.instrument.sdp_file(*own)), answer);
    else
        fetch_manifest(*sender, change);
}

constexpr Route table[] = {
    {"GET", "/x-nmos/node", [](Records&, int) { return NodeApi().make_version(); }},
    {"GET", "/x-nmos/node/v1.2",
     [](Records& records, int) { return NodeApi().make_base(&records.node); }},
    {"GET", "/x-nmos/node/v1.2/self",
     [](Records& records, int) { return NodeApi().make_self(&records.node); }},
    {"GET", "/x-nmos/node/v1.2/sources",
     [](Records& records, int) { return NodeApi().make_sources(&records.node); },
     &Conformance::source},
    {"GET", "/x-nmos/node/v1.2/sources/{source}",
     [](Records& records, int index) { return NodeApi().make_sourceid(&records.node, index); },
     &Conformance::source},
    {"GET", "/x-nmos/node/v1.2/flows",
     [](Records& records, int) { return NodeApi().make_flows(&records.node); }, &Conformance::flow},
    {"GET", "/x-nmos/node/v1.2/flows/{flow}",
     [](Records& records, int index) { return NodeApi().make_flowid(&records.node, index); },
     &Conformance::flow},
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
     },
     &Conformance::receiver},
    {"GET", "/x-nmos/node/v1.2/receivers/{receiver}",
     [](Records& records, int index) { return NodeApi().make_receiverid(&records.node, index); },
     &Conformance::receiver},
    {"PUT", "/x-nmos/node/v1.2/receivers/{receiver}/target", put_target},
};

} // namespace

std::span<const Route> node_routes()
{
    return table;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <nmos_instrument/nmos_instrument.h>

#include "connection/bulk_request.h"
#include "connection/parse_patch.h"
#include "http/error_response.h"
#include "routes/change_response.h"
#include "routes/id_listing.h"
#include "routes/routes.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// Does what one PATCH, or one entry of a bulk request, asks for. The caller answers in `then`.
void patch_staged(const Services& services, const std::string& peer, const ConnectionKey& key,
                  const nlohmann::json& document, Instrument::Then then)
{
    Findings findings;
    const ConnectionPatch patch = parse_patch(document, key.side, findings);
    change(services, peer, key, patch, findings,
           [&services, peer, key, then = std::move(then)](ChangeOutcome outcome) {
               if (outcome.is_refusal())
                   note_refusal(services, peer, services.instrument.resource_name(key),
                                refusal_of(outcome));
               then(std::move(outcome));
           });
}

template <Side side>
void patch_one(const Services& services, const JsonRequest& request, const HttpReply& reply)
{
    patch_staged(services, request.http.peer, {side, request.index}, request.document,
                 [&services, reply](const ChangeOutcome& outcome) {
                     if (outcome.is_refusal())
                         reply(response_of(refusal_of(outcome)));
                     else
                         reply_when_saved(services, reply,
                                          json_response(outcome.body, http_status(outcome.result)));
                 });
}

constexpr ResourceKind kind_of(Side side)
{
    return side == Side::sender ? ResourceKind::sender : ResourceKind::receiver;
}

ChangeOutcome unknown_id(const Services& services, const std::string& peer, Side side,
                         const std::string& id)
{
    services.log.info(peer, "refused a change of " + in_quotes(id) +
                                ": 404 Not found: no resource has this id");
    ChangeOutcome outcome{ChangeResult::unknown, "", "Not found", "no resource has this id"};
    services.counts.refused_change(404);
    note_refusal(services, peer, (side == Side::sender ? "senders/" : "receivers/") + id,
                 refusal_of(outcome));
    return outcome;
}

/// The answer to one entry of a bulk request.
std::string bulk_entry(const std::string& id, const ChangeOutcome& outcome)
{
    std::string entry = "{\"code\":" + std::to_string(http_status(outcome.result));
    if (outcome.is_refusal())
        entry +=
            ",\"debug\":" + json_string(outcome.debug) + ",\"error\":" + json_string(outcome.error);
    return entry + ",\"id\":" + json_string(id) + '}';
}

/// The answer to a bulk request. Each entry may end later, on another thread; the last one replies.
class BulkAnswer
{
public:
    BulkAnswer(const Services& services, HttpReply reply, std::size_t size)
        : services_(services), reply_(std::move(reply)), entries_(size), left_(size)
    {}

    void ended(std::size_t index, const std::string& id, const ChangeOutcome& outcome)
    {
        std::string entry = bulk_entry(id, outcome);
        {
            const std::lock_guard lock(mutex_);
            entries_[index] = std::move(entry);
            changed_ = changed_ || !outcome.is_refusal();
            if (--left_ != 0)
                return;
        }
        answer();
    }

    /// When all have ended.
    void answer() const
    {
        std::string body = "[";
        for (const std::string& entry : entries_)
            body += (body.size() == 1 ? "" : ",") + entry;
        HttpResponse response = json_response(body + ']');
        if (changed_)
            reply_when_saved(services_, reply_, std::move(response));
        else
            reply_(std::move(response));
    }

private:
    const Services& services_;
    const HttpReply reply_;
    std::mutex mutex_;
    std::vector<std::string> entries_; ///< in the order of the request
    std::size_t left_;
    bool changed_ = false;
};

void make_change(const Services& services, const std::string& peer, Side side,
                 const BulkEntry& entry, Instrument::Then then)
{
    if (const auto index = services.instrument.index().find(kind_of(side), entry.id))
        patch_staged(services, peer, {side, *index}, *entry.params, std::move(then));
    else
        then(unknown_id(services, peer, side, entry.id));
}

template <Side side>
void post_bulk(const Services& services, const JsonRequest& request, const HttpReply& reply)
{
    Findings findings;
    const std::vector<BulkEntry> entries = parse_bulk_request(
        request.document, services.instrument.index().size(kind_of(side)), findings);
    if (!findings.empty()) {
        refuse(services, request.http, reply,
               {400, "The body is not a bulk request", findings.text()});
        return;
    }
    const auto answer = std::make_shared<BulkAnswer>(services, reply, entries.size());
    if (entries.empty())
        answer->answer();
    for (std::size_t i = 0; i < entries.size(); ++i)
        make_change(services, request.http.peer, side, entries[i],
                    [answer, i, id = entries[i].id](const ChangeOutcome& outcome) {
                        answer->ended(i, id, outcome);
                    });
}

/// A leg has one interface, and its constraints say only that.
template <Side side>
HttpResponse constraints(const Services& services, std::size_t index)
{
    const auto& interfaces = services.instrument.configuration().interfaces;
    std::string leg1 = interfaces[0].address;
    std::string leg2 = interfaces[1].address;
    return json_response(services.instrument.read([&](Records& records) {
        ConnectionApi api;
        return side == Side::sender
                   ? api.make_single_senderid_constraints(&records.connections,
                                                          static_cast<int>(index), &leg1, &leg2)
                   : api.make_single_receiverid_constraints(&records.connections,
                                                            static_cast<int>(index), &leg1, &leg2);
    }));
}

HttpResponse transport_file(const Services& services, std::size_t sender)
{
    HttpResponse response;
    response.content_type = "application/sdp";
    response.body = services.instrument.sdp_file(sender);
    response.headers = {{"Cache-Control", "no-cache"}};
    return response;
}

constexpr Route table[] = {
    {"GET", "/x-nmos/connection", [](Records&, int) { return ConnectionApi().make_version(); }},
    {"GET", "/x-nmos/connection/v1.0",
     [](Records& records, int) { return ConnectionApi().make_base(&records.connections); }},

    // IS-05 v1.0 requires a 405 for GET on these two, so the library's empty listings are not
    // served.
    {"GET", "/x-nmos/connection/v1.0/bulk",
     [](Records& records, int) { return ConnectionApi().make_bulk(&records.connections); }},
    {"POST", "/x-nmos/connection/v1.0/bulk/senders", post_bulk<Side::sender>},
    {"POST", "/x-nmos/connection/v1.0/bulk/receivers", post_bulk<Side::receiver>},

    {"GET", "/x-nmos/connection/v1.0/single",
     [](Records& records, int) { return ConnectionApi().make_single(&records.connections); }},

    {"GET", "/x-nmos/connection/v1.0/single/senders",
     [](Records& records, int) {
         return without_trailing_comma(ConnectionApi().make_single_senders(
             &records.node, records.selection.sender_filter != 0));
     }},
    {"GET", "/x-nmos/connection/v1.0/single/senders/{sender}",
     [](Records& records, int) {
         return ConnectionApi().make_single_senderid(&records.connections);
     }},
    {"GET", "/x-nmos/connection/v1.0/single/senders/{sender}/constraints",
     constraints<Side::sender>},
    {"GET", "/x-nmos/connection/v1.0/single/senders/{sender}/staged",
     [](Records& records, int index) {
         return ConnectionApi().make_single_senderid_staged(&records.connections, index);
     }},
    {"PATCH", "/x-nmos/connection/v1.0/single/senders/{sender}/staged", patch_one<Side::sender>},
    {"GET", "/x-nmos/connection/v1.0/single/senders/{sender}/active",
     [](Records& records, int index) {
         return ConnectionApi().make_single_senderid_active(&records.connections, index);
     },
     &Conformance::active_sender},
    {"GET", "/x-nmos/connection/v1.0/single/senders/{sender}/transportfile", transport_file},

    {"GET", "/x-nmos/connection/v1.0/single/receivers",
     [](Records& records, int) {
         return without_trailing_comma(
             ConnectionApi().make_single_receivers(&records.node, records.selection.receiver_filter,
                                                   records.selection.audio_group_filter));
     }},
    {"GET", "/x-nmos/connection/v1.0/single/receivers/{receiver}",
     [](Records& records, int) {
         return ConnectionApi().make_single_receiverid(&records.connections);
     }},
    {"GET", "/x-nmos/connection/v1.0/single/receivers/{receiver}/constraints",
     constraints<Side::receiver>},
    {"GET", "/x-nmos/connection/v1.0/single/receivers/{receiver}/staged",
     [](Records& records, int index) {
         return ConnectionApi().make_single_receiverid_staged(&records.connections, index);
     }},
    {"PATCH", "/x-nmos/connection/v1.0/single/receivers/{receiver}/staged",
     patch_one<Side::receiver>},
    {"GET", "/x-nmos/connection/v1.0/single/receivers/{receiver}/active",
     [](Records& records, int index) {
         return ConnectionApi().make_single_receiverid_active(&records.connections, index);
     }},
};

} // namespace

std::span<const Route> connection_routes()
{
    return table;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include <utility>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/bulk_request.h"
#include "connection/parse_patch.h"
#include "http/error_response.h"
#include "routes/id_listing.h"
#include "routes/routes.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

/// What a single PATCH does, short of answering.
ChangeOutcome patch_staged(Instrument& instrument, const ConnectionKey& key, const json& document)
{
    Findings findings;
    const ConnectionPatch patch = parse_patch(document, key.side, findings);
    if (findings.empty())
        return instrument.change(key, patch);
    ChangeOutcome refusal{400, "", "The parameters cannot be taken", findings.text()};
    log_refusal(instrument.resource_name(key), refusal);
    return refusal;
}

RouteHandler single_patch(const Services& services, Side side)
{
    return with_json([services, side](const HttpRequest&, std::size_t index, const json& document,
                                      const HttpReply& reply) {
        const ChangeOutcome outcome = patch_staged(services.instrument, {side, index}, document);
        if (outcome.status >= 400)
            reply(error_response(outcome.status, outcome.error, outcome.debug));
        else
            reply_when_saved(services, reply, json_response(outcome.body, outcome.status));
    });
}

json bulk_answer_to(const Services& services, Side side, const BulkEntry& entry)
{
    const ResourceKind kind = side == Side::sender ? ResourceKind::sender : ResourceKind::receiver;
    const auto index = services.instrument.index().find(kind, entry.id);
    json answer = {{"id", entry.id}};
    if (!index) {
        answer["code"] = 404;
        answer["error"] = "Not found";
        answer["debug"] = "there is no such id";
        return answer;
    }
    const ChangeOutcome outcome = patch_staged(services.instrument, {side, *index}, *entry.params);
    answer["code"] = outcome.status;
    if (outcome.status >= 400) {
        answer["error"] = outcome.error;
        answer["debug"] = outcome.debug;
    }
    return answer;
}

RouteHandler bulk_post(const Services& services, Side side)
{
    return with_json([services, side](const HttpRequest&, std::size_t, const json& document,
                                      const HttpReply& reply) {
        Findings findings;
        const std::vector<BulkEntry> entries = parse_bulk_request(document, findings);
        if (!findings.empty()) {
            reply(error_response(400, "The body is no bulk request", findings.text()));
            return;
        }
        json answers = json::array();
        for (const BulkEntry& entry : entries)
            answers.push_back(bulk_answer_to(services, side, entry));
        reply_when_saved(
            services, reply,
            json_response(answers.dump(-1, ' ', false, json::error_handler_t::replace)));
    });
}

} // namespace

void add_connection_routes(Router& router, const Services& services)
{
    const std::string base = "/x-nmos/connection/v1.0";
    Instrument& instrument = services.instrument;

    // GET `path`, answered with what `make` makes of the records.
    const auto get = [&](const std::string& path, auto make) {
        router.get(base + path, [&instrument, make](const HttpRequest&, std::size_t index) {
            return json_response(instrument.read(
                [&](Records& records) { return make(records, static_cast<int>(index)); }));
        });
    };

    router.get("/x-nmos/connection", [](const HttpRequest&, std::size_t) {
        return json_response(ConnectionApi().make_version());
    });
    get("", [](Records& records, int) { return ConnectionApi().make_base(&records.connections); });
    get("/bulk",
        [](Records& records, int) { return ConnectionApi().make_bulk(&records.connections); });
    // IS-05 v1.0 wants a 405 for GET here, so the library's empty listings are not served.
    router.add("POST", base + "/bulk/senders", bulk_post(services, Side::sender));
    router.add("POST", base + "/bulk/receivers", bulk_post(services, Side::receiver));
    get("/single",
        [](Records& records, int) { return ConnectionApi().make_single(&records.connections); });

    get("/single/senders", [](Records& records, int) {
        return without_trailing_comma(ConnectionApi().make_single_senders(
            &records.node, records.selection.sender_filter != 0));
    });
    get("/single/senders/{sender}", [](Records& records, int) {
        return ConnectionApi().make_single_senderid(&records.connections);
    });
    get("/single/senders/{sender}/constraints", [&instrument](Records& records, int index) {
        const auto& interfaces = instrument.configuration().interfaces;
        std::string leg1 = interfaces[0].address;
        std::string leg2 = interfaces[1].address;
        return ConnectionApi().make_single_senderid_constraints(&records.connections, index, &leg1,
                                                                &leg2);
    });
    get("/single/senders/{sender}/staged", [](Records& records, int index) {
        return ConnectionApi().make_single_senderid_staged(&records.connections, index);
    });
    router.add("PATCH", base + "/single/senders/{sender}/staged",
               single_patch(services, Side::sender));
    get("/single/senders/{sender}/active", [](Records& records, int index) {
        return ConnectionApi().make_single_senderid_active(&records.connections, index);
    });
    router.get(base + "/single/senders/{sender}/transportfile",
               [&instrument](const HttpRequest&, std::size_t index) {
                   HttpResponse response;
                   response.content_type = "application/sdp";
                   response.body = instrument.sdp_file(index);
                   response.headers = {{"Cache-Control", "no-cache"}};
                   return response;
               });

    get("/single/receivers", [](Records& records, int) {
        return without_trailing_comma(
            ConnectionApi().make_single_receivers(&records.node, records.selection.receiver_filter,
                                                  records.selection.audio_group_filter));
    });
    get("/single/receivers/{receiver}", [](Records& records, int) {
        return ConnectionApi().make_single_receiverid(&records.connections);
    });
    get("/single/receivers/{receiver}/constraints", [&instrument](Records& records, int index) {
        const auto& interfaces = instrument.configuration().interfaces;
        std::string leg1 = interfaces[0].address;
        std::string leg2 = interfaces[1].address;
        return ConnectionApi().make_single_receiverid_constraints(&records.connections, index,
                                                                  &leg1, &leg2);
    });
    get("/single/receivers/{receiver}/staged", [](Records& records, int index) {
        return ConnectionApi().make_single_receiverid_staged(&records.connections, index);
    });
    router.add("PATCH", base + "/single/receivers/{receiver}/staged",
               single_patch(services, Side::receiver));
    get("/single/receivers/{receiver}/active", [](Records& records, int index) {
        return ConnectionApi().make_single_receiverid_active(&records.connections, index);
    });
}

} // namespace nmos_instrument::host

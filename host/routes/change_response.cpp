// SPDX-License-Identifier: Apache-2.0

#include "routes/change_response.h"

#include <string>
#include <utility>

#include "http/error_response.h"
#include "text/quoted_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

/// Nothing is cut: findings shorten what a client sent, and all else in them is ours.
std::string refusal_line(const Refusal& refusal)
{
    std::string line = std::to_string(refusal.status) + ' ' + refusal.error;
    if (!refusal.debug.empty())
        line += ": " + one_line(refusal.debug);
    return line;
}

void log_change(const Services& services, const std::string& peer, const ConnectionKey& key,
                const ChangeOutcome& outcome)
{
    for (const std::string& line : outcome.log)
        services.log.info(peer, line);
    if (!outcome.is_refusal())
        return;
    const Refusal refusal = refusal_of(outcome);
    services.counts.refused_change(refusal.status);
    services.log.info(peer, "refused a change of " + services.instrument.resource_name(key) + ": " +
                                refusal_line(refusal));
}

} // namespace

int http_status(ChangeResult result)
{
    switch (result) {
    case ChangeResult::done:
        return 200;
    case ChangeResult::accepted:
        return 202;
    case ChangeResult::invalid:
        return 400;
    case ChangeResult::locked:
        return 423;
    case ChangeResult::unknown:
        return 404;
    case ChangeResult::failed:
        break;
    }
    return 500;
}

void change(const Services& services, const std::string& peer, const ConnectionKey& key,
            const ConnectionPatch& patch, const Findings& findings, Instrument::Then then)
{
    Instrument::Then log_first = [&services, peer, key,
                                  then = std::move(then)](ChangeOutcome outcome) {
        log_change(services, peer, key, outcome);
        then(std::move(outcome));
    };
    if (findings.empty())
        services.instrument.change(key, patch, std::move(log_first));
    else
        log_first(invalid_parameters(findings.text()));
}

void note_refusal(const Services& services, const std::string& peer, const std::string& what,
                  const Refusal& refusal)
{
    services.refusals.add(tai_now(), peer, what, refusal);
}

void refuse(const Services& services, const HttpRequest& request, const HttpReply& reply,
            const Refusal& refusal)
{
    services.counts.refused_change(refusal.status);
    note_refusal(services, request.peer, request.method + ' ' + request.path, refusal);
    services.log.info(request.peer, "refused " + in_quotes(request.method) + ' ' +
                                        in_quotes(request.path) + ": " + refusal_line(refusal));
    reply(response_of(refusal));
}

Refusal refusal_of(const ChangeOutcome& outcome)
{
    return {http_status(outcome.result), outcome.error, outcome.debug};
}

HttpResponse response_of(const Refusal& refusal)
{
    return error_response(refusal.status, refusal.error, refusal.debug);
}

} // namespace nmos_instrument::host

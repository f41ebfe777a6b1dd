// SPDX-License-Identifier: Apache-2.0

#include "routes/change_response.h"

#include <string>
#include <string_view>

#include "http/error_response.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// "one\ntwo\n" as "one | two". Nothing is cut: findings shorten what a client sent, and all else
/// in them is ours.
std::string one_line(std::string_view text)
{
    while (text.ends_with('\n'))
        text.remove_suffix(1);
    std::string line;
    for (const char c : text) {
        if (c == '\n')
            line += " | ";
        else
            line += c;
    }
    return line;
}

std::string refusal_line(int status, const std::string& error, const std::string& debug)
{
    std::string line = std::to_string(status) + ' ' + error;
    if (!debug.empty())
        line += ": " + one_line(debug);
    return line;
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

ChangeOutcome change(const Services& services, const std::string& peer, const ConnectionKey& key,
                     const ConnectionPatch& patch, const Findings& findings)
{
    Instrument& instrument = services.instrument;
    ChangeOutcome outcome =
        findings.empty() ? instrument.change(key, patch) : invalid_parameters(findings.text());
    for (const std::string& line : outcome.log)
        services.log.info(peer, line);
    if (outcome.is_refusal()) {
        const int status = http_status(outcome.result);
        services.counts.refused_change(status);
        services.log.info(peer, "refused a change of " + instrument.resource_name(key) + ": " +
                                    refusal_line(status, outcome.error, outcome.debug));
    }
    return outcome;
}

void refuse(const Services& services, const HttpRequest& request, const HttpReply& reply,
            int status, const std::string& error, const std::string& debug)
{
    services.counts.refused_change(status);
    services.log.info(request.peer, "refused " + in_quotes(request.method) + ' ' +
                                        in_quotes(request.path) + ": " +
                                        refusal_line(status, error, debug));
    reply(error_response(status, error, debug));
}

HttpResponse refusal_response(const ChangeOutcome& outcome)
{
    return error_response(http_status(outcome.result), outcome.error, outcome.debug);
}

} // namespace nmos_instrument::host

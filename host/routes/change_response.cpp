// SPDX-License-Identifier: Apache-2.0

#include "routes/change_response.h"

#include <string>

#include <spdlog/spdlog.h>

#include "http/error_response.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

std::string first_line_of(const std::string& text)
{
    const std::size_t end = text.find('\n');
    return end == std::string::npos ? text : text.substr(0, end) + " ...";
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
    case ChangeResult::failed:
        break;
    }
    return 500;
}

ChangeOutcome change(Instrument& instrument, const ConnectionKey& key, const ConnectionPatch& patch,
                     const Findings& findings)
{
    ChangeOutcome outcome =
        findings.empty() ? instrument.change(key, patch) : invalid_parameters(findings.text());
    if (outcome.is_refusal())
        spdlog::info("refused a change of {}: {} {}: {}", instrument.resource_name(key),
                     http_status(outcome.result), outcome.error,
                     in_quotes(first_line_of(outcome.debug)));
    return outcome;
}

HttpResponse refusal_response(const ChangeOutcome& outcome)
{
    return error_response(http_status(outcome.result), outcome.error, outcome.debug);
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "routes/services.h"

#include <string>
#include <utility>

#include "http/error_response.h"

namespace nmos_instrument::host {
namespace {

/// What was activated cannot be taken back.
HttpResponse not_saved(const std::string& trouble)
{
    return error_response(500,
                          "The change was made but is not saved yet: a restart might lose it. "
                          "Saving is tried again",
                          trouble);
}

} // namespace

std::optional<Refusal> refusal_of_change(const Services& services)
{
    const std::string trouble =
        services.state_file == nullptr ? "" : services.state_file->trouble();
    if (trouble.empty())
        return std::nullopt;
    return Refusal{500, "The change was not made: the state cannot be saved", trouble};
}

void reply_when_saved(const Services& services, const HttpReply& reply, HttpResponse response)
{
    if (services.state_file == nullptr) {
        reply(std::move(response));
        return;
    }
    services.state_file->when_saved(
        [reply, response = std::move(response)](const std::string& trouble) {
            reply(trouble.empty() ? response : not_saved(trouble));
        });
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRY_ANSWER_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRY_ANSWER_H

#include <string>

#include "http/client.h"

namespace nmos_instrument::host {

/// What an answer of a registry says about a POST of a resource.
enum class PostAnswer
{
    created,
    updated,
    refused, ///< it says something about what was posted
    failed   ///< it says something about the registry
};

/// 404, 405, 408 and 429 are no verdict on what was posted: there is no Registration API, or it has
/// no time. A redirect is not followed: POST and DELETE go to the URLs that IS-04 v1.2 gives
/// (APIs, URLs: Approach to Trailing Slashes), so whoever redirects them is no registry.
PostAnswer post_answer(const ClientAnswer& answer);

/// Of a heartbeat.
enum class HeartbeatAnswer
{
    accepted,
    unknown, ///< the registry does not know the node
    failed
};

HeartbeatAnswer heartbeat_answer(const ClientAnswer& answer);

/// Of a DELETE.
enum class DeleteAnswer
{
    deleted, ///< or it was not there
    refused,
    failed
};

DeleteAnswer delete_answer(const ClientAnswer& answer);

/// For the log: "answered 500: no space", "connection refused".
std::string shown_answer(const ClientAnswer& answer);

/// The same for the same failure, to tell whether it is news: without the body, and without the
/// milliseconds that libcurl counts ("failed to connect after 3 ms").
std::string reason_of_failure(const ClientAnswer& answer);

} // namespace nmos_instrument::host

#endif

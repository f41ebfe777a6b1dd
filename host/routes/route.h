// SPDX-License-Identifier: Apache-2.0
//
// One row of the URL space: the function that answers a method on a path.
//
//     {"GET", "/x-nmos/node/v1.2/self",
//      [](Records& records, int) { return NodeApi().make_self(&records.node); }},

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ROUTE_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ROUTE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include <nlohmann/json_fwd.hpp>

#include "conformance/conformance.h"
#include "http/message.h"
#include "http/server.h"
#include "records/fill_records.h"
#include "routes/services.h"
#include "routes/static_file.h"

namespace nmos_instrument::host {

/// A text of the library, made from the records under the instrument's lock and served as JSON.
/// `index` is the position of the resource whose id is in the path, or 0 without an id.
using MakeText = std::string (*)(Records& records, int index);

/// What a standard asks of such a text. It is done without the lock.
using CorrectText = std::string (Conformance::*)(std::string text) const;

/// An answer that is not just such a text.
using MakeResponse = HttpResponse (*)(const Services& services, std::size_t index);

/// An answer that depends on more than the path. Nothing changes by it.
using AnswerRequest = HttpResponse (*)(const Services& services, std::size_t index,
                                       const HttpRequest& request);

struct JsonRequest
{
    const HttpRequest& http;
    std::size_t index;
    const nlohmann::json& document; ///< the body
};

/// Does what a JSON document asks for. May answer later.
using TakeJson = void (*)(const Services& services, const JsonRequest& request,
                          const HttpReply& reply);

struct Route
{
    std::string_view method; ///< "GET" stands for HEAD too
    std::string_view path;   ///< without a slash at its end; may hold one of route_table.cpp's ids
    std::variant<MakeText, MakeResponse, AnswerRequest, const StaticFile*, TakeJson> function;
    CorrectText correct = nullptr; ///< of MakeText; null: the library's text is served unchanged
};

/// An answer in JSON.
inline HttpResponse json_response(std::string body, int status = 200)
{
    HttpResponse response;
    response.status = status;
    response.body = std::move(body);
    return response;
}

} // namespace nmos_instrument::host

#endif

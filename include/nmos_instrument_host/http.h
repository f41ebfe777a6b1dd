// SPDX-License-Identifier: Apache-2.0
//
// A request and its answer, for hosts that have an HTTP server of their own; and the files of a page.

#ifndef NMOS_INSTRUMENT_HOST_HTTP_H
#define NMOS_INSTRUMENT_HOST_HTTP_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nmos_instrument_host {

/// A request as your server has read it. Header fields are as received; empty: there is none.
struct HttpRequest
{
    std::string method; ///< "GET"; of the answer to "HEAD" you do not send the body
    std::string path;   ///< "/x-nmos/node/v1.2/self", still percent-encoded; a query is cut off
    std::string content_type; ///< of the body
    std::string accept;
    std::string if_none_match;
    std::string body; ///< limit its length yourself; the library's own server takes 1 MB
    std::string peer; ///< address and port of the client, "192.0.2.1:50123", for log and permission
};

/// What your server sends. Add `Access-Control-Allow-Origin: *`, which IS-04 and IS-05 ask for.
struct HttpAnswer
{
    int status = 200;
    std::string content_type; ///< empty: no such header
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers; ///< further ones, such as Allow
};

/// A file that is served beside the APIs, for browsers. What the views show must outlive the
/// instrument.
struct PageFile
{
    std::string_view path;         ///< "/panel/page.js"
    std::string_view content_type; ///< "text/javascript; charset=utf-8"
    std::string_view etag; ///< in quotes; another one for every other content (RFC 9110 8.8.3)
    std::string_view content;
    bool at_root = false; ///< of one file: browsers get it at "/" too
};

} // namespace nmos_instrument_host

#endif

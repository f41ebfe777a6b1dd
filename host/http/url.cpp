// SPDX-License-Identifier: Apache-2.0

#include "http/url.h"

#include <memory>
#include <new>

#include <curl/curl.h>

#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

struct CleanUpUrl
{
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

struct FreeText
{
    void operator()(char* text) const { curl_free(text); }
};

/// Empty if the URL has no such part.
std::string part_of(CURLU* url, CURLUPart part)
{
    char* text = nullptr;
    const CURLUcode result = curl_url_get(url, part, &text, 0);
    const std::unique_ptr<char, FreeText> owner(text);
    if (result == CURLUE_OUT_OF_MEMORY)
        throw std::bad_alloc();
    return result == CURLUE_OK ? text : "";
}

} // namespace

std::optional<Url> parse_url(const std::string& url)
{
    const std::unique_ptr<CURLU, CleanUpUrl> parsed(curl_url());
    if (parsed == nullptr)
        throw std::bad_alloc();
    const CURLUcode result = curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0);
    if (result == CURLUE_OUT_OF_MEMORY)
        throw std::bad_alloc();
    if (result != CURLUE_OK)
        return std::nullopt;
    return Url{part_of(parsed.get(), CURLUPART_SCHEME), part_of(parsed.get(), CURLUPART_HOST),
               part_of(parsed.get(), CURLUPART_PORT), part_of(parsed.get(), CURLUPART_PATH)};
}

std::string shown_url(const std::string& url)
{
    const std::optional<Url> parts = parse_url(url);
    if (!parts)
        return "a URL that cannot be read";
    const std::string port = parts->port.empty() ? "" : ':' + parts->port;
    return in_quotes(parts->scheme + "://" + parts->host + port + parts->path);
}

} // namespace nmos_instrument::host

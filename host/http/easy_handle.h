// SPDX-License-Identifier: Apache-2.0
//
// What our transfers have in common: libcurl's easy handle, wrapped.

#ifndef NMOS_INSTRUMENT_HOST_HTTP_EASY_HANDLE_H
#define NMOS_INSTRUMENT_HOST_HTTP_EASY_HANDLE_H

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include <curl/curl.h>

namespace nmos_instrument::host {

struct EasyHandleDeleter
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

using EasyHandle = std::unique_ptr<CURL, EasyHandleDeleter>;

/// A handle for one GET of `url` by http or https, without redirects or a proxy.
EasyHandle new_easy_handle(const std::string& url);

template <class Value>
void set(const EasyHandle& handle, CURLoption option, Value value)
{
    const CURLcode result = curl_easy_setopt(handle.get(), option, value);
    if (result != CURLE_OK)
        throw std::runtime_error(curl_easy_strerror(result));
}

/// Calls what a callback of libcurl stands for. No exception may pass through libcurl, which is
/// C: it ends the transfer instead.
template <class Call, class Result>
Result without_exceptions(const Call& call, Result in_case_of_one) noexcept
{
    try {
        return call();
    } catch (...) {
        return in_case_of_one;
    }
}

/// Why a transfer ends whose answer has more than `limit` bytes.
std::string longer_than(std::size_t limit);

/// Sets the reason of a failure. For want of memory it may be empty: a failure is reported all the
/// same.
void set_reason(std::string& why, const char* reason) noexcept;

} // namespace nmos_instrument::host

#endif

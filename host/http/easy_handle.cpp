// SPDX-License-Identifier: Apache-2.0

#include "http/easy_handle.h"

#include <new>

namespace nmos_instrument::host {

EasyHandle new_easy_handle(const std::string& url)
{
    EasyHandle handle(curl_easy_init());
    if (handle == nullptr)
        throw std::bad_alloc();
    set(handle, CURLOPT_URL, url.c_str());
    set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    set(handle, CURLOPT_NOSIGNAL, 1L);
#if LIBCURL_VERSION_NUM >= 0x075700
    // Otherwise the end of a transfer waits for the thread that asks a name server, and with it all
    // other transfers and the end of the program: https://curl.se/libcurl/c/CURLOPT_QUICK_EXIT.html
    set(handle, CURLOPT_QUICK_EXIT, 1L);
#endif
    // Media networks are local: a proxy from the environment would not reach them.
    set(handle, CURLOPT_PROXY, "");
    set(handle, CURLOPT_USERAGENT, "nmos-instrument");
    return handle;
}

std::string longer_than(std::size_t limit)
{
    return "longer than " + std::to_string(limit) + " bytes";
}

void set_reason(std::string& why, const char* reason) noexcept
{
    try {
        why = reason;
    } catch (const std::bad_alloc&) {
        why.clear();
    }
}

} // namespace nmos_instrument::host

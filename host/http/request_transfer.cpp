// SPDX-License-Identifier: Apache-2.0

#include "http/request_transfer.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "http/logged_exceptions.h"

namespace nmos_instrument::host {
namespace {

constexpr std::size_t kept_body = std::size_t{64} * 1024;
constexpr std::size_t longest_body = std::size_t{1024} * 1024;

} // namespace

RequestTransfer::RequestTransfer(ClientRequest request, HttpClient::Receive receive, Log log)
    : request_(std::move(request)), receive_(std::move(receive)), log_(std::move(log))
{}

CURL* RequestTransfer::begin()
{
    begin_ = std::chrono::steady_clock::now();
    handle_ = new_easy_handle(request_.url);
    set(handle_, CURLOPT_ERRORBUFFER, error_.data());
    set(handle_, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    // 0 would be no limit.
    set(handle_, CURLOPT_TIMEOUT_MS, std::max(static_cast<long>(request_.time_limit.count()), 1L));
    set_method();
    set_headers();
    set_address();
    if (!request_.ca_file.empty()) {
        set(handle_, CURLOPT_CAINFO, request_.ca_file.c_str());
        set(handle_, CURLOPT_CAPATH, static_cast<const char*>(nullptr)); // that of the system
    }
    const curl_write_callback write = [](char* bytes, std::size_t size, std::size_t count,
                                         void* user) noexcept {
        return without_exceptions(
            [&] { return static_cast<RequestTransfer*>(user)->take(bytes, size * count); },
            std::size_t{0}); // fewer than there were: ends the transfer
    };
    set(handle_, CURLOPT_WRITEFUNCTION, write);
    set(handle_, CURLOPT_WRITEDATA, static_cast<void*>(this));
    return handle_.get();
}

void RequestTransfer::set_method()
{
    if (request_.method == "GET" && !request_.json)
        return;
    if (request_.method == "POST" || request_.json) {
        const std::string_view body = request_.json ? *request_.json : std::string_view("");
        set(handle_, CURLOPT_POST, 1L);
        set(handle_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        set(handle_, CURLOPT_POSTFIELDS, body.data());
    }
    if (request_.method != "POST")
        set(handle_, CURLOPT_CUSTOMREQUEST, request_.method.c_str());
}

void RequestTransfer::set_headers()
{
    add(headers_, request_.json ? "Content-Type: application/json" : "Content-Type:");
    add(headers_, "Expect:"); // the answer to it would be one more round trip
    set(handle_, CURLOPT_HTTPHEADER, headers_.get());
}

/// Not by CURLOPT_RESOLVE, which would count for later requests too, and for a connection that is
/// still open to another address not at all.
void RequestTransfer::set_address()
{
    if (request_.address.empty())
        return;
    const bool is_ipv6 = request_.address.find(':') != std::string::npos;
    const std::string host = is_ipv6 ? '[' + request_.address + ']' : request_.address;
    add(connect_to_, ("::" + host + ':').c_str()); // whatever the URL's host and port, its port
    set(handle_, CURLOPT_CONNECT_TO, connect_to_.get());
}

void RequestTransfer::add(List& list, const char* text)
{
    curl_slist* const longer = curl_slist_append(list.get(), text);
    if (longer == nullptr)
        throw std::bad_alloc();
    static_cast<void>(list.release());
    list.reset(longer);
}

std::size_t RequestTransfer::take(const char* bytes, std::size_t length)
{
    received_ += length;
    if (received_ > longest_body)
        return 0; // ends the transfer
    answer_.body.append(bytes, std::min(length, kept_body - answer_.body.size()));
    return length;
}

void RequestTransfer::end(CURLcode result)
{
    answer_.why = failure(result);
    if (answer_.why.empty()) {
        const char* location = nullptr;
        curl_easy_getinfo(handle_.get(), CURLINFO_REDIRECT_URL, &location);
        answer_.location = location == nullptr ? "" : location;
        long status = 0;
        curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
        answer_.status = static_cast<int>(status);
    } else {
        answer_.body.clear();
    }
    deliver();
}

/// "" if there is none.
std::string RequestTransfer::failure(CURLcode result) const
{
    if (received_ > longest_body)
        return longer_than(longest_body);
    if (result == CURLE_OK)
        return "";
    return error_.front() != '\0' ? error_.data() : curl_easy_strerror(result);
}

void RequestTransfer::give_up(const char* why) noexcept
{
    answer_.status = 0;
    answer_.body.clear();
    set_reason(answer_.why, why);
    deliver();
}

/// Lets no exception out: otherwise it would be called a second time.
void RequestTransfer::deliver() noexcept
{
    answer_.duration = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - begin_);
    with_exceptions_logged(log_, [this] { receive_(answer_); });
}

} // namespace nmos_instrument::host

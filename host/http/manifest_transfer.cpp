// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_transfer.h"

#include <chrono>
#include <cstring>
#include <optional>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

#include "http/url.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

constexpr std::size_t size_limit = 1024UL * 1024;
constexpr long time_limit_ms = 2000;
constexpr long redirect_limit = 2;

ManifestTransfer& transfer_of(void* user)
{
    return *static_cast<ManifestTransfer*>(user);
}

/// True if the host of `url` is an IPv6 address.
bool is_ipv6(const char* url)
{
    const std::optional<Url> parts = parse_url(url);
    return parts && parts->host.starts_with('[');
}

/// True if the host of `url` has to be looked up, or if that is not clear.
bool has_host_name(const char* url)
{
    const std::optional<Url> parts = parse_url(url);
    return !parts || !ipv4_from_dotted_quad(parts->host);
}

} // namespace

ManifestTransfer::ManifestTransfer(std::string url, std::string client,
                                   std::shared_ptr<const ManifestHosts> hosts,
                                   std::shared_ptr<NameLookups> lookups, Finish finish)
    : url_(std::move(url)),
      client_(std::move(client)),
      hosts_(std::move(hosts)),
      lookups_(std::move(lookups)),
      finish_(std::move(finish))
{}

ManifestTransfer::~ManifestTransfer()
{
    if (looks_up_)
        lookups_->leave_behind(std::move(client_), std::chrono::steady_clock::now());
}

CURL* ManifestTransfer::begin()
{
    handle_ = new_easy_handle(url_);
    set(handle_, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(handle_, CURLOPT_FOLLOWLOCATION, 1L);
    set(handle_, CURLOPT_MAXREDIRS, redirect_limit);
    set(handle_, CURLOPT_TIMEOUT_MS, time_limit_ms);
    // The instrument has no IPv6.
    set(handle_, CURLOPT_IPRESOLVE, long{CURL_IPRESOLVE_V4});

    const curl_write_callback write = [](char* bytes, std::size_t size, std::size_t count,
                                         void* user) noexcept {
        return without_exceptions([&] { return transfer_of(user).take(bytes, size * count); },
                                  std::size_t{0}); // fewer than there were: ends the transfer
    };
    const curl_resolver_start_callback resolve = [](void*, void*, void* user) noexcept {
        return without_exceptions([&] { return transfer_of(user).may_resolve() ? 0 : 1; }, 1);
    };
    const curl_opensocket_callback open = [](void* user, curlsocktype,
                                             curl_sockaddr* address) noexcept {
        return without_exceptions([&] { return transfer_of(user).open_socket(*address); },
                                  curl_socket_t{CURL_SOCKET_BAD});
    };
    void* const user = this;
    set(handle_, CURLOPT_WRITEFUNCTION, write);
    set(handle_, CURLOPT_WRITEDATA, user);
    set(handle_, CURLOPT_RESOLVER_START_FUNCTION, resolve);
    set(handle_, CURLOPT_RESOLVER_START_DATA, user);
    set(handle_, CURLOPT_OPENSOCKETFUNCTION, open);
    set(handle_, CURLOPT_OPENSOCKETDATA, user);
    return handle_.get();
}

std::size_t ManifestTransfer::take(const char* bytes, std::size_t length)
{
    if (content_.size() + length > size_limit) {
        too_long_ = true;
        return 0; // ends the transfer
    }
    content_.append(bytes, length);
    return length;
}

/// Called for each host, also for one that is a number, and again after each redirect.
bool ManifestTransfer::may_resolve()
{
    const char* url = nullptr;
    if (curl_easy_getinfo(handle_.get(), CURLINFO_EFFECTIVE_URL, &url) != CURLE_OK)
        return false;
    if (is_ipv6(url))
        return false; // the instrument has none
    if (looks_up_ || !has_host_name(url))
        return true;
    looks_up_ = lookups_->begin(client_, std::chrono::steady_clock::now());
    too_many_lookups_ = !looks_up_;
    return looks_up_;
}

/// The one place through which each connection goes: after a redirect too, and whatever a name
/// server answered.
curl_socket_t ManifestTransfer::open_socket(const curl_sockaddr& address)
{
    end_lookup();
    if (address.family != AF_INET)
        return CURL_SOCKET_BAD;
    sockaddr_in ipv4;
    static_assert(sizeof ipv4 <= sizeof address.addr);
    std::memcpy(&ipv4, &address.addr, sizeof ipv4);
    const std::uint32_t host = ntohl(ipv4.sin_addr.s_addr);
    if (!hosts_->allow(host)) {
        refused_address_ = dotted_quad(host);
        return CURL_SOCKET_BAD;
    }
    return socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
}

void ManifestTransfer::end_lookup() noexcept
{
    if (std::exchange(looks_up_, false))
        lookups_->end(client_);
}

void ManifestTransfer::end(CURLcode result)
{
    FetchedManifest manifest;
    manifest.why = failure(result);
    if (too_many_lookups_)
        manifest.result = FetchedManifest::Result::too_many;
    else if (manifest.why.empty())
        manifest = {FetchedManifest::Result::fetched, std::move(content_), ""};
    finish_(std::move(manifest));
}

void ManifestTransfer::give_up(const char* why) noexcept
{
    finish_(failed_because(why));
}

/// Why there is no manifest, or "".
std::string ManifestTransfer::failure(CURLcode result)
{
    if (result == CURLE_COULDNT_RESOLVE_HOST)
        end_lookup(); // answered: there is no such name
    if (too_many_lookups_)
        return "too many names are being looked up";
    if (!refused_address_.empty())
        return refused_address_ + " is in no network that manifests are fetched from";
    if (too_long_)
        return longer_than(size_limit);
    if (result != CURLE_OK)
        return curl_easy_strerror(result);
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status == 200 ? "" : "the server answered " + std::to_string(status);
}

} // namespace nmos_instrument::host

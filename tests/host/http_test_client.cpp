// SPDX-License-Identifier: Apache-2.0

#include "http_test_client.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {

namespace {

struct SocketName
{
    sockaddr_storage storage{};
    socklen_t length = 0;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

SocketName name_of(const char* address, std::uint16_t port)
{
    addrinfo numeric{};
    numeric.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    numeric.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(address, std::to_string(port).c_str(), &numeric, &found) != 0)
        throw std::runtime_error(std::string("test client: no address: ") + address);
    SocketName name;
    name.length = found->ai_addrlen;
    std::memcpy(&name.storage, found->ai_addr, found->ai_addrlen);
    freeaddrinfo(found);
    return name;
}

bool is_ipv6(const char* address)
{
    return std::strchr(address, ':') != nullptr;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

std::string TestResponse::header(const std::string& name) const
{
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

TestClient::TestClient(std::uint16_t port, const char* own_address)
    : socket_(socket(is_ipv6(own_address) ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const SocketName own = name_of(own_address, 0);
    const SocketName server = name_of(is_ipv6(own_address) ? "::1" : "127.0.0.1", port);
    const int yes = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    // The port is chosen when it connects: bind() alone would not find a free one quickly among
    // thousands that have just been used.
    setsockopt(socket_, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &yes, sizeof yes);
    if (bind(socket_, own.get(), own.length) != 0 ||
        connect(socket_, server.get(), server.length) != 0) {
        const int reason = errno;
        close(socket_);
        throw std::system_error(reason, std::generic_category(), "test client");
    }
}

TestClient::~TestClient()
{
    if (socket_ >= 0)
        close(socket_);
}

TestClient::TestClient(TestClient&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)), received_(std::move(other.received_))
{}

bool TestClient::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void TestClient::finish_sending()
{
    shutdown(socket_, SHUT_WR);
}

bool TestClient::read_more(std::chrono::milliseconds time)
{
    pollfd wanted{socket_, POLLIN, 0};
    if (poll(&wanted, 1, static_cast<int>(time.count())) <= 0)
        return false;
    std::array<char, 65536> bytes;
    const ssize_t size = recv(socket_, bytes.data(), bytes.size(), 0);
    if (size <= 0)
        return false;
    received_.append(bytes.data(), static_cast<std::size_t>(size));
    return true;
}

std::optional<TestResponse> TestClient::receive_head()
{
    std::size_t end;
    while ((end = received_.find("\r\n\r\n")) == std::string::npos)
        if (!read_more(patience))
            return std::nullopt;

    TestResponse response;
    const std::string head = received_.substr(0, end + 2);
    received_.erase(0, end + 4);
    std::size_t line = head.find("\r\n");
    response.status = std::atoi(head.c_str() + sizeof "HTTP/1.1");
    while (line + 2 < head.size()) {
        const std::size_t next = head.find("\r\n", line + 2);
        const std::string field = head.substr(line + 2, next - line - 2);
        const std::size_t colon = field.find(':');
        const std::size_t value = field.find_first_not_of(' ', colon + 1);
        response.headers[lower(field.substr(0, colon))] =
            value == std::string::npos ? "" : field.substr(value);
        line = next;
    }
    return response;
}

std::optional<TestResponse> TestClient::receive()
{
    std::optional<TestResponse> response = receive_head();
    while (response && response->status == 100)
        response = receive_head();
    if (!response)
        return std::nullopt;
    const auto length =
        static_cast<std::size_t>(std::atoll(response->header("content-length").c_str()));
    if (!read_until(length))
        return std::nullopt;
    response->body = received_.substr(0, length);
    received_.erase(0, length);
    return response;
}

std::optional<std::string> TestClient::receive_chunk()
{
    std::size_t line;
    while ((line = received_.find("\r\n")) == std::string::npos)
        if (!read_more(patience))
            return std::nullopt;
    const std::size_t size = std::strtoul(received_.c_str(), nullptr, 16);
    const std::size_t begin = line + 2;
    if (!read_until(begin + size + 2))
        return std::nullopt;
    std::string chunk = received_.substr(begin, size);
    received_.erase(0, begin + size + 2);
    return chunk;
}

bool TestClient::read_until(std::size_t size)
{
    while (received_.size() < size)
        if (!read_more(patience))
            return false;
    return true;
}

bool TestClient::is_closed_within(std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        pollfd wanted{socket_, POLLIN, 0};
        if (poll(&wanted, 1, static_cast<int>(std::max(left.count(), 0L))) <= 0)
            return false;
        if (!read_more(std::chrono::milliseconds(0)))
            return true;
    }
}

std::optional<TestResponse> fetch(std::uint16_t port, const std::string& request)
{
    TestClient client(port);
    client.send(request);
    return client.receive();
}

} // namespace nmos_instrument::host

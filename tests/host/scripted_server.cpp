// SPDX-License-Identifier: Apache-2.0

#include "scripted_server.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

void require(bool done, const char* what)
{
    if (!done)
        throw std::system_error(errno, std::generic_category(), what);
}

/// True if the headers are there, and as much of a body as they announce.
bool is_complete(const std::string& request)
{
    const std::size_t end = request.find("\r\n\r\n");
    if (end == std::string::npos)
        return false;
    const std::string name = "\r\nContent-Length: ";
    const std::size_t length = request.find(name);
    const std::size_t announced =
        length < end ? std::strtoul(request.c_str() + length + name.size(), nullptr, 10) : 0;
    return request.size() - end - 4 >= announced;
}

std::string read_request(int connection)
{
    std::string request;
    char bytes[4096];
    while (!is_complete(request)) {
        const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
        if (count <= 0)
            break;
        request.append(bytes, static_cast<std::size_t>(count));
    }
    return request;
}

void send_all(int connection, const std::string& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count =
            send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

} // namespace

ScriptedServer::ScriptedServer(std::string answer, Then then, const char* address)
    : answer_(std::move(answer)),
      then_(then),
      is_ipv6_(std::string(address).find(':') != std::string::npos),
      socket_(socket(is_ipv6_ ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* name = nullptr;
    require(getaddrinfo(address, "0", &hints, &name) == 0, "getaddrinfo");
    const bool bound = bind(socket_, name->ai_addr, name->ai_addrlen) == 0;
    freeaddrinfo(name);
    require(bound && listen(socket_, 100) == 0, "listen");
    sockaddr_storage own{};
    socklen_t length = sizeof own;
    require(getsockname(socket_, reinterpret_cast<sockaddr*>(&own), &length) == 0, "getsockname");
    // The port is at the same place in both.
    port_ = ntohs(reinterpret_cast<const sockaddr_in&>(own).sin_port);
    thread_ = std::thread([this] { serve(); });
}

ScriptedServer::~ScriptedServer()
{
    shutdown(socket_, SHUT_RDWR); // ends accept()
    thread_.join();
    close(socket_);
    for (const int connection : silent_)
        close(connection);
}

std::string ScriptedServer::url(const std::string& path) const
{
    const std::string host = is_ipv6_ ? "[::1]" : "127.0.0.1";
    return "http://" + host + ':' + std::to_string(port_) + path;
}

std::vector<std::string> ScriptedServer::requests(std::size_t count)
{
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, std::chrono::seconds(20), [&] { return requests_.size() >= count; });
    return requests_;
}

void ScriptedServer::serve()
{
    while (true) {
        const int connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            return;
        serve_one(connection);
    }
}

void ScriptedServer::serve_one(int connection)
{
    std::string request = read_request(connection);
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(std::move(request));
        arrived_.notify_all();
    }
    send_all(connection, answer_);
    if (then_ == Then::stays_silent) {
        silent_.push_back(connection);
        return;
    }
    shutdown(connection, SHUT_WR);
    char byte = 0;
    while (recv(connection, &byte, 1, 0) > 0) // an orderly end, not a reset
        continue;
    close(connection);
}

} // namespace nmos_instrument::host

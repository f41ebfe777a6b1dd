// SPDX-License-Identifier: Apache-2.0

#include "dns_test_server.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

constexpr std::size_t header_size = 12;

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Port 0: any free one. The port that it got, 0 if that is not free.
std::uint16_t bind_to(int socket, std::uint16_t port)
{
    sockaddr_in address = loopback(port);
    socklen_t size = sizeof address;
    if (bind(socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return 0;
    return ntohs(address.sin_port);
}

/// Behind the name of the question.
std::size_t end_of_question_name(const Bytes& query)
{
    return query.find('\0', header_size) + 1;
}

bool read_all(int socket, Bytes& bytes)
{
    return bytes.empty() || recv(socket, bytes.data(), bytes.size(), MSG_WAITALL) ==
                                static_cast<ssize_t>(bytes.size());
}

} // namespace

Bytes number16(unsigned number)
{
    return {static_cast<char>(number >> 8), static_cast<char>(number & 0xff)};
}

Bytes encoded_name(const std::string& name)
{
    Bytes encoded;
    std::size_t begin = 0;
    while (begin < name.size()) {
        const std::size_t end = std::min(name.find('.', begin), name.size());
        encoded += static_cast<char>(end - begin);
        encoded += name.substr(begin, end - begin);
        begin = end + 1;
    }
    return encoded + '\0';
}

Bytes record(unsigned type, std::uint32_t ttl, const Bytes& data, const Bytes& owner)
{
    return owner + number16(type) + number16(1) + number16(ttl >> 16) + number16(ttl & 0xffff) +
           number16(static_cast<unsigned>(data.size())) + data;
}

Bytes srv_data(unsigned port, const Bytes& encoded_host)
{
    return number16(0) + number16(0) + number16(port) + encoded_host;
}

Bytes txt_data(const std::vector<std::string>& strings)
{
    Bytes data;
    for (const std::string& string : strings)
        data += static_cast<char>(string.size()) + string;
    return data;
}

Bytes answer(const Bytes& query, const std::vector<Bytes>& records, unsigned flags)
{
    const std::size_t question_size = end_of_question_name(query) + 4 - header_size;
    Bytes message = query.substr(0, 2) + number16(flags) + number16(1) +
                    number16(static_cast<unsigned>(records.size())) + number16(0) + number16(0) +
                    query.substr(header_size, question_size);
    for (const Bytes& record : records)
        message += record;
    return message;
}

std::string question_name(const Bytes& query)
{
    std::string name;
    for (std::size_t at = header_size; query[at] != '\0';) {
        const std::size_t size = static_cast<unsigned char>(query[at]);
        name += (name.empty() ? "" : ".") + query.substr(at + 1, size);
        at += 1 + size;
    }
    return name;
}

unsigned question_type(const Bytes& query)
{
    return static_cast<unsigned char>(query[end_of_question_name(query) + 1]);
}

DnsTestServer::DnsTestServer(Respond respond) : respond_(std::move(respond))
{
    // A port that is free for both.
    for (int attempt = 0; attempt < 100 && port_ == 0; ++attempt) {
        close(udp_);
        close(tcp_);
        udp_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        tcp_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const std::uint16_t port = bind_to(udp_, 0);
        port_ = port == 0 ? port : bind_to(tcp_, port);
    }
    if (port_ == 0 || listen(tcp_, 100) != 0)
        throw std::system_error(errno, std::generic_category(), "no port for a name server");
    thread_ = std::thread([this] { run(); });
}

DnsTestServer::~DnsTestServer()
{
    ends_ = true;
    thread_.join();
    close(udp_);
    close(tcp_);
}

std::string DnsTestServer::address() const
{
    return "127.0.0.1:" + std::to_string(port_);
}

void DnsTestServer::respond_with(Respond respond)
{
    const std::lock_guard lock(mutex_);
    respond_ = std::move(respond);
}

std::vector<std::string> DnsTestServer::questions()
{
    const std::lock_guard lock(mutex_);
    return questions_;
}

void DnsTestServer::run()
{
    std::vector<int> connections;
    while (!ends_) {
        std::vector<pollfd> events = {{udp_, POLLIN, 0}, {tcp_, POLLIN, 0}};
        for (const int connection : connections)
            events.push_back({connection, POLLIN, 0});
        poll(events.data(), events.size(), 20);
        if (events[0].revents != 0)
            answer_datagram();
        if (events[1].revents != 0)
            connections.push_back(accept(tcp_, nullptr, nullptr));
        for (std::size_t i = 2; i < events.size(); ++i)
            if (events[i].revents != 0 && !answer_connection(events[i].fd)) {
                close(events[i].fd);
                std::erase(connections, events[i].fd);
            }
    }
    for (const int connection : connections)
        close(connection);
}

std::vector<Bytes> DnsTestServer::responses(const Bytes& query, Transport transport)
{
    const std::lock_guard lock(mutex_);
    questions_.push_back(question_name(query) + ' ' + std::to_string(question_type(query)));
    return respond_(query, transport);
}

void DnsTestServer::answer_datagram()
{
    sockaddr_in client{};
    socklen_t client_size = sizeof client;
    Bytes query(512, '\0');
    const ssize_t size = recvfrom(udp_, query.data(), query.size(), 0,
                                  reinterpret_cast<sockaddr*>(&client), &client_size);
    if (size < static_cast<ssize_t>(header_size))
        return;
    query.resize(static_cast<std::size_t>(size));
    for (const Bytes& response : responses(query, Transport::udp))
        sendto(udp_, response.data(), response.size(), 0, reinterpret_cast<sockaddr*>(&client),
               client_size);
}

/// RFC 1035 4.2.2: each message has its length in front. False if there is no more to come.
bool DnsTestServer::answer_connection(int connection)
{
    Bytes size(2, '\0');
    if (!read_all(connection, size))
        return false;
    Bytes query(static_cast<std::size_t>(static_cast<unsigned char>(size[0]) * 256 +
                                         static_cast<unsigned char>(size[1])),
                '\0');
    if (query.size() < header_size || !read_all(connection, query))
        return false;
    for (const Bytes& response : responses(query, Transport::tcp)) {
        const Bytes message = number16(static_cast<unsigned>(response.size())) + response;
        send(connection, message.data(), message.size(), MSG_NOSIGNAL);
    }
    return true;
}

} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// A name server on loopback whose answers are made byte by byte, and may be wrong in every way.

#ifndef NMOS_INSTRUMENT_TESTS_HOST_DNS_TEST_SERVER_H
#define NMOS_INSTRUMENT_TESTS_HOST_DNS_TEST_SERVER_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace nmos_instrument::host {

using Bytes = std::string;

Bytes number16(unsigned number);

/// "a.b" as labels; a label holds any bytes but a dot.
Bytes encoded_name(const std::string& name);

/// Of class IN.
Bytes record(unsigned type, std::uint32_t ttl, const Bytes& data, const Bytes& owner = "\xc0\x0c");

Bytes srv_data(unsigned port, const Bytes& encoded_host);

/// Each with its length in front.
Bytes txt_data(const std::vector<std::string>& strings);

/// An answer to `query`. `flags`: 0x8400 and a response code.
Bytes answer(const Bytes& query, const std::vector<Bytes>& records, unsigned flags = 0x8400);

constexpr unsigned no_such_name = 0x8403; // RFC 1035 4.1.1, RCODE 3
constexpr unsigned server_failure = 0x8402;
constexpr unsigned truncated = 0x8600;

/// The labels of the question as bytes with dots between, without decoding anything else.
std::string question_name(const Bytes& query);
unsigned question_type(const Bytes& query);

enum class Transport
{
    udp,
    tcp
};

class DnsTestServer
{
public:
    /// What is sent for a query; nothing is silence. Called on the server's thread.
    using Respond = std::function<std::vector<Bytes>(const Bytes& query, Transport transport)>;

    explicit DnsTestServer(Respond respond);
    ~DnsTestServer();

    DnsTestServer(const DnsTestServer&) = delete;
    DnsTestServer& operator=(const DnsTestServer&) = delete;

    /// "127.0.0.1:12345"
    std::string address() const;

    void respond_with(Respond respond);

    /// "name type" of the questions so far.
    std::vector<std::string> questions();

private:
    void run();
    std::vector<Bytes> responses(const Bytes& query, Transport transport);
    void answer_datagram();
    bool answer_connection(int connection);

    std::mutex mutex_;
    Respond respond_;
    std::vector<std::string> questions_;
    int udp_ = -1;
    int tcp_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

} // namespace nmos_instrument::host

#endif

// SPDX-License-Identifier: Apache-2.0
//
// An HTTP client of the tests that can misbehave: it sends bytes as they are given to it.

#ifndef NMOS_INSTRUMENT_TESTS_HOST_HTTP_TEST_CLIENT_H
#define NMOS_INSTRUMENT_TESTS_HOST_HTTP_TEST_CLIENT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nmos_instrument::host {

struct TestResponse
{
    int status = 0;
    std::map<std::string, std::string> headers; ///< names in lower case
    std::string body;

    std::string header(const std::string& name) const;
};

/// Throws std::system_error when it cannot connect. Every wait ends after `patience`. It connects to
/// 127.0.0.1, from ::1 to ::1.
class TestClient
{
public:
    static constexpr std::chrono::milliseconds patience{20'000};

    explicit TestClient(std::uint16_t port, const char* own_address = "127.0.0.1");
    ~TestClient();

    TestClient(TestClient&& other) noexcept;
    TestClient& operator=(TestClient&&) = delete;

    /// False once the server has closed its side.
    bool send(std::string_view bytes);

    /// No more bytes come from here, but an answer can still be read.
    void finish_sending();

    /// The next answer; nothing when the connection ends, or patience does, before it is complete.
    std::optional<TestResponse> receive();

    /// The headers only, as of an answer to HEAD.
    std::optional<TestResponse> receive_head();

    /// The next chunk of an answer whose head has been received; empty is the last one. Nothing when
    /// the connection ends, or patience does, before it is complete.
    std::optional<std::string> receive_chunk();

    /// Whether the server ends the connection, and within what time.
    bool is_closed_within(std::chrono::milliseconds time);

    /// What has been received and belongs to no answer yet.
    const std::string& rest() const { return received_; }

private:
    bool read_more(std::chrono::milliseconds time);
    bool read_until(std::size_t size);

    int socket_;
    std::string received_;
};

/// One request on a connection of its own.
std::optional<TestResponse> fetch(std::uint16_t port, const std::string& request);

} // namespace nmos_instrument::host

#endif

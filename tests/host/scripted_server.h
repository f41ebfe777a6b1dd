// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_HOST_SCRIPTED_SERVER_H
#define NMOS_INSTRUMENT_TESTS_HOST_SCRIPTED_SERVER_H

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace nmos_instrument::host {

/// A server of one's own bytes, whether they are HTTP or not, at a free port of loopback. It reads
/// a request with its body, sends its answer, and then closes the connection or stays silent.
class ScriptedServer
{
public:
    enum class Then
    {
        closes,
        stays_silent
    };

    explicit ScriptedServer(std::string answer, Then then = Then::closes,
                            const char* address = "127.0.0.1");
    ~ScriptedServer();

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t port() const { return port_; }

    /// "http://127.0.0.1:40000" and the path
    std::string url(const std::string& path) const;

    /// Every byte of them. Waits until there are `count`, but not for ever.
    std::vector<std::string> requests(std::size_t count);

private:
    void serve();
    void serve_one(int connection);

    const std::string answer_;
    const Then then_;
    const bool is_ipv6_;
    const int socket_;
    std::uint16_t port_ = 0;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::string> requests_;
    std::vector<int> silent_; ///< connections; used by the thread only, until it ends
    std::thread thread_;
};

} // namespace nmos_instrument::host

#endif

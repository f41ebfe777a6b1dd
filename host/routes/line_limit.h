// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_LINE_LIMIT_H
#define NMOS_INSTRUMENT_HOST_ROUTES_LINE_LIMIT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace nmos_instrument::host {

/// How many log lines one client may cause: 50 at once, then 10 per second. Each client has its own
/// count, so that one who repeats a mistake a thousand times does not hide the others. The owner
/// must lock.
class LineLimit
{
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr unsigned burst = 50;
    static constexpr unsigned lines_per_second = 10;

    /// Clients beyond this number share one count, under the name `others`: an attacker with many
    /// addresses takes neither memory nor the log.
    static constexpr std::size_t most_clients = 1024;
    static constexpr const char* others = "other clients";

    struct LeftOut
    {
        std::string client;
        std::uint64_t lines = 0;

        bool operator==(const LeftOut&) const = default;
    };

    /// True if `client` may have a line now. Otherwise it is counted as left out.
    bool allows(const std::string& client, Time now);

    /// The clients that may have lines again after some were left out, each once. Those that have
    /// been silent until all their lines were allowed again are forgotten.
    std::vector<LeftOut> take_left_out(Time now);

    /// All that was left out and not yet taken, whether or not lines are allowed again.
    std::vector<LeftOut> take_all_left_out();

private:
    struct Count
    {
        Time full_again; ///< when all lines are allowed again
        std::uint64_t left_out = 0;
    };

    static bool has_room(const Count& count, Time now);

    std::map<std::string, Count> clients_;
};

} // namespace nmos_instrument::host

#endif

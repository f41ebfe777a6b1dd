// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_CLIENT_PLACES_H
#define NMOS_INSTRUMENT_HOST_HTTP_CLIENT_PLACES_H

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace nmos_instrument::host {

/// A limited number of places, of which one client may take a few, so that none takes them all.
/// Not for several threads at once.
class ClientPlaces
{
public:
    ClientPlaces(std::size_t for_one, std::size_t for_all) : for_one_(for_one), for_all_(for_all) {}

    /// False if there is none left for this client.
    bool take(const std::string& client);

    /// Gives back one that the client has taken.
    void give_back(const std::string& client) noexcept;

private:
    std::size_t for_one_;
    std::size_t for_all_;
    std::size_t taken_ = 0;
    std::map<std::string, std::size_t> taken_by_;
};

/// Places for threads that ask a name server and cannot be stopped. One that is left behind keeps
/// its place for as long as the C library goes on asking: 30 seconds unless resolv.conf(5) says
/// otherwise (three servers, each asked twice for 5 seconds). So the places bound the threads.
class NameLookups
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    NameLookups(std::size_t for_one, std::size_t for_all);

    bool begin(const std::string& client, TimePoint now);
    void end(const std::string& client) noexcept { places_.give_back(client); }
    void leave_behind(std::string&& client, TimePoint now) noexcept;

private:
    struct LeftBehind
    {
        std::string client;
        TimePoint until;
    };

    ClientPlaces places_;
    std::vector<LeftBehind> left_behind_; ///< oldest first
};

} // namespace nmos_instrument::host

#endif

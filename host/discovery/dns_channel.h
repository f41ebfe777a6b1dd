// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_CHANNEL_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_CHANNEL_H

#include <chrono>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "discovery/dns_answer.h"
#include "discovery/stop_request.h"

struct ares_channeldata;

namespace nmos_instrument::host {

/// Questions to the machine's name servers, by c-ares; as many at once as there are. One thread.
class DnsChannel
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Answer
    {
        bool is_complete = false; ///< a server has answered, also that there is no such record
        DnsMessage message;       ///< empty: there is no such record. It lives as long as the call.
        std::string trouble;      ///< why it is not complete, for people
    };
    using Receive = std::function<void(const Answer&)>;

    /// Reads resolv.conf(5). `server`: one like "127.0.0.1:5300" instead of those in there. Throws
    /// std::runtime_error.
    explicit DnsChannel(const std::string& server);
    ~DnsChannel();

    DnsChannel(const DnsChannel&) = delete;
    DnsChannel& operator=(const DnsChannel&) = delete;

    /// Where resolv.conf says that names are to be searched.
    std::vector<std::string> search_domains() const;

    /// `receive` is called once, during ask() or run(); it may ask more.
    void ask(const std::string& name, DnsType type, Receive receive);

    /// Waits until all questions are answered. At `end`, or if it is asked to stop, the others are
    /// given up. Throws what a `receive` has thrown.
    void run(TimePoint end, const StopRequest& stop);

private:
    struct Question
    {
        DnsChannel& channel;
        Receive receive;
    };

    struct Destroy
    {
        void operator()(ares_channeldata* channel) const;
    };

    static void on_answer(void* question, int status, int timeouts, unsigned char* message,
                          int size);
    bool wait(TimePoint end, const StopRequest& stop);

    std::list<Question> questions_; ///< all that were asked; c-ares points at them
    std::exception_ptr failure_;    ///< the first of a `receive`
    std::unique_ptr<ares_channeldata, Destroy> channel_; ///< its end answers what is open
};

} // namespace nmos_instrument::host

#endif

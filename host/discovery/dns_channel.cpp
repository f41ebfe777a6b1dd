// SPDX-License-Identifier: Apache-2.0

#include "discovery/dns_channel.h"

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>

#include <ares.h>
#include <poll.h>
#include <sys/time.h>

namespace nmos_instrument::host {
namespace {

/// How long the first attempt at each server waits; the second waits twice as long, and so on. An
/// answer that comes later counts too.
constexpr int first_timeout_ms = 500;
constexpr int attempts = 3;

void require(int status)
{
    if (status == ARES_ENOMEM)
        throw std::bad_alloc();
    if (status != ARES_SUCCESS)
        throw std::runtime_error(ares_strerror(status));
}

/// c-ares needs this once in a process.
void initialise_cares()
{
    static const int result = ares_library_init(ARES_LIB_INIT_ALL);
    require(result);
}

ares_channel new_channel()
{
    initialise_cares();
    ares_options options{};
    options.timeout = first_timeout_ms;
    options.tries = attempts;
    ares_channel channel = nullptr;
    require(ares_init_options(&channel, &options, ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES));
    return channel;
}

DnsChannel::Answer answer_of(int status, const unsigned char* message, int size)
{
    switch (status) {
    case ARES_SUCCESS:
        return {true, DnsMessage(message, static_cast<std::size_t>(size)), ""};
    case ARES_ENODATA:
    case ARES_ENOTFOUND:
        return {true, {}, ""};
    case ARES_ECANCELLED:
        return {false, {}, "it takes too long"};
    default:
        return {false, {}, ares_strerror(status)};
    }
}

} // namespace

void DnsChannel::Destroy::operator()(ares_channeldata* channel) const
{
    ares_destroy(channel);
}

DnsChannel::DnsChannel(const std::string& server) : channel_(new_channel())
{
    if (!server.empty())
        require(ares_set_servers_ports_csv(channel_.get(), server.c_str()));
}

DnsChannel::~DnsChannel()
{
    // Whoever would receive what is still open may be gone.
    for (Question& question : questions_)
        question.receive = nullptr;
}

std::vector<std::string> DnsChannel::search_domains() const
{
    ares_options options{};
    int which = 0;
    const int status = ares_save_options(channel_.get(), &options, &which);
    const auto destroy = [](ares_options* saved) { ares_destroy_options(saved); };
    const std::unique_ptr<ares_options, decltype(destroy)> owner(&options, destroy);
    require(status);
    return {options.domains, options.domains + options.ndomains};
}

void DnsChannel::ask(const std::string& name, DnsType type, Receive receive)
{
    constexpr int class_in = 1;
    questions_.push_back({*this, std::move(receive)});
    ares_query(channel_.get(), name.c_str(), class_in, static_cast<int>(type), on_answer,
               &questions_.back());
}

void DnsChannel::on_answer(void* question, int status, int /*timeouts*/, unsigned char* message,
                           int size)
{
    Question& answered = *static_cast<Question*>(question);
    try {
        if (answered.receive)
            answered.receive(answer_of(status, message, size));
    } catch (...) {
        // C code does not let it through.
        if (!answered.channel.failure_)
            answered.channel.failure_ = std::current_exception();
    }
}

void DnsChannel::run(TimePoint end, const StopRequest& stop)
{
    while (!failure_ && wait(end, stop)) {}
    ares_cancel(channel_.get());
    if (failure_)
        std::rethrow_exception(failure_);
}

/// Until something happens to a question; false if there is nothing more to wait for.
bool DnsChannel::wait(TimePoint end, const StopRequest& stop)
{
    using namespace std::chrono;
    const auto left = ceil<milliseconds>(end - steady_clock::now());
    if (stop.is_made() || left <= milliseconds(0))
        return false;

    std::array<ares_socket_t, ARES_GETSOCK_MAXNUM> sockets{};
    const auto bits = static_cast<unsigned>(
        ares_getsock(channel_.get(), sockets.data(), static_cast<int>(sockets.size())));
    if (bits == 0)
        return false;
    std::array<pollfd, ARES_GETSOCK_MAXNUM + 1> events{};
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        const int readable = ARES_GETSOCK_READABLE(bits, i) ? POLLIN : 0;
        const int writable = ARES_GETSOCK_WRITABLE(bits, i) ? POLLOUT : 0;
        // A descriptor below 0 is not looked at.
        events[i] = {readable || writable ? sockets[i] : -1,
                     static_cast<short>(readable | writable), 0};
    }
    events.back() = {stop.descriptor(), POLLIN, 0};

    timeval longest{static_cast<time_t>(left.count() / 1000),
                    static_cast<suseconds_t>(left.count() % 1000 * 1000)};
    timeval next{};
    const timeval* const limit = ares_timeout(channel_.get(), &longest, &next);
    poll(events.data(), events.size(),
         static_cast<int>(limit->tv_sec * 1000 + (limit->tv_usec + 999) / 1000));
    for (std::size_t i = 0; i < sockets.size(); ++i)
        if (events[i].revents != 0)
            ares_process_fd(channel_.get(), sockets[i], sockets[i]);
    // Without a socket it looks for questions that have waited long enough.
    ares_process_fd(channel_.get(), ARES_SOCKET_BAD, ARES_SOCKET_BAD);
    return true;
}

} // namespace nmos_instrument::host

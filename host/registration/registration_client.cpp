// SPDX-License-Identifier: Apache-2.0

#include "registration/registration_client.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "registration/registration.h"

namespace nmos_instrument::host {
namespace {

/// When there is no memory for a timer.
constexpr std::chrono::milliseconds pause_without_memory{10};

std::function<double()> random_numbers()
{
    return [engine = std::minstd_rand(std::random_device()())]() mutable {
        return std::uniform_real_distribution<>(0.0, 1.0)(engine);
    };
}

} // namespace

/// Gives the registration its answers and its time. What is to be called later keeps it alive, but
/// once the client is gone it does nothing.
class RegistrationClient::Driver : public std::enable_shared_from_this<Driver>
{
public:
    Driver(HttpClient& client, RegistrySource& source, Instrument& instrument, Options options,
           Log log)
        : client_(client),
          source_(source),
          log_(std::move(log)),
          registration_(instrument, surroundings(std::move(options)), log_)
    {}

    void start()
    {
        source_.listen([self = weak_from_this()](const std::vector<Registry>& registries) {
            const std::shared_ptr<Driver> driver = self.lock();
            if (driver)
                driver->run(
                    [registries](Registration& registration) { registration.found(registries); });
            return driver != nullptr;
        });
        run([](Registration& registration) { registration.start(); });
    }

    void changed() noexcept
    {
        if (has_changes_.exchange(true))
            return;
        try {
            run([](Registration&) {});
        } catch (const std::bad_alloc&) {
            return; // the next step sees it
        }
    }

    void leave()
    {
        try {
            run([](Registration& registration) { registration.stop(); });
        } catch (const std::bad_alloc&) {
            return; // the registry forgets the node by itself
        }
        std::unique_lock lock(mutex_);
        stepped_.wait_for(lock, Registration::stop_limit + std::chrono::milliseconds(100),
                          [this] { return registration_.has_ended(); });
    }

    void end()
    {
        const std::lock_guard lock(mutex_);
        has_ended_ = true;
    }

    RegistrationStatus status() const
    {
        const std::lock_guard lock(mutex_);
        return registration_.status();
    }

private:
    Registration::Surroundings surroundings(Options options)
    {
        return {
            .now = [] { return std::chrono::steady_clock::now(); },
            .random = random_numbers(),
            .send =
                [this](ClientRequest request, HttpClient::Receive receive) {
                    client_.send(std::move(request),
                                 [self = weak_from_this(),
                                  receive = std::move(receive)](const ClientAnswer& answer) {
                                     if (const auto driver = self.lock())
                                         driver->step([&](Registration&) { receive(answer); });
                                 });
                },
            .search = [this] { wants_search_ = true; },
            .has_registry =
                [has_registry = std::move(options.has_registry)](bool yes) {
                    if (has_registry)
                        has_registry(yes);
                },
            .ca_file = std::move(options.ca_file),
        };
    }

    /// Calls `what` with the registration, on the client's thread.
    template <class What>
    void run(What what)
    {
        client_.run([self = weak_from_this(), what = std::move(what)] {
            if (const auto driver = self.lock())
                driver->step(what);
        });
    }

    /// On the client's thread.
    template <class What>
    void step(const What& what)
    {
        std::optional<Registration::TimePoint> due;
        {
            const std::lock_guard lock(mutex_);
            if (has_ended_)
                return;
            try {
                if (has_changes_.exchange(false))
                    registration_.changed();
                what(registration_);
            } catch (const std::exception& error) {
                registration_.begin_again();
                log_.error("registration: {}", error.what());
            }
            due = registration_.next_due();
        }
        stepped_.notify_all();
        set_timer(due);
        search();
    }

    void search()
    {
        // Under the lock, because the source may go away after end(). What it calls back at once waits
        // for the next step.
        const std::lock_guard lock(mutex_);
        if (std::exchange(wants_search_, false) && !has_ended_)
            source_.search();
    }

    /// Only the last one counts: those before it do nothing. While there is no memory for it, others
    /// may ask for the status, or end the program.
    void set_timer(std::optional<Registration::TimePoint> due)
    {
        if (due == timer_due_)
            return;
        timer_due_ = due;
        ++timer_;
        if (!due)
            return;
        while (!has_ended()) {
            try {
                client_.run_at(*due, [self = weak_from_this(), number = timer_] {
                    if (const auto driver = self.lock())
                        driver->ring(number);
                });
                return;
            } catch (const std::bad_alloc&) {
                std::this_thread::sleep_for(pause_without_memory);
            }
        }
    }

    void ring(std::uint64_t number)
    {
        step([this, number](Registration& registration) {
            if (number != timer_)
                return;
            timer_due_.reset();
            registration.look();
        });
    }

    bool has_ended() const
    {
        const std::lock_guard lock(mutex_);
        return has_ended_;
    }

    HttpClient& client_;
    RegistrySource& source_;
    const Log log_;
    // The timer is the client's thread's own.
    std::optional<Registration::TimePoint> timer_due_;
    std::uint64_t timer_ = 0; ///< the number of the last one
    std::atomic<bool> has_changes_{false};

    mutable std::mutex mutex_;
    std::condition_variable stepped_;
    Registration registration_;
    bool wants_search_ = false;
    bool has_ended_ = false;
};

RegistrationClient::RegistrationClient(HttpClient& client, RegistrySource& source,
                                       Instrument& instrument, Options options, Log log)
    : driver_(
          std::make_shared<Driver>(client, source, instrument, std::move(options), std::move(log)))
{}

RegistrationClient::~RegistrationClient()
{
    driver_->end();
}

void RegistrationClient::start()
{
    driver_->start();
}

void RegistrationClient::changed() noexcept
{
    driver_->changed();
}

void RegistrationClient::leave()
{
    driver_->leave();
}

RegistrationStatus RegistrationClient::status() const
{
    return driver_->status();
}

} // namespace nmos_instrument::host

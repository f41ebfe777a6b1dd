// SPDX-License-Identifier: Apache-2.0

#include "discovery/avahi_session.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

#include <avahi-common/address.h>
#include <avahi-common/error.h>
#include <avahi-common/malloc.h>
#include <avahi-common/watch.h>

namespace nmos_instrument::host {
namespace {

/// IS-04 v1.2, Discovery: mDNS is for this domain.
constexpr const char* mdns_domain = "local";

/// One instance may be heard on several interfaces, by IPv4 and by IPv6.
constexpr std::size_t most_resolvers = 4 * most_instances;

constexpr std::chrono::milliseconds patience_for_daemon{60'000};

/// avahi's own functions end the process when there is no memory; those of the C library say so. Once
/// in a process.
void use_patient_allocator()
{
    static const AvahiAllocator allocator{std::malloc, std::free, std::realloc, std::calloc};
    static const bool is_used = [] {
        avahi_set_allocator(&allocator);
        return true;
    }();
    static_cast<void>(is_used);
}

AvahiSimplePoll* new_poll()
{
    use_patient_allocator();
    AvahiSimplePoll* const poll = avahi_simple_poll_new();
    if (poll == nullptr)
        throw std::bad_alloc();
    return poll;
}

[[noreturn]] void fail(int error)
{
    if (error == AVAHI_ERR_NO_MEMORY)
        throw std::bad_alloc();
    throw std::runtime_error(avahi_strerror(error));
}

TxtStrings strings_of(const AvahiStringList* list)
{
    TxtStrings strings;
    for (; list != nullptr; list = list->next)
        strings.emplace_back(reinterpret_cast<const char*>(list->text), list->size);
    return strings;
}

std::string text_of(const AvahiAddress& address)
{
    char text[AVAHI_ADDRESS_STR_MAX];
    avahi_address_snprint(text, sizeof text, &address);
    return text;
}

} // namespace

AvahiSession::AvahiSession(const StopRequest& stop, Log log)
    : log_(std::move(log)), poll_(new_poll())
{
    const AvahiPoll* const poll = avahi_simple_poll_get(poll_.get());
    // That it wakes the loop is all.
    const auto nothing = [](AvahiWatch*, int, AvahiWatchEvent, void*) {};
    if (poll->watch_new(poll, stop.descriptor(), AVAHI_WATCH_IN, nothing, nullptr) == nullptr)
        throw std::bad_alloc();
    int error = AVAHI_OK;
    client_.reset(avahi_client_new(poll, AVAHI_CLIENT_NO_FAIL, on_client, this, &error));
    if (failure_)
        std::rethrow_exception(failure_);
    if (client_ == nullptr)
        fail(error);
}

void AvahiSession::wait()
{
    const int longest = has_daemon() ? -1 : static_cast<int>(patience_for_daemon.count());
    if (avahi_simple_poll_iterate(poll_.get(), longest) != 0)
        throw std::runtime_error("its events cannot be waited for");
    if (failure_)
        std::rethrow_exception(failure_);
    if (too_many_ && instances_.size() < most_resolvers / 2) {
        // Those that were not looked at are told of again.
        forget_all();
        browse(client_.get());
    }
}

bool AvahiSession::is_stale() const
{
    return !has_daemon() && std::chrono::steady_clock::now() >= start_ + patience_for_daemon;
}

bool AvahiSession::has_looked() const
{
    return all_for_now_ && std::all_of(instances_.begin(), instances_.end(),
                                       [](const auto& entry) { return entry.second.answered; });
}

std::vector<AdvertisedRegistry> AvahiSession::found() const
{
    std::vector<AdvertisedRegistry> found;
    for (const auto& [key, instance] : instances_)
        if (instance.registry)
            found.push_back(*instance.registry);
    return found;
}

/// C code does not let exceptions through.
template <class Step>
void AvahiSession::keep_failure(const Step& step) noexcept
{
    try {
        step();
    } catch (...) {
        if (!failure_)
            failure_ = std::current_exception();
    }
}

void AvahiSession::on_client(AvahiClient* client, AvahiClientState state, void* session)
{
    auto& self = *static_cast<AvahiSession*>(session);
    self.keep_failure([&] {
        switch (state) {
        case AVAHI_CLIENT_S_REGISTERING:
        case AVAHI_CLIENT_S_RUNNING:
        case AVAHI_CLIENT_S_COLLISION:
            // The states are about the name of this machine; one may browse in each.
            if (self.browser_ == nullptr)
                self.browse(client);
            break;
        case AVAHI_CLIENT_FAILURE:
            fail(avahi_client_errno(client));
        case AVAHI_CLIENT_CONNECTING:
            self.forget_all();
            break;
        }
    });
}

void AvahiSession::browse(AvahiClient* client)
{
    browser_ =
        avahi_service_browser_new(client, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, registration_service,
                                  mdns_domain, AvahiLookupFlags{}, on_browser, this);
    if (browser_ == nullptr)
        fail(avahi_client_errno(client));
}

void AvahiSession::forget_all()
{
    for (auto& [key, instance] : instances_)
        avahi_service_resolver_free(instance.resolver);
    instances_.clear();
    if (browser_ != nullptr)
        avahi_service_browser_free(browser_);
    browser_ = nullptr;
    all_for_now_ = false;
    too_many_ = false;
}

void AvahiSession::on_browser(AvahiServiceBrowser* browser, AvahiIfIndex interface,
                              AvahiProtocol protocol, AvahiBrowserEvent event, const char* name,
                              const char* type, const char* domain,
                              AvahiLookupResultFlags /*flags*/, void* session)
{
    auto& self = *static_cast<AvahiSession*>(session);
    self.keep_failure([&] {
        AvahiClient* const client = avahi_service_browser_get_client(browser);
        switch (event) {
        case AVAHI_BROWSER_NEW:
            self.add(client, Key(interface, protocol, name, domain), type);
            break;
        case AVAHI_BROWSER_REMOVE:
            self.remove(Key(interface, protocol, name, domain));
            break;
        case AVAHI_BROWSER_ALL_FOR_NOW:
            self.all_for_now_ = true;
            break;
        case AVAHI_BROWSER_CACHE_EXHAUSTED:
            break;
        case AVAHI_BROWSER_FAILURE:
            fail(avahi_client_errno(client));
        }
    });
}

void AvahiSession::add(AvahiClient* client, const Key& key, const char* type)
{
    if (instances_.size() == most_resolvers) {
        if (!too_many_)
            log_.warning("mDNS: there are more than {} registries; the others are not looked at",
                         most_resolvers);
        too_many_ = true;
        return;
    }
    const auto [entry, is_new] = instances_.try_emplace(key, Instance{*this});
    if (!is_new)
        return;
    const auto& [interface, protocol, name, domain] = key;
    // Addresses of the other protocol are asked for by the other protocol.
    entry->second.resolver =
        avahi_service_resolver_new(client, interface, protocol, name.c_str(), type, domain.c_str(),
                                   protocol, AvahiLookupFlags{}, on_resolver, &entry->second);
    if (entry->second.resolver == nullptr) {
        instances_.erase(entry);
        fail(avahi_client_errno(client));
    }
}

void AvahiSession::remove(const Key& key)
{
    const auto entry = instances_.find(key);
    if (entry == instances_.end())
        return;
    avahi_service_resolver_free(entry->second.resolver);
    instances_.erase(entry);
}

void AvahiSession::on_resolver(AvahiServiceResolver* /*resolver*/, AvahiIfIndex /*interface*/,
                               AvahiProtocol /*protocol*/, AvahiResolverEvent event,
                               const char* name, const char* /*type*/, const char* /*domain*/,
                               const char* host, const AvahiAddress* address, std::uint16_t port,
                               AvahiStringList* txt, AvahiLookupResultFlags /*flags*/,
                               void* instance)
{
    auto& self = *static_cast<Instance*>(instance);
    self.session.keep_failure([&] {
        self.answered = true;
        self.registry.reset();
        // After a failure it goes on looking.
        if (event == AVAHI_RESOLVER_FOUND)
            self.registry =
                AdvertisedRegistry{name, host, text_of(*address), port, strings_of(txt), "mDNS"};
    });
}

} // namespace nmos_instrument::host

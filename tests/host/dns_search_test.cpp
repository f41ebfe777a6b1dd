// SPDX-License-Identifier: Apache-2.0

#include "discovery/dns_search.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "dns_test_server.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Clock = DnsSearch::Clock;
using Responses = std::vector<Bytes>;
using Strings = std::vector<std::string>;

constexpr unsigned a = 1;
constexpr unsigned ptr = 12;
constexpr unsigned txt = 16;
constexpr unsigned aaaa = 28;
constexpr unsigned srv = 33;

const std::string service = "_nmos-registration._tcp.example.com";
const Bytes ipv4("\xc0\x00\x02\x01", 4); // 192.0.2.1
const Strings txt_strings = {"api_proto=http", "api_ver=v1.2", "pri=10"};

/// The zone of one registry: "Registry 1" on reg1.example.com:8080, 192.0.2.1. `ttl` of its SRV
/// record; the others live longer.
Responses one_registry(const Bytes& query, std::uint32_t ttl = 120)
{
    switch (question_type(query)) {
    case ptr:
        return {answer(query, {record(ptr, 3600, encoded_name("Registry 1." + service))})};
    case srv:
        return {
            answer(query, {record(srv, ttl, srv_data(8080, encoded_name("reg1.example.com")))})};
    case txt:
        return {answer(query, {record(txt, 3600, txt_data(txt_strings))})};
    case a:
        return {answer(query, {record(a, 3600, ipv4)})};
    default:
        return {answer(query, {})};
    }
}

const AdvertisedRegistry registry_1{.name = "Registry 1",
                                    .host = "reg1.example.com",
                                    .address = "192.0.2.1",
                                    .port = 8080,
                                    .txt = txt_strings,
                                    .origin = "DNS-SD in example.com"};

Responses silence(const Bytes&, Transport)
{
    return {};
}

using Found = std::vector<AdvertisedRegistry>;

/// A search among the answers of a server.
struct Searched
{
    explicit Searched(DnsTestServer::Respond respond)
        : server(std::move(respond)), search("example.com", Log(), server.address())
    {}

    Found find() { return search.search(stop); }

    DnsTestServer server;
    StopRequest stop;
    DnsSearch search;
};

TEST(DnsSearch, FindsARegistry)
{
    Searched searched([](const Bytes& query, Transport) { return one_registry(query); });
    EXPECT_EQ(searched.find(), Found{registry_1});
    Strings questions = searched.server.questions();
    std::sort(questions.begin(), questions.end());
    EXPECT_EQ(questions, (Strings{"Registry 1." + service + " 16", "Registry 1." + service + " 33",
                                  service + " 12", "reg1.example.com 1", "reg1.example.com 28"}));
}

TEST(DnsSearch, ADotBehindTheDomainIsNoDifference)
{
    DnsTestServer server([](const Bytes& query, Transport) { return one_registry(query); });
    DnsSearch search("example.com.", Log(), server.address());
    EXPECT_EQ(search.search(StopRequest()), Found{registry_1});
}

TEST(DnsSearch, TheNextIsDueWhenTheShortestTimeToLiveHasPassed)
{
    struct
    {
        std::uint32_t ttl;
        std::chrono::seconds due;
    } const rows[] = {{0, 10s}, {120, 120s}, {0x80000000, 10s}};
    for (const auto& row : rows) {
        Searched searched(
            [&](const Bytes& query, Transport) { return one_registry(query, row.ttl); });
        const auto before = Clock::now();
        searched.find();
        EXPECT_GE(searched.search.next(), before + row.due);
        EXPECT_LE(searched.search.next(), Clock::now() + row.due);
    }
}

TEST(DnsSearch, ALongTimeToLiveEndsAfterAnHour)
{
    Searched searched([](const Bytes& query, Transport) {
        Responses responses = one_registry(query, 0x7fffffff);
        // The records that live for an hour shall live longer.
        const Bytes hour = number16(0) + number16(3600);
        if (const std::size_t at = responses[0].find(hour); at != Bytes::npos)
            responses[0].replace(at, hour.size(), Bytes("\x7f\xff\xff\xff", 4));
        return responses;
    });
    const auto before = Clock::now();
    EXPECT_EQ(searched.find(), Found{registry_1});
    EXPECT_GE(searched.search.next(), before + 1h);
    EXPECT_LE(searched.search.next(), Clock::now() + 1h);
}

TEST(DnsSearch, NoRegistryIsAnAnswer)
{
    for (const unsigned flags : {no_such_name, 0x8400u}) {
        Searched searched(
            [flags](const Bytes& query, Transport) { return Responses{answer(query, {}, flags)}; });
        const auto before = Clock::now();
        EXPECT_EQ(searched.find(), Found());
        EXPECT_LT(Clock::now() - before, 2s);
        EXPECT_EQ(searched.server.questions().size(), 1u);
        EXPECT_GE(searched.search.next(), before + 60s);
    }
}

TEST(DnsSearch, ARegistryThatIsGoneIsGone)
{
    Searched searched([](const Bytes& query, Transport) { return one_registry(query); });
    EXPECT_EQ(searched.find(), Found{registry_1});
    searched.server.respond_with(
        [](const Bytes& query, Transport) { return Responses{answer(query, {}, no_such_name)}; });
    EXPECT_EQ(searched.find(), Found());
}

TEST(DnsSearch, ASilentServerTakesThreeSecondsAndNothingAway)
{
    Searched searched([](const Bytes& query, Transport) { return one_registry(query); });
    EXPECT_EQ(searched.find(), Found{registry_1});
    searched.server.respond_with(silence);
    const auto before = Clock::now();
    EXPECT_EQ(searched.find(), Found{registry_1});
    EXPECT_LT(Clock::now() - before, 5s);
    EXPECT_LE(searched.search.next(), before + 120s);
}

TEST(DnsSearch, ServersThatFailTakeNothingAwayEither)
{
    Searched searched([](const Bytes& query, Transport) { return one_registry(query); });
    EXPECT_EQ(searched.find(), Found{registry_1});
    searched.server.respond_with(
        [](const Bytes& query, Transport) { return Responses{answer(query, {}, server_failure)}; });
    EXPECT_EQ(searched.find(), Found{registry_1});
}

TEST(DnsSearch, AServerThatIsNotThereIsNoHarm)
{
    std::string address;
    {
        const DnsTestServer server(silence);
        address = server.address();
    }
    DnsSearch search("example.com", Log(), address);
    EXPECT_EQ(search.search(StopRequest()), Found());
}

TEST(DnsSearch, StopsAtOnce)
{
    Searched searched(silence);
    std::thread stopping([&] {
        std::this_thread::sleep_for(100ms);
        searched.stop.make();
    });
    const auto before = Clock::now();
    EXPECT_EQ(searched.find(), Found());
    EXPECT_LT(Clock::now() - before, 1s);
    stopping.join();
    EXPECT_EQ(searched.find(), Found());
    EXPECT_LT(Clock::now() - before, 1s);
}

TEST(DnsSearch, ATruncatedAnswerIsAskedForByTcp)
{
    Searched searched([](const Bytes& query, Transport transport) {
        return transport == Transport::tcp ? one_registry(query)
                                           : Responses{answer(query, {}, truncated)};
    });
    EXPECT_EQ(searched.find(), Found{registry_1});
}

TEST(DnsSearch, WhatIsNoAnswerIsIgnored)
{
    Searched searched([](const Bytes& query, Transport) {
        Bytes other_id = one_registry(query)[0];
        other_id[0] = static_cast<char>(~other_id[0]);
        Bytes other_question = answer(query, {record(ptr, 1, encoded_name("Other." + service))});
        other_question[13] ^= 1;
        Responses responses = {"",       "x",           Bytes(11, '\xff'), Bytes(512, '\xff'),
                               other_id, other_question};
        responses.push_back(one_registry(query)[0]);
        return responses;
    });
    EXPECT_EQ(searched.find(), Found{registry_1});
}

/// The name of the registry if it was found, and whatever else is found.
Strings names_of(const Found& found)
{
    Strings names;
    for (const AdvertisedRegistry& one : found)
        names.push_back(one.name);
    return names;
}

TEST(DnsSearch, InstancesThatMakeNoSenseAreLeftOut)
{
    Searched searched([](const Bytes& query, Transport) {
        if (question_type(query) != ptr)
            return one_registry(query);
        const std::size_t begin = answer(query, {record(ptr, 1, "")}).size();
        const Bytes itself = number16(0xc000 + static_cast<unsigned>(begin));
        return Responses{answer(query, {record(ptr, 1, itself), record(ptr, 1, Bytes(1, '\0')),
                                        record(ptr, 1, "\3ab"), record(ptr, 1, ""),
                                        record(ptr, 1, encoded_name("Registry 1." + service)),
                                        record(ptr, 1, encoded_name("Registry 1." + service)),
                                        record(a, 1, ipv4), record(16, 1, "\xff")})};
    });
    EXPECT_EQ(names_of(searched.find()), Strings{"Registry 1"});
}

TEST(DnsSearch, InstancesWithoutRecordsHaveNoHost)
{
    Searched searched([](const Bytes& query, Transport) {
        return question_type(query) == ptr ? one_registry(query)
                                           : Responses{answer(query, {}, no_such_name)};
    });
    EXPECT_EQ(searched.find(),
              Found{(AdvertisedRegistry{.name = "Registry 1", .origin = "DNS-SD in example.com"})});
}

/// One registry whose host has these A records.
DnsTestServer::Respond with_addresses(const std::vector<Bytes>& records)
{
    return [records](const Bytes& query, Transport) {
        return question_type(query) == a ? Responses{answer(query, records)} : one_registry(query);
    };
}

TEST(DnsSearch, AHostMayHaveNoAddressAndManyAddresses)
{
    Searched searched(with_addresses({}));
    const Found none = searched.find();
    ASSERT_EQ(none.size(), 1u);
    EXPECT_EQ(none[0].address, "");

    std::vector<Bytes> records = {record(a, 1, ipv4), record(a, 1, ipv4), record(a, 1, "\x7f"),
                                  record(a, 1, "\xc6\x33\x64\x01")};
    searched.server.respond_with(with_addresses(records));
    const Found two = searched.find();
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[0].address, "192.0.2.1");
    EXPECT_EQ(two[1].address, "198.51.100.1");

    for (char last = 2; last < 50; ++last)
        records.push_back(record(a, 1, Bytes("\xc6\x33\x64", 3) + last));
    searched.server.respond_with(with_addresses(records));
    EXPECT_EQ(searched.find().size(), 8u);
}

TEST(DnsSearch, AnIpv6AddressIsEnough)
{
    const Bytes ipv6("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01", 16);
    Searched searched([&](const Bytes& query, Transport) {
        switch (question_type(query)) {
        case a:
            return Responses{answer(query, {}, server_failure)};
        case aaaa:
            return Responses{answer(query, {record(aaaa, 1, ipv6)})};
        default:
            return one_registry(query);
        }
    });
    const Found found = searched.find();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].address, "2001:db8::1");
}

TEST(DnsSearch, NamesMayHaveAnyBytes)
{
    // Dots, backslashes and UTF-8 in a name are asked for as they are (RFC 6763 4.1.1).
    const Bytes label = "Reg. \xc3\xa4\\1";
    Searched searched([&](const Bytes& query, Transport) {
        if (question_type(query) != ptr)
            return one_registry(query);
        const Bytes name = static_cast<char>(label.size()) + label + "\xc0\x0c";
        return Responses{
            answer(query, {record(ptr, 60, name), record(ptr, 60, Bytes("\2a\0\xc0\x0c", 5))})};
    });
    const Found found = searched.find();
    EXPECT_EQ(names_of(found), Strings{label});
    const Strings questions = searched.server.questions();
    EXPECT_EQ(std::count(questions.begin(), questions.end(), label + '.' + service + " 33"), 1);
}

TEST(DnsSearch, NotMoreThan64InstancesAreLookedAt)
{
    Searched searched([](const Bytes& query, Transport transport) {
        if (question_type(query) != ptr)
            return one_registry(query);
        if (transport == Transport::udp)
            return Responses{answer(query, {}, truncated)};
        std::vector<Bytes> thousand(1000);
        for (std::size_t i = 0; i < thousand.size(); ++i)
            thousand[i] = record(ptr, 60, encoded_name(std::to_string(i) + '.' + service));
        return Responses{answer(query, thousand)};
    });
    const Found found = searched.find();
    ASSERT_EQ(found.size(), 64u);
    EXPECT_EQ(found[63].name, "63");
    EXPECT_EQ(searched.server.questions().size(), 2u + 4u * 64u);
}

TEST(DnsSearch, ATxtRecordMayBeHuge)
{
    Searched searched([](const Bytes& query, Transport transport) {
        if (question_type(query) != txt)
            return one_registry(query);
        if (transport == Transport::udp)
            return Responses{answer(query, {}, truncated)};
        Strings strings = txt_strings;
        while (strings.size() < 250)
            strings.emplace_back(255, 'x');
        return Responses{answer(query, {record(txt, 60, txt_data(strings))})};
    });
    const Found found = searched.find();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].txt.size(), 250u);
    EXPECT_EQ(found[0].txt[2], "pri=10");
}

TEST(DnsSearch, ADomainThatIsNoNameIsNoHarm)
{
    const DnsTestServer server(silence);
    for (const std::string& domain :
         {std::string("a..b"), std::string(64, 'a'), std::string(300, '.'), std::string(".")}) {
        DnsSearch search(domain, Log(), server.address());
        EXPECT_EQ(search.search(StopRequest()), Found()) << domain;
    }
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "discovery/dns_answer.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "dns_test_server.h"

namespace nmos_instrument::host {
namespace {

using Strings = std::vector<std::string>;

DnsMessage message_of(const Bytes& bytes)
{
    return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()};
}

/// A query for "x" of type 255, which only `answer` looks at.
const Bytes query = Bytes(12, '\0') + encoded_name("x") + number16(255) + number16(1);

/// Of the first record of the type.
template <class Read>
auto first(const Bytes& bytes, DnsType type, const Read& read)
{
    const DnsMessage message = message_of(bytes);
    const auto records = dns_records(message, type);
    return records.empty() ? decltype(read(message, DnsRecord()))() : read(message, records[0]);
}

const Bytes five_records =
    answer(query, {record(12, 60, encoded_name("Registry 1._nmos-registration._tcp.example.com")),
                   record(33, 0x7fffffff, srv_data(8080, encoded_name("reg1.example.com"))),
                   record(16, 0x80000000, txt_data({"api_ver=v1.2", "", "pri=1"})),
                   record(1, 0, Bytes("\xc0\x00\x02\x01", 4)),
                   record(28, 1, Bytes("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01", 16))});

TEST(DnsAnswer, OneRecordOfEachType)
{
    EXPECT_EQ(first(five_records, DnsType::ptr, dns_name),
              "Registry 1._nmos-registration._tcp.example.com");
    const auto service = first(five_records, DnsType::srv, dns_service);
    ASSERT_TRUE(service);
    EXPECT_EQ(service->port, 8080);
    EXPECT_EQ(service->host, "reg1.example.com");
    EXPECT_EQ(first(five_records, DnsType::txt, dns_strings), (Strings{"api_ver=v1.2", "pri=1"}));
    EXPECT_EQ(first(five_records, DnsType::a, dns_address), "192.0.2.1");
    EXPECT_EQ(first(five_records, DnsType::aaaa, dns_address), "2001:db8::1");
}

TEST(DnsAnswer, TimesToLive)
{
    const auto ttl = [](DnsType type) {
        return dns_records(message_of(five_records), type).at(0).ttl;
    };
    EXPECT_EQ(ttl(DnsType::ptr), 60u);
    EXPECT_EQ(ttl(DnsType::srv), 0x7fffffffu);
    EXPECT_EQ(ttl(DnsType::txt), 0u); // RFC 2181 8
    EXPECT_EQ(ttl(DnsType::a), 0u);
    EXPECT_EQ(ttl(DnsType::aaaa), 1u);
}

TEST(DnsAnswer, OnlyWholeRecordsOfClassInAreThere)
{
    const Bytes chaos = Bytes("\xc0\x0c", 2) + number16(1) + number16(3) + number16(0) +
                        number16(0) + number16(4) + Bytes(4, '\1');
    const Bytes bytes = answer(query, {chaos, record(1, 0, Bytes("\x0a\x00\x00\x01", 4))});
    EXPECT_EQ(dns_records(message_of(bytes), DnsType::a).size(), 1u);
    EXPECT_EQ(first(bytes, DnsType::a, dns_address), "10.0.0.1");
    EXPECT_TRUE(dns_records(message_of(bytes.substr(0, bytes.size() - 1)), DnsType::a).empty());
}

TEST(DnsAnswer, ACutMessageHasTheRecordsBeforeTheCut)
{
    constexpr DnsType types[] = {DnsType::ptr, DnsType::srv, DnsType::txt, DnsType::a,
                                 DnsType::aaaa};
    std::size_t most = 0;
    for (std::size_t size = 0; size <= five_records.size(); ++size) {
        // Memory of this size, so that a sanitizer sees a byte too far.
        const std::vector<unsigned char> cut(five_records.begin(),
                                             five_records.begin() + static_cast<long>(size));
        std::size_t count = 0;
        for (const DnsType type : types)
            count += dns_records(cut, type).size();
        EXPECT_GE(count, most);
        most = count;
    }
    EXPECT_EQ(most, 5u);
}

TEST(DnsAnswer, AnyByteMayBeWrong)
{
    for (std::size_t at = 0; at < five_records.size(); ++at)
        for (const int wrong : {0x00, 0x01, 0x3f, 0x40, 0xbf, 0xc0, 0xff}) {
            std::vector<unsigned char> bytes(five_records.begin(), five_records.end());
            bytes[at] = static_cast<unsigned char>(wrong);
            for (const DnsType type :
                 {DnsType::ptr, DnsType::srv, DnsType::txt, DnsType::a, DnsType::aaaa})
                for (const DnsRecord& record : dns_records(bytes, type)) {
                    ASSERT_LE(record.position + record.size, bytes.size());
                    dns_name(bytes, record);
                    dns_service(bytes, record);
                    dns_strings(bytes, record);
                    dns_address(bytes, record);
                }
        }
}

TEST(DnsAnswer, NamesThatDoNotFitAreNone)
{
    const auto name = [](const Bytes& data) {
        return first(answer(query, {record(12, 0, data)}), DnsType::ptr, dns_name);
    };
    EXPECT_EQ(name(Bytes("\3abc\0", 5)), "abc");
    EXPECT_EQ(name(Bytes("\3abc\xc0\x0c", 6)), "abc.x");
    EXPECT_EQ(name(Bytes("\0", 1)), "");
    EXPECT_EQ(name(""), std::nullopt);
    EXPECT_EQ(name("\3abc"), std::nullopt);
    EXPECT_EQ(name("\xc0"), std::nullopt);
    EXPECT_EQ(name("\xff\xff"), std::nullopt);
    EXPECT_EQ(name("\xc0\x1f"), std::nullopt);                               // to itself
    EXPECT_EQ(name("\1a\xc0\x1f"), std::nullopt);                            // to its begin
    EXPECT_EQ(name(Bytes("\x40", 1) + Bytes(64, 'a') + '\0'), std::nullopt); // RFC 1035 4.1.4
}

TEST(DnsAnswer, ServicesThatDoNotFitAreNone)
{
    const auto service = [](const Bytes& data) {
        return first(answer(query, {record(33, 0, data)}), DnsType::srv, dns_service);
    };
    for (const Bytes& data : {Bytes(), Bytes(5, '\0'), Bytes(6, '\0'), Bytes(6, '\0') + "\1"})
        EXPECT_FALSE(service(data));
    ASSERT_TRUE(service(Bytes(7, '\0')));
    EXPECT_EQ(service(Bytes(7, '\0'))->host, ".");
    EXPECT_EQ(service(srv_data(65535, encoded_name("a")))->port, 65535);
}

TEST(DnsAnswer, StringsEndWithTheRecord)
{
    const auto strings = [](const Bytes& data) {
        return first(answer(query, {record(16, 0, data)}), DnsType::txt, dns_strings);
    };
    EXPECT_EQ(strings(""), Strings());
    EXPECT_EQ(strings(Bytes(3, '\0')), Strings());
    EXPECT_EQ(strings("\5ab"), Strings{"ab"});
    EXPECT_EQ(strings(Bytes("\3a\0b", 4)), Strings{Bytes("a\0b", 3)});
    EXPECT_EQ(strings("\1a\xff"), Strings{"a"});
}

TEST(DnsAnswer, AddressesHaveFourOrSixteenBytes)
{
    for (const std::size_t size : {0U, 3U, 5U, 15U, 17U})
        EXPECT_EQ(first(answer(query, {record(1, 0, Bytes(size, '\1'))}), DnsType::a, dns_address),
                  std::nullopt);
}

TEST(DnsAnswer, NamesForPeopleAndForQuestions)
{
    struct
    {
        Bytes label;
        std::string name;     ///< of dns_name
        std::string question; ///< of name_for_question
    } const rows[] = {
        {"plain", "plain.x", "plain.x"},        {"with blank", "with blank.x", "with blank.x"},
        {"a.b", "a\\.b.x", "a\\.b.x"},          {"a\\b", "a\\\\b.x", "a\\\\b.x"},
        {"a\\065", "a\\\\065.x", "a\\\\065.x"}, {"\xc3\xa4", "\\195\\164.x", "\xc3\xa4.x"},
        {"a\nb", "a\\010b.x", "a\nb.x"},
    };
    for (const auto& row : rows) {
        const Bytes data = static_cast<char>(row.label.size()) + row.label + Bytes("\1x\0", 3);
        const auto name = first(answer(query, {record(12, 0, data)}), DnsType::ptr, dns_name);
        ASSERT_TRUE(name) << row.name;
        EXPECT_EQ(*name, row.name);
        EXPECT_EQ(name_for_question(*name), row.question);
        EXPECT_EQ(first_label(*name), row.label);
    }
    EXPECT_EQ(name_for_question("a\\000b.x"), std::nullopt);
    EXPECT_EQ(first_label("a\\000b.x"), std::string_view("a\0b", 3));
    EXPECT_EQ(first_label(""), "");
    EXPECT_EQ(first_label("a\\"), "a\\");
}

} // namespace
} // namespace nmos_instrument::host

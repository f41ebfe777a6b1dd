// SPDX-License-Identifier: Apache-2.0

#include "discovery/judge_advertisement.h"

#include <string>
#include <string_view>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using enum DevelopmentRegistries;

const AdvertisedRegistry good{
    .name = "Registry 1",
    .host = "reg1.example.com.",
    .address = "192.0.2.1",
    .port = 8080,
    .txt = {"api_proto=http", "api_ver=v1.0,v1.1,v1.2", "pri=10"},
    .origin = "DNS-SD in example.com",
};

/// The reason why it is left out; "used" if it is not.
std::string verdict(const AdvertisedRegistry& advertised,
                    DevelopmentRegistries development = left_out)
{
    const Judgement judgement = judge_advertisement(advertised, development);
    EXPECT_EQ(judgement.registry.has_value(), judgement.reason.empty());
    return judgement.registry ? "used" : judgement.reason;
}

std::string verdict_of_txt(const TxtStrings& txt, DevelopmentRegistries development = left_out)
{
    AdvertisedRegistry advertised = good;
    advertised.txt = txt;
    return verdict(advertised, development);
}

std::string verdict_of_address(const std::string& address)
{
    AdvertisedRegistry advertised = good;
    advertised.address = address;
    return verdict(advertised);
}

std::string url_of(const std::string& host, const std::string& address = "192.0.2.1")
{
    AdvertisedRegistry advertised = good;
    advertised.host = host;
    advertised.address = address;
    const Judgement judgement = judge_advertisement(advertised, left_out);
    return judgement.registry ? judgement.registry->url : judgement.reason;
}

TEST(JudgeAdvertisement, AGoodOne)
{
    const Judgement judgement = judge_advertisement(good, left_out);
    ASSERT_TRUE(judgement.registry) << judgement.reason;
    EXPECT_EQ(judgement.registry->url, "http://reg1.example.com:8080/x-nmos/registration/v1.2");
    EXPECT_EQ(judgement.registry->address, "192.0.2.1");
    EXPECT_EQ(judgement.registry->priority, 10);
    EXPECT_EQ(judgement.registry->origin, "DNS-SD in example.com");
}

TEST(JudgeAdvertisement, TxtRecord)
{
    struct
    {
        TxtStrings txt;
        std::string verdict;
    } const rows[] = {
        {{"api_proto=https", "api_ver=v1.2", "pri=0"}, "used"},
        {{"API_Proto=http", "Api_Ver=v1.2", "PRI=99"}, "used"},
        {{"other", "=x", "api_proto=http", "api_ver=v1.2", "pri=1", "api_auth=false"}, "used"},
        {{"api_proto=http", "api_ver=v1.1, v1.2 ,v1.3", "pri=007"}, "used"},
        {{"api_proto=http", "api_ver=v1.2", "pri=1", "pri=high"}, "used"},

        {{}, "it has no api_proto"},
        {{"api_proto", "api_ver=v1.2", "pri=1"}, "it has no api_proto"},
        {{"api_proto=", "api_ver=v1.2", "pri=1"}, "its api_proto is \"\", not http or https"},
        {{"api_proto=HTTP", "api_ver=v1.2", "pri=1"},
         "its api_proto is \"HTTP\", not http or https"},
        {{"api_proto=coap", "api_proto=http", "api_ver=v1.2", "pri=1"},
         "its api_proto is \"coap\", not http or https"},
        {{"api_proto=ht\ntp", "api_ver=v1.2", "pri=1"},
         "its api_proto is \"ht\\x0atp\", not http or https"},

        {{"api_proto=http", "pri=1"}, "it has no api_ver"},
        {{"api_proto=http", "api_ver", "pri=1"}, "it has no api_ver"},
        {{"api_proto=http", "api_ver=", "pri=1"}, "its api_ver \"\" does not include v1.2"},
        {{"api_proto=http", "api_ver=v1.0", "pri=1"}, "its api_ver \"v1.0\" does not include v1.2"},
        {{"api_proto=http", "api_ver=v1.20,v11.2,1.2,V1.2", "pri=1"},
         "its api_ver \"v1.20,v11.2,1.2,V1.2\" does not include v1.2"},
        {{"api_proto=http", "api_ver=v1.1 v1.2", "pri=1"},
         "its api_ver \"v1.1 v1.2\" does not include v1.2"},

        {{"api_proto=http", "api_ver=v1.2", "pri=1", "api_auth=true"}, "it asks for authorization"},
        {{"api_proto=http", "api_ver=v1.2", "pri=1", "API_AUTH=True"}, "it asks for authorization"},

        {{"api_proto=http", "api_ver=v1.2"}, "it has no pri"},
        {{"api_proto=http", "api_ver=v1.2", "pri"}, "it has no pri"},
        {{"api_proto=http", "api_ver=v1.2", "pri="},
         "its pri is \"\", not a whole number from 0 to 2147483647"},
        {{"api_proto=http", "api_ver=v1.2", "pri=-1"},
         "its pri is \"-1\", not a whole number from 0 to 2147483647"},
        {{"api_proto=http", "api_ver=v1.2", "pri=1.5"},
         "its pri is \"1.5\", not a whole number from 0 to 2147483647"},
        {{"api_proto=http", "api_ver=v1.2", "pri=2147483648"},
         "its pri is \"2147483648\", not a whole number from 0 to 2147483647"},
        {{"api_proto=http", "api_ver=v1.2", "pri=100"},
         "its pri is 100: 100 and more are for development"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(verdict_of_txt(row.txt), row.verdict);
}

TEST(JudgeAdvertisement, DevelopmentRegistriesOnRequest)
{
    EXPECT_EQ(verdict_of_txt({"api_proto=http", "api_ver=v1.2", "pri=99"}, used), "used");
    EXPECT_EQ(verdict_of_txt({"api_proto=http", "api_ver=v1.2", "pri=100"}, used), "used");
    EXPECT_EQ(verdict_of_txt({"api_proto=http", "api_ver=v1.2", "pri=2147483647"}, used), "used");
}

TEST(JudgeAdvertisement, Service)
{
    AdvertisedRegistry advertised = good;
    advertised.host = "";
    EXPECT_EQ(verdict(advertised), "it has no SRV record");
    advertised.host = ".";
    EXPECT_EQ(verdict(advertised), "it is not available: the host in its SRV record is \".\"");
    for (const int port : {-1, 0, 65536}) {
        advertised = good;
        advertised.port = port;
        EXPECT_EQ(verdict(advertised), "its port is " + std::to_string(port));
    }
    for (const int port : {1, 65535}) {
        advertised.port = port;
        EXPECT_EQ(verdict(advertised), "used");
    }
}

TEST(JudgeAdvertisement, Address)
{
    for (const char* address :
         {"192.0.2.1", "127.0.0.1", "169.254.1.1", "2001:db8::1", "::1", "fd00::1"})
        EXPECT_EQ(verdict_of_address(address), "used") << address;
    EXPECT_EQ(verdict_of_address(""), "its host \"reg1.example.com.\" has no address");
    for (const std::string address : {"0.0.0.0", "224.0.0.251", "255.255.255.255", "::", "ff02::fb",
                                      "::ffff:192.0.2.1", "192.0.2", "x"})
        EXPECT_EQ(verdict_of_address(address), "no host has its address \"" + address + '"');
    EXPECT_EQ(verdict_of_address(std::string("::1\0", 4)), "no host has its address \"::1\\x00\"");
    for (const std::string address : {"fe80::1", "febf::1"})
        EXPECT_EQ(verdict_of_address(address), "its address \"" + address + "\" is link-local");
}

TEST(JudgeAdvertisement, TheUrlHasTheNameIfItFits)
{
    const std::string longest_label(63, 'a');
    struct
    {
        std::string host;
        std::string url_host;
    } const rows[] = {
        {"reg1.example.com.", "reg1.example.com"},
        {"reg1.local", "reg1.local"},
        {"Reg_1-a.example", "Reg_1-a.example"},
        {"registry", "registry"},
        {longest_label + ".example", longest_label + ".example"},

        {longest_label + "a.example", "192.0.2.1"},
        {"my registry.example", "192.0.2.1"},
        {"a..example", "192.0.2.1"},
        {".example", "192.0.2.1"},
        {"reg\\.1.example", "192.0.2.1"},
        {"user@evil.example", "192.0.2.1"},
        {"evil.example/x", "192.0.2.1"},
        {"evil.example:99", "192.0.2.1"},
        {"r\xc3\xa9g.example", "192.0.2.1"},
        {"reg\r\nX: y.example", "192.0.2.1"},
        {"10.1", "192.0.2.1"},
        {"reg.0x7f", "192.0.2.1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(url_of(row.host),
                  fmt::format("http://{}:8080/x-nmos/registration/v1.2", row.url_host));
}

TEST(JudgeAdvertisement, AnIpv6AddressInAUrlHasBrackets)
{
    EXPECT_EQ(url_of("reg1.example", "2001:db8::1"),
              "http://reg1.example:8080/x-nmos/registration/v1.2");
    EXPECT_EQ(url_of("reg 1", "2001:db8::1"), "http://[2001:db8::1]:8080/x-nmos/registration/v1.2");
}

TEST(TxtValue, TheFirstStringWithTheKeyCounts)
{
    EXPECT_EQ(txt_value({"pri=1", "pri=2"}, "pri"), "1");
    EXPECT_EQ(txt_value({"PRI=1", "pri=2"}, "pri"), "1");
    EXPECT_EQ(txt_value({"pri", "pri=2"}, "pri"), std::nullopt);
    EXPECT_EQ(txt_value({"pri2=1", "xpri=2", "=pri", "pri=a=b"}, "pri"), "a=b");
    EXPECT_EQ(txt_value({""}, "pri"), std::nullopt);
    EXPECT_EQ(txt_value({}, "pri"), std::nullopt);
    EXPECT_EQ(txt_value({std::string("pri\0=1", 6)}, "pri"), std::nullopt);
    EXPECT_EQ(txt_value({std::string("pri=1\0", 6)}, "pri"), std::string_view("1\0", 2));
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// The two operations that rewrite a record: update_version and update_ipAddress.

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nmos_instrument/NodeApi.h"
#include "nmos_instrument/RegistrationApi.h"
#include "support/body_parts.h"
#include "support/example_node.h"
#include "support/same_bytes.h"
#include "support/set_text.h"

namespace {

using namespace std::string_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr double infinity = std::numeric_limits<double>::infinity();

// --- update_version -----------------------------------------------------------------------------

/// The whole field: text and zeros.
template <std::size_t N>
std::string whole(const char (&field)[N])
{
    return std::string(field, N);
}

std::string version_field(const std::string& text)
{
    return text + std::string(48 - text.size(), '\0');
}

TEST(RegistrationApiUpdateVersion, WritesZeroTime)
{
    const auto rec = example_node(0xFF);
    rec->version_seconds = 0;
    rec->version_nanoseconds = 0;
    RegistrationApi().update_version(rec.get());

    EXPECT_EQ(whole(rec->version), version_field("0:0"));
    EXPECT_EQ(whole(rec->devices[0].version), version_field("0:0"));
    EXPECT_EQ(whole(rec->devices[1].version), version_field("0:0"));
    for (const RECEIVER_IS04_ST& receiver : rec->receivers)
        EXPECT_EQ(whole(receiver.version), version_field("0:0"));
}

TEST(RegistrationApiUpdateVersion, ClearsTheRestOfTheField)
{
    const auto rec = example_node();
    fill_whole(rec->version, 'x');
    fill_whole(rec->devices[0].version, 'x');
    fill_whole(rec->receivers[0].version, 'x');
    rec->version_seconds = 1541234567;
    rec->version_nanoseconds = 25;
    RegistrationApi().update_version(rec.get());
    EXPECT_EQ(whole(rec->version), version_field("1541234567:25"));
    EXPECT_EQ(whole(rec->devices[0].version), version_field("1541234567:25"));
    EXPECT_EQ(whole(rec->receivers[0].version), version_field("1541234567:25"));
}

TEST(RegistrationApiUpdateVersion, WritesEveryTime)
{
    struct Case
    {
        std::uint64_t seconds;
        std::int32_t nanoseconds;
        const char* text;
    };
    const Case table[] = {
        {1, 999999999, "1:999999999"},
        {1541234567, -25, "1541234567:-25"},
        {4294967296u, 1, "4294967296:1"},
        {9223372036854775808u, 0, "9223372036854775808:0"},
        {UINT64_MAX, INT32_MAX, "18446744073709551615:2147483647"},
        {UINT64_MAX, INT32_MIN, "18446744073709551615:-2147483648"},
    };
    const auto rec = empty_node();
    for (const auto& [seconds, nanoseconds, text] : table) {
        SCOPED_TRACE(text);
        rec->version_seconds = seconds;
        rec->version_nanoseconds = nanoseconds;
        RegistrationApi().update_version(rec.get());
        EXPECT_EQ(whole(rec->version), version_field(text));
    }
}

TEST(RegistrationApiUpdateVersion, WritesNothingElse)
{
    const auto rec = example_node(0x2F);
    const auto expected = example_node(0x2F);
    const std::string field = version_field("1700000123:25");
    std::memcpy(expected->version, field.data(), 48);
    for (int i = 0; i < 2; ++i)
        std::memcpy(expected->devices[i].version, field.data(), 48);
    for (RECEIVER_IS04_ST& receiver : expected->receivers)
        std::memcpy(receiver.version, field.data(), 48);

    RegistrationApi().update_version(rec.get());
    EXPECT_TRUE(same_bytes(*rec, *expected));
    EXPECT_STREQ(rec->sources[0].version, "source/0/version");
    EXPECT_STREQ(rec->flows[0].version, "flow/0/version");
    EXPECT_STREQ(rec->senders[0].version, "sender/0/version");
}

TEST(RegistrationApiUpdateVersion, LeavesDevicesAndReceiversFromTheirCountOn)
{
    const auto rec = example_node();
    rec->devices_count = 1;
    rec->receivers_count = 3;
    RegistrationApi().update_version(rec.get());
    EXPECT_STREQ(rec->devices[0].version, "1700000123:25");
    EXPECT_STREQ(rec->devices[1].version, "device/1/version");
    EXPECT_STREQ(rec->receivers[2].version, "1700000123:25");
    EXPECT_STREQ(rec->receivers[3].version, "receiver/3/version");

    const auto none = example_node();
    none->devices_count = 0;
    none->receivers_count = -1;
    RegistrationApi().update_version(none.get());
    EXPECT_STREQ(none->version, "1700000123:25");
    EXPECT_STREQ(none->devices[0].version, "device/0/version");
    EXPECT_STREQ(none->receivers[0].version, "receiver/0/version");
}

TEST(RegistrationApiUpdateVersion, StaysInsideTheRecordWhateverTheCounts)
{
    for (const int more : {1, 1000, INT_MAX - 24}) {
        SCOPED_TRACE(more);
        const auto rec = example_node();
        rec->devices_count = 4 + more;
        rec->receivers_count = 24 + more;
        const auto expected = example_node();
        expected->devices_count = 4 + more;
        expected->receivers_count = 24 + more;
        const std::string field = version_field("1700000123:25");
        std::memcpy(expected->version, field.data(), 48);
        for (DEVICE_IS04_ST& device : expected->devices)
            std::memcpy(device.version, field.data(), 48);
        for (RECEIVER_IS04_ST& receiver : expected->receivers)
            std::memcpy(receiver.version, field.data(), 48);

        RegistrationApi().update_version(rec.get());
        EXPECT_TRUE(same_bytes(*rec, *expected));
    }
}

// --- update_ipAddress ---------------------------------------------------------------------------

TEST(RegistrationApiUpdateIpAddress, RewritesFourBytesOfEachHostAndThePort)
{
    const auto rec = example_node();
    set_text(rec->endpoints[0].host, "192.168.1.20");
    set_text(rec->endpoints[1].host, "172.16.0.1");
    set_text(rec->endpoints[2].host, "1.2.3.4");
    RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "8080");
    EXPECT_STREQ(rec->endpoints[0].host, "10.0168.1.20");
    EXPECT_STREQ(rec->endpoints[1].host, "10.016.0.1");
    EXPECT_STREQ(rec->endpoints[2].host, "10.03.4");
    EXPECT_EQ(rec->endpoints[0].port, 8080);
    EXPECT_EQ(rec->endpoints[1].port, 8080);
    EXPECT_EQ(rec->endpoints[2].port, 8080);
    EXPECT_STREQ(rec->href, "http://192.0.2.10:3212/");
    EXPECT_THAT(NodeApi().make_self(rec.get()),
                StartsWith(R"({"api":{"endpoints":[{"host":"10.0168.1.20","port":8080,)"
                           R"("protocol":"http"}])"));
}

TEST(RegistrationApiUpdateIpAddress, WritesNothingElse)
{
    const auto rec = example_node(0x2F);
    const auto expected = example_node(0x2F);
    for (int i = 0; i < 3; ++i) {
        std::memcpy(expected->endpoints[i].host, "10.0", 4);
        expected->endpoints[i].port = 80;
    }
    RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
    EXPECT_TRUE(same_bytes(*rec, *expected));
}

TEST(RegistrationApiUpdateIpAddress, OverwritesTheFirstFourBytesOfHref)
{
    struct Case
    {
        std::string before;
        std::string after;
    };
    const Case table[] = {
        {"http://192.0.2.10/", "http://192.0.2.10/"},
        {"https://192.0.2.10/", "https://192.0.2.10/"},
        {"ftp://192.0.2.10/", "http//192.0.2.10/"},
        {"HTTP://192.0.2.10/", "http://192.0.2.10/"},
        {"abcdefgh", "httpefgh"},
        {"abc", "http"},
        {"", "http"},
    };
    for (const auto& [before, after] : table) {
        SCOPED_TRACE(before);
        const auto rec = empty_node();
        set_text(rec->href, before);
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
        EXPECT_EQ(whole(rec->href), after + std::string(64 - after.size(), '\0'));
    }
    const auto rec = empty_node();
    fill_whole(rec->href, 'x');
    RegistrationApi().update_ipAddress(rec.get(), "", "");
    EXPECT_EQ(whole(rec->href), "http" + std::string(60, 'x'));
}

TEST(RegistrationApiUpdateIpAddress, WithAShortAddressCopiesItsTextAndNul)
{
    struct Case
    {
        std::string ip;
        std::string host;
    };
    const Case table[] = {
        {"", "\0bcdefghijklmnop"s},           {"1", "1\0cdefghijklmnop"s},
        {"10", "10\0defghijklmnop"s},         {"10.", "10.\0efghijklmnop"s},
        {"10.0", "10.0efghijklmnop"s},        {"10.0.", "10.0efghijklmnop"s},
        {"2001:db8::1", "2001efghijklmnop"s}, {std::string(1000, 'z'), "zzzzefghijklmnop"s},
    };
    for (const auto& [ip, host] : table) {
        SCOPED_TRACE(ip);
        const auto rec = empty_node();
        rec->endpoints_count = 1;
        std::memcpy(rec->endpoints[0].host, "abcdefghijklmnop", 16);
        RegistrationApi().update_ipAddress(rec.get(), ip, "80");
        EXPECT_EQ(whole(rec->endpoints[0].host), host);
    }
}

TEST(RegistrationApiUpdateIpAddress, CopiesFourBytesOfALongAddressEvenWithANulInside)
{
    const auto rec = empty_node();
    rec->endpoints_count = 1;
    std::memcpy(rec->endpoints[0].host, "abcdefghijklmnop", 16);
    RegistrationApi().update_ipAddress(rec.get(),
                                       "1\0"
                                       "23456"s,
                                       "80");
    EXPECT_EQ(whole(rec->endpoints[0].host), "1\0"
                                             "23efghijklmnop"s);
}

TEST(RegistrationApiUpdateIpAddress, ReadsThePortLikeStrtod)
{
    struct Case
    {
        std::string text;
        double value;
    };
    const Case table[] = {
        {"3212", 3212},
        {"0", 0},
        {"65536", 65536},
        {" 80", 80},
        {" \t\n\v\f\r80", 80},
        {"+80", 80},
        {" +80", 80},
        {"-80", -80},
        {"--80", 0},
        {"+-80", 0},
        {"- 80", 0},
        {"0x50", 80},
        {"0X50", 80},
        {"0x1p4", 16},
        {"0x.8", 0.5},
        {"0x", 0},
        {"0xg", 0},
        {"080", 80},
        {"80abc", 80},
        {"80 90", 80},
        {"abc", 0},
        {"abc80", 0},
        {"", 0},
        {" ", 0},
        {".", 0},
        {"e5", 0},
        {"80.5", 80.5},
        {".5", 0.5},
        {"80.", 80},
        {"80,5", 80},
        {"1,234", 1},
        {"1.234.567", 1.234},
        {"8e3", 8000},
        {"8E+3", 8000},
        {"8e-1", 0.8},
        {"8e", 8},
        {"8e+", 8},
        {"8d3", 8},
        {"1e400", infinity},
        {"-1e400", -infinity},
        {"1e-400", 0},
        {"1e-310", 1e-310},
        {"5e-324", 5e-324},
        {"2e-324", 0},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"9007199254740993", 9007199254740992.0},
        {"0.1000000000000000055511151231257827021181583404541015625", 0.1},
        {"inf", infinity},
        {"INF", infinity},
        {"-inf", -infinity},
        {"+inf", infinity},
        {" inf", infinity},
        {"infinity", infinity},
        {"Infinity", infinity},
        {"infinite", infinity},
        {"in", 0},
        {"80\0"s
         "90",
         80},
        {"\0"s
         "80",
         0},
        {"8\0"s
         "0",
         8},
        {"0x\0"s
         "50",
         0},
        {std::string(400, '0') + "80", 80},
        {std::string(400, '9'), infinity},
        {"0." + std::string(400, '0') + "1", 0},
        {"1" + std::string(400, '0') + "e-400", 1},
        {"\xEF\xBC\x98", 0},
    };
    for (const auto& [text, value] : table) {
        const auto rec = empty_node();
        rec->endpoints_count = 26;
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", text);
        for (const ENDPOINT_IS04_ST& endpoint : rec->endpoints)
            EXPECT_EQ(endpoint.port, value) << text;
    }
}

TEST(RegistrationApiUpdateIpAddress, ReadsAPortOfMinusZeroWithItsSign)
{
    const auto rec = empty_node();
    rec->endpoints_count = 1;
    RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "-0");
    EXPECT_EQ(rec->endpoints[0].port, 0);
    EXPECT_TRUE(std::signbit(rec->endpoints[0].port));
    EXPECT_THAT(NodeApi().make_self(rec.get()), HasSubstr(R"("port":-0,)"));
}

TEST(RegistrationApiUpdateIpAddress, LeavesANotFinitePortForTheNextBodyToRefuse)
{
    for (const char* text : {"nan", "NaN", "-nan", "nan(123)", " nanny"}) {
        const auto rec = example_node();
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", text);
        EXPECT_TRUE(std::isnan(rec->endpoints[0].port)) << text;
        EXPECT_EQ(overflow_text([&] { NodeApi().make_self(rec.get()); }), "");
    }
    for (const char* text : {"inf", "-inf", "1e400"}) {
        SCOPED_TRACE(text);
        const auto rec = example_node();
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", text);
        EXPECT_EQ(overflow_text([&] { RegistrationApi().make_resource_node(rec.get()); }), "");
    }
}

TEST(RegistrationApiUpdateIpAddress, WithoutEndpointsRewritesHrefAlone)
{
    for (const int count : {0, -1, INT_MIN}) {
        SCOPED_TRACE(count);
        const auto rec = example_node();
        rec->endpoints_count = count;
        set_text(rec->href, "ftp://x/");
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
        EXPECT_STREQ(rec->href, "http//x/");
        EXPECT_STREQ(rec->endpoints[0].host, "192.0.2.10");
        EXPECT_EQ(rec->endpoints[0].port, 3212);
    }
}

TEST(RegistrationApiUpdateIpAddress, StaysInsideTheEndpointsWhateverTheCount)
{
    for (const int count : {26, 27, 1000, INT_MAX}) {
        SCOPED_TRACE(count);
        const auto rec = empty_node();
        const auto expected = empty_node();
        rec->endpoints_count = expected->endpoints_count = count;
        set_text(expected->href, "http");
        for (ENDPOINT_IS04_ST& endpoint : expected->endpoints) {
            set_text(endpoint.host, "10.0");
            endpoint.port = 80;
        }
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
        EXPECT_TRUE(same_bytes(*rec, *expected));
    }
}

} // namespace

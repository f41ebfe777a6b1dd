// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/Nmos.h"

#include <climits>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "nmos_instrument/ConnectionApi.h"
#include "nmos_instrument/NetworkControlApi.h"
#include "nmos_instrument/NodeApi.h"
#include "nmos_instrument/RegistrationApi.h"
#include "support/service_text.h"
#include "support/varied.h"

namespace {

using namespace std::string_literals;

// --- The classes --------------------------------------------------------------------------------

TEST(Classes, AreDefaultConstructibleAndHoldNothingButNmosItsMembers)
{
    static_assert(std::is_empty_v<NodeApi>);
    static_assert(std::is_empty_v<RegistrationApi>);
    static_assert(std::is_empty_v<ConnectionApi>);
    static_assert(std::is_empty_v<NetworkControlApi>);
    static_assert(!std::is_polymorphic_v<Nmos>);
    // Many at once, in any order.
    for (int i = 0; i < 3; ++i) {
        [[maybe_unused]] NodeApi node;
        [[maybe_unused]] RegistrationApi registration;
        [[maybe_unused]] ConnectionApi connection;
        [[maybe_unused]] NetworkControlApi control;
        [[maybe_unused]] Nmos nmos;
    }
}

// --- Listings -----------------------------------------------------------------------------------

TEST(NmosListings, RootHasXNmosAlone)
{
    EXPECT_EQ(Nmos().make_xnmos(), "[\n    \"x-nmos/\"\n]\n");
}

TEST(NmosListings, ApiNamesThreeApis)
{
    EXPECT_EQ(Nmos().make_api(), "[\n"
                                 "    \"node/\",\n"
                                 "    \"registration/\",\n"
                                 "    \"connection/\"\n"
                                 "]\n");
}

// --- replaceAll ---------------------------------------------------------------------------------

TEST(ReplaceAll, ReplacesFromTheLeftInPlaceAndReturnsACopy)
{
    struct Case
    {
        std::string text;
        std::string from;
        std::string to;
        std::string result;
    };
    const Case table[] = {
        {"", "", "", ""},
        {"", "a", "b", ""},
        {"", "", "b", ""},
        {"abc", "", "x", "abc"},
        {"abc", "d", "x", "abc"},
        {"abc", "abcd", "x", "abc"},
        {"abc", "abc", "", ""},
        {"abc", "abc", "abc", "abc"},
        {"abc", "b", "", "ac"},
        {"abc", "c", "xyz", "abxyz"},
        {"abc", "a", "xyz", "xyzbc"},
        {R"(http:\/\/192.0.2.10\/)", R"(\/)", "/", "http://192.0.2.10/"},
        {R"(a\\/b)", R"(\/)", "/", R"(a\/b)"},
        {"a/b/c", "/", "", "abc"},
        {"a//b", "/", "//", "a////b"},
        // Overlapping occurrences: the left one counts.
        {"aaa", "aa", "b", "ba"},
        {"aaaa", "aa", "b", "bb"},
        {"ababa", "aba", "x", "xba"},
        // What was inserted is not searched again.
        {"aaa", "a", "aa", "aaaaaa"},
        {"aaa", "a", "ba", "bababa"},
        {"ab", "b", "ab", "aab"},
        {"aabb", "ab", "", "ab"},
        {"aaabbb", "ab", "ab", "aaabbb"},
        {"aXbX", "X", "XX", "aXXbXX"},
        {"a\0b\0c"s, "\0"s, "-", "a-b-c"},
        {"a-b", "-", "\0"s, "a\0b"s},
        {"\xC3\xA9\xC3\xA9", "\xC3\xA9", "e", "ee"},
    };
    for (const auto& [text, from, to, result] : table) {
        std::string changed = text;
        const std::string returned = Nmos().replaceAll(changed, from, to);
        EXPECT_EQ(changed, result) << text << " " << from << " " << to;
        EXPECT_EQ(returned, result) << text << " " << from << " " << to;
    }
}

TEST(ReplaceAll, MayBeGivenTheTextItself)
{
    std::string text = "abc";
    EXPECT_EQ(Nmos().replaceAll(text, text, text + text), "abcabc");
    EXPECT_EQ(text, "abcabc");

    Nmos nmos;
    nmos.text = "a/b";
    nmos.replaceAll(nmos.text, "/", nmos.text);
    EXPECT_EQ(nmos.text, "aa/bb");
}

TEST(ReplaceAll, ReturnsATextOfItsOwn)
{
    std::string text = "a/b";
    std::string returned = Nmos().replaceAll(text, "/", "-");
    returned += "!";
    EXPECT_EQ(text, "a-b");
}

TEST(ReplaceAll, OfALongTextIsWhole)
{
    std::string text;
    std::string result;
    for (int i = 0; i < 200'000; ++i) {
        text += R"(\/x)";
        result += "/x";
    }
    Nmos().replaceAll(text, R"(\/)", "/");
    EXPECT_TRUE(text == result);
}

// --- Service file: members ----------------------------------------------------------------------

TEST(NmosMembers, HaveTheirDefaults)
{
    const Nmos nmos;
    EXPECT_EQ(nmos.text, "");
    EXPECT_EQ(nmos.port, 3000);
    EXPECT_EQ(nmos.protocol, 0);
    EXPECT_EQ(nmos.ver_slf, 0);
    EXPECT_EQ(nmos.ver_src, 0);
    EXPECT_EQ(nmos.ver_flw, 0);
    EXPECT_EQ(nmos.ver_dvc, 0);
    EXPECT_EQ(nmos.ver_snd, 0);
    EXPECT_EQ(nmos.ver_rcv, 0);
}

TEST(NmosMembers, PortAndProtocolAreStoredAsTheyAre)
{
    Nmos nmos;
    for (const int value : {0, 1, 2, 80, 8080, 65535, 65536, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(value);
        nmos.update_txt_port_number(value);
        EXPECT_EQ(nmos.port, value);
        EXPECT_EQ(nmos.ver_slf, 0);
        nmos.update_txt_protocol(-value / 2);
        EXPECT_EQ(nmos.protocol, -value / 2);
        EXPECT_EQ(nmos.port, value);
    }
}

struct Counter
{
    const char* name;
    int Nmos::*value;
    void (Nmos::*advance)();
};

constexpr Counter counters[] = {
    {"ver_slf", &Nmos::ver_slf, &Nmos::update_txt_ver_slf},
    {"ver_src", &Nmos::ver_src, &Nmos::update_txt_ver_src},
    {"ver_flw", &Nmos::ver_flw, &Nmos::update_txt_ver_flw},
    {"ver_dvc", &Nmos::ver_dvc, &Nmos::update_txt_ver_dvc},
    {"ver_snd", &Nmos::ver_snd, &Nmos::update_txt_ver_snd},
    {"ver_rcv", &Nmos::ver_rcv, &Nmos::update_txt_ver_rcv},
};

TEST(NmosCounters, RunFrom0To254AndStartAgain)
{
    for (const Counter& counter : counters) {
        Nmos nmos;
        for (int round = 0; round < 2; ++round) {
            for (int expected = 1; expected <= 254; ++expected) {
                (nmos.*counter.advance)();
                ASSERT_EQ(nmos.*counter.value, expected) << counter.name;
            }
            (nmos.*counter.advance)();
            ASSERT_EQ(nmos.*counter.value, 0) << counter.name;
        }
    }
}

TEST(NmosCounters, AdvanceAlone)
{
    for (const Counter& advanced : counters) {
        Nmos nmos;
        nmos.text = "kept";
        (nmos.*advanced.advance)();
        for (const Counter& counter : counters)
            EXPECT_EQ(nmos.*counter.value, counter.value == advanced.value ? 1 : 0)
                << advanced.name << " " << counter.name;
        EXPECT_EQ(nmos.port, 3000);
        EXPECT_EQ(nmos.protocol, 0);
        EXPECT_EQ(nmos.text, "kept");
    }
}

TEST(NmosCounters, RestoredToAnythingHaveADefinedNextValue)
{
    struct Case
    {
        int restored;
        int next;
    };
    // (restored + 1) modulo 255; the remainder has the sign of the sum, as C++ computes it.
    const Case table[] = {
        {253, 254},  {254, 0},       {255, 1},  {256, 2},        {508, 254},         {509, 0},
        {1000, 236}, {INT_MAX, 128}, {-1, 0},   {-2, -1},        {-5, -4},           {-255, -254},
        {-256, 0},   {-257, -1},     {-511, 0}, {INT_MIN, -127}, {INT_MAX - 1, 127},
    };
    for (const Counter& counter : counters) {
        for (const auto& [restored, next] : table) {
            Nmos nmos;
            nmos.*counter.value = restored;
            (nmos.*counter.advance)();
            EXPECT_EQ(nmos.*counter.value, next) << counter.name << " " << restored;
        }
    }
}

// --- Service file: text -------------------------------------------------------------------------

TEST(NmosServiceText, OfAFreshObject)
{
    EXPECT_EQ(Nmos().make_node_service_text(1), fresh_service);
}

TEST(NmosServiceText, ShowsEveryMemberButTheText)
{
    Nmos nmos;
    nmos.text = "not shown";
    nmos.update_txt_port_number(8080);
    nmos.update_txt_protocol(1);
    nmos.ver_slf = 11;
    nmos.ver_src = 22;
    nmos.ver_flw = 33;
    nmos.ver_dvc = 44;
    nmos.ver_snd = 55;
    nmos.ver_rcv = 254;
    EXPECT_EQ(nmos.make_node_service_text(1),
              varied(fresh_service, {{"<port>3000<", "<port>8080<"},
                                     {"=http<", "=https<"},
                                     {"ver_slf=0", "ver_slf=11"},
                                     {"ver_src=0", "ver_src=22"},
                                     {"ver_flw=0", "ver_flw=33"},
                                     {"ver_dvc=0", "ver_dvc=44"},
                                     {"ver_snd=0", "ver_snd=55"},
                                     {"ver_rcv=0", "ver_rcv=254"}}));
}

TEST(NmosServiceText, WritesNumbersWithTheirSignWhateverTheyAre)
{
    Nmos nmos;
    nmos.port = INT_MIN;
    nmos.ver_slf = -1;
    nmos.ver_src = INT_MAX;
    nmos.ver_flw = INT_MIN;
    nmos.ver_dvc = 255;
    nmos.ver_snd = 1000000;
    nmos.ver_rcv = -40;
    EXPECT_EQ(nmos.make_node_service_text(1),
              varied(fresh_service, {{"<port>3000<", "<port>-2147483648<"},
                                     {"ver_slf=0", "ver_slf=-1"},
                                     {"ver_src=0", "ver_src=2147483647"},
                                     {"ver_flw=0", "ver_flw=-2147483648"},
                                     {"ver_dvc=0", "ver_dvc=255"},
                                     {"ver_snd=0", "ver_snd=1000000"},
                                     {"ver_rcv=0", "ver_rcv=-40"}}));
}

TEST(NmosServiceText, TakesAnUnknownProtocolForHttp)
{
    Nmos nmos;
    for (const int protocol : {0, 2, 3, -1, INT_MIN, INT_MAX}) {
        nmos.update_txt_protocol(protocol);
        EXPECT_EQ(nmos.make_node_service_text(1), Nmos().make_node_service_text(1)) << protocol;
    }
    nmos.update_txt_protocol(1);
    EXPECT_NE(nmos.make_node_service_text(1), Nmos().make_node_service_text(1));
}

TEST(NmosServiceText, IsEmptyUnlessEnabled)
{
    for (const int enable : {0, 2, -1, 257, INT_MIN, INT_MAX})
        EXPECT_EQ(Nmos().make_node_service_text(enable), "") << enable;
}

} // namespace

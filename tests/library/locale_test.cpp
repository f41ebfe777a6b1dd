// SPDX-License-Identifier: Apache-2.0
//
// A host may run under any locale. One with a decimal comma and with points between thousands must
// change no byte of any text, and nothing in how texts are read.

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "support/example_node.h"
#include "support/set_text.h"
#include "support/temporary_folder.h"

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;

/// Numbers as much of Europe writes them: 1.234.567,8.
class EuropeanNumbers : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "wahr"; }
    std::string do_falsename() const override { return "falsch"; }
};

std::unique_ptr<NMOS_IS05_ST> example_connections()
{
    auto connections = std::make_unique<NMOS_IS05_ST>();
    for (CONNECTION_IS05_ST* connection : {&connections->senders[0], &connections->senders[4],
                                           &connections->senders[5], &connections->receivers[0]}) {
        for (CONNECTION_HALF_IS05_ST* half : {&connection->staged, &connection->active}) {
            half->leg_count = 2;
            half->transport_params[0].destination_port = 50000;
            half->transport_params[1].destination_port = 50020.5;
            set_text(half->transport_params[0].source_ip, "192.0.2.10");
            set_text(half->transport_params[0].destination_ip, "239.0.0.1");
            set_text(half->transport_params[1].source_ip, "192.0.2.11");
            set_text(half->transport_params[1].destination_ip, "239.0.0.2");
        }
    }
    set_text(connections->ptp_grandmaster_id, "00-00-5E-FF-FE-00-53-01");
    set_text(connections->sdp_session_id, "1700000000");
    set_text(connections->sdp_session_version, "1700000001");
    return connections;
}

st_param_sys example_settings()
{
    st_param_sys sys = {};
    sys.type = 12345;
    sys.pri_video_addresses[0] = {{1000, 2000, -3000, 4000}, {239, 0, 0, 1}};
    sys.pri_video_dst_port[0][0] = 80;
    sys.pri_video_dst_port[0][1] = 195;
    sys.sdp_st2110_mode = 1;
    sys.sdp_video_frame_rate = 1;
    sys.sdp_audio_ptime = 2;
    sys.sdp_rtp_payload_video = 1096;
    sys.sdp_rtp_payload_audio = 97;
    sys.sdp_rtp_payload_anc = 100;
    return sys;
}

/// What a receiver makes of an SDP file, as one text.
std::string analysis_of(const std::string& sdp)
{
    ConnectionApi api;
    std::string errors;
    sdp_str found = sdp_str();
    const int status = api.analyze_sdp_file(sdp, true, 0, true, &errors, &found);
    std::string text = std::to_string(status) + "\n" + std::to_string(found.found_flags) + "\n";
    for (const std::string& value :
         {errors, found.source_ip[0], found.source_ip[1], found.multicast_ip[0],
          found.multicast_ip[1], found.destination_port[0], found.destination_port[1],
          found.rtp_payload_type, found.sampling, found.depth, found.width, found.height,
          found.exactframerate, found.colorimetry, found.packing_mode, found.tcs})
        text += value + "\n";
    return text;
}

using Texts = std::vector<std::pair<std::string, std::string>>;

/// Every text that has a number in it, or was made by reading one.
Texts all_texts()
{
    NodeApi node;
    RegistrationApi registration;
    ConnectionApi connection;
    Nmos nmos;
    nmos.port = 30000;
    nmos.ver_slf = 1234567;
    nmos.ver_rcv = -1000;
    const auto rec = example_node();
    rec->endpoints[0].port = 32120.5;
    rec->flows[0].frame_height = 0.1;
    rec->flows[1].sample_rate_numerator = 1e300;
    rec->version_seconds = 1700000123;
    rec->version_nanoseconds = -123456789;
    const auto connections = example_connections();
    const st_param_sys sys = example_settings();

    Texts texts;
    const auto add = [&](const std::string& name, const std::string& text) {
        texts.emplace_back(name, text);
    };
    add("self", node.make_self(rec.get()));
    add("sources", node.make_sources(rec.get()));
    add("source", node.make_sourceid(rec.get(), 1));
    add("flows", node.make_flows(rec.get()));
    add("flow", node.make_flowid(rec.get(), 0));
    add("devices", node.make_devices(rec.get(), 0, 0, 0));
    add("senders", node.make_senders(rec.get(), 1));
    add("receivers", node.make_receivers(rec.get(), 0, 2));
    add("node registration", registration.make_resource_node(rec.get()));
    add("flow registrations", registration.make_resource_flows(rec.get()));
    add("version", rec->version);
    for (const char* port : {"80.5", "80,5", "1.234", "1,234", "1.234.567", " 8e-1", "1e400"}) {
        SCOPED_TRACE(port);
        registration.update_ipAddress(rec.get(), "10.0.0.5", port);
        // By its bits: infinity has no body.
        char bits[64];
        EXPECT_GT(std::snprintf(bits, sizeof bits, "%a", rec->endpoints[0].port), 0);
        for (char* at = bits; *at != '\0'; ++at)
            if (*at == ',')
                *at = '.';
        add(std::string("port ") + port, bits);
    }
    for (const int sender : {0, 4, 5}) {
        const std::string number = std::to_string(sender);
        add("staged " + number, connection.make_single_senderid_staged(connections.get(), sender));
        add("active " + number, connection.make_single_senderid_active(connections.get(), sender));
        const std::string sdp =
            connection.make_single_senderid_sdp(connections.get(), sender, &sys);
        add("SDP " + number, sdp);
        add("analysis " + number, analysis_of(sdp));
    }
    add("receiver staged", connection.make_single_receiverid_staged(connections.get(), 0));
    add("receiver active", connection.make_single_receiverid_active(connections.get(), 0));
    add("analysis of bad numbers",
        analysis_of("c=IN IP4 239.0.0.1/64,5\r\nm=video 50.000 RTP/AVP 96\r\n"
                    "m=video 50,000 RTP/AVP 1.096\r\nm=video 70000 RTP/AVP 12345\r\n"));
    add("parameters", nmos.make_param_json(&sys, 0));
    add("service", nmos.make_node_service_text(1));
    std::string parts[2];
    int count = 0;
    ConnectionApi::split_string("a\n1.234,5", "\n", parts, 2, &count);
    add("remainder", parts[1]);
    return texts;
}

/// Spelled out, so that a text that is wrong under every locale is seen too.
void expect_points_and_no_groups(const Texts& texts)
{
    const auto text = [&](const std::string& name) {
        for (const auto& [key, value] : texts)
            if (key == name)
                return value;
        ADD_FAILURE() << "no text " << name;
        return std::string();
    };
    EXPECT_THAT(text("self"), HasSubstr(R"("port":32120.5,)"));
    EXPECT_THAT(text("flow"), HasSubstr(R"("frame_height":0.10000000000000001,)"
                                        R"("frame_width":1920,)"));
    EXPECT_THAT(text("flows"), HasSubstr(R"("numerator":1.0000000000000001e+300})"));
    EXPECT_EQ(text("version"), "1700000123:-123456789");
    EXPECT_EQ(text("port 80.5"), "0x1.42p+6");
    EXPECT_EQ(text("port 80,5"), "0x1.4p+6");
    EXPECT_EQ(text("port 1,234"), "0x1p+0");
    EXPECT_EQ(text("port 1.234.567"), text("port 1.234"));
    EXPECT_THAT(text("active 0"), HasSubstr(R"("destination_port":50020.5,)"));
    EXPECT_THAT(text("SDP 0"), HasSubstr("m=video 50000 RTP/AVP 1096\r\n"));
    EXPECT_THAT(text("SDP 4"), HasSubstr("a=ptime:0.125\r\n"));
    EXPECT_THAT(text("parameters"),
                AllOf(HasSubstr(R"("1000.2000.-3000.4000")"),
                      HasSubstr(R"("pri_video_dst_port":50000,)"), EndsWith(R"("type":12345})")));
    EXPECT_THAT(text("service"), AllOf(HasSubstr("<port>30000</port>"),
                                       HasSubstr("ver_slf=1234567<"), HasSubstr("ver_rcv=-1000<")));
    EXPECT_EQ(text("remainder"), "1");
}

class AnyLocale : public ::testing::Test
{
protected:
    void TearDown() override
    {
        std::locale::global(std::locale::classic());
        EXPECT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    }

    const Texts classic = all_texts();
};

TEST_F(AnyLocale, TheClassicOneIsTheMeasure)
{
    expect_points_and_no_groups(classic);
}

TEST_F(AnyLocale, AStreamLocaleWithCommaAndGroupsChangesNothing)
{
    std::locale::global(std::locale(std::locale::classic(), new EuropeanNumbers));
    std::ostringstream proof;
    proof << 12345.5;
    ASSERT_EQ(proof.str(), "12.345,5");

    const Texts texts = all_texts();
    std::locale::global(std::locale::classic());
    EXPECT_EQ(texts, classic);
    expect_points_and_no_groups(texts);
}

TEST_F(AnyLocale, ASystemLocaleWithCommaChangesNothing)
{
    // localedef compiles it from the sources of the package locales.
    const TemporaryFolder folder;
    const std::string compile = "localedef -i de_DE -f UTF-8 --no-archive '" +
                                (folder.path() / "de_DE.UTF-8").string() + "' >/dev/null 2>&1";
    // All that comes from outside is the developer's own TMPDIR.
    if (std::system(compile.c_str()) != 0) // NOLINT(cert-env33-c)
        GTEST_SKIP() << "localedef or the locale sources (package locales) are not installed";
    setenv("LOCPATH", folder.path().c_str(), 1);
    const char* const set = std::setlocale(LC_ALL, "de_DE.UTF-8");
    unsetenv("LOCPATH");
    if (set == nullptr)
        GTEST_SKIP() << "this C library does not load a locale that localedef here compiles";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    char proof[16];
    ASSERT_EQ(std::snprintf(proof, sizeof proof, "%.1f", 0.5), 3);
    ASSERT_STREQ(proof, "0,5");

    const Texts texts = all_texts();
    EXPECT_EQ(texts, classic);
    expect_points_and_no_groups(texts);

    // Both at once.
    std::locale::global(std::locale(std::locale::classic(), new EuropeanNumbers));
    EXPECT_EQ(all_texts(), classic);
}

} // namespace

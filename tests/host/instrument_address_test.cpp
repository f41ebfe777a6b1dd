// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "instrument/instrument.h"

namespace nmos_instrument::host {
namespace {

class InstrumentAddressTest : public testing::Test
{
protected:
    InstrumentAddressTest()
    {
        instrument_.listen({.changed = [this] { ++changes_; }, .scheduled = {}});
    }

    nlohmann::json self()
    {
        return nlohmann::json::parse(
            instrument_.read([](Records& records) { return NodeApi().make_self(&records.node); }));
    }

    nlohmann::json device()
    {
        return nlohmann::json::parse(instrument_.read(
            [](Records& records) { return NodeApi().make_deviceid(&records.node, 0, 0, 2, 1); }));
    }

    nlohmann::json sender(int index)
    {
        return nlohmann::json::parse(instrument_.read(
            [=](Records& records) { return NodeApi().make_senderid(&records.node, index); }));
    }

    std::string source_version()
    {
        return instrument_.read(
            [](Records& records) { return std::string(records.node.sources[0].version); });
    }

    std::string receiver_version()
    {
        return instrument_.read(
            [](Records& records) { return std::string(records.node.receivers[0].version); });
    }

    TaiTime now_{1000, 0};
    int changes_ = 0;
    Instrument instrument_{Configuration(), {"192.0.2.10", 80}, [this] { return now_; }, Log()};
};

TEST_F(InstrumentAddressTest, AllTextsNameIt)
{
    EXPECT_EQ(instrument_.address(), (NodeAddress{"192.0.2.10", 80}));
    EXPECT_EQ(self()["href"], "http://192.0.2.10:80/");
    EXPECT_EQ(self()["api"]["endpoints"],
              nlohmann::json::parse(R"([{"host":"192.0.2.10","port":80,"protocol":"http"}])"));
    EXPECT_EQ(device()["controls"][0]["href"], "http://192.0.2.10:80/x-nmos/connection/v1.0/");
    EXPECT_EQ(sender(0)["manifest_href"],
              "http://192.0.2.10:80/x-nmos/connection/v1.0/single/senders/"
              "318de7ae-40bd-562a-b969-8121fc9846f3/transportfile");
}

TEST_F(InstrumentAddressTest, AMoveRewritesAllTextsAtOnce)
{
    now_ = {2000, 5};
    instrument_.move_to({"203.203.203.203", 65535});
    EXPECT_EQ(instrument_.address(), (NodeAddress{"203.203.203.203", 65535}));
    EXPECT_EQ(self()["href"], "http://203.203.203.203:65535/");
    EXPECT_EQ(
        self()["api"]["endpoints"],
        nlohmann::json::parse(R"([{"host":"203.203.203.203","port":65535,"protocol":"http"}])"));
    EXPECT_EQ(self()["version"], "2000:5");
    EXPECT_EQ(device()["controls"][0]["href"],
              "http://203.203.203.203:65535/x-nmos/connection/v1.0/");
    EXPECT_EQ(device()["version"], "2000:5");
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(sender(i)["manifest_href"],
                  "http://203.203.203.203:65535/x-nmos/connection/v1.0/single/senders/" +
                      sender(i)["id"].get<std::string>() + "/transportfile");
        EXPECT_EQ(sender(i)["version"], "2000:5");
    }
    EXPECT_EQ(source_version(), "1000:0");
    EXPECT_EQ(receiver_version(), "1000:0");
    EXPECT_EQ(changes_, 1);
}

TEST_F(InstrumentAddressTest, VersionsAdvanceThoughTheClockStands)
{
    instrument_.move_to({"192.0.2.11", 80});
    EXPECT_EQ(self()["version"], "1000:1");
    EXPECT_EQ(sender(5)["version"], "1000:1");
    instrument_.move_to({"192.0.2.10", 80});
    EXPECT_EQ(self()["version"], "1000:2");
    EXPECT_EQ(changes_, 2);
}

TEST_F(InstrumentAddressTest, TheSameAddressIsNoMove)
{
    now_ = {2000, 0};
    instrument_.move_to({"192.0.2.10", 80});
    EXPECT_EQ(self()["version"], "1000:0");
    EXPECT_EQ(changes_, 0);
}

TEST_F(InstrumentAddressTest, TheServiceFileHasThePortAndTheCounters)
{
    const auto text = [](const char* port, const char* self, const char* devices,
                         const char* senders) {
        return std::string("<?xml version=\"1.0\" standalone='no'?>\n"
                           "<!DOCTYPE service-group SYSTEM \"avahi-service.dtd\">\n"
                           "\n"
                           "<service-group>\n"
                           "  <name replace-wildcards=\"yes\">%h</name>\n"
                           "\n"
                           "  <service>\n"
                           "    <type>_nmos-node._tcp</type>\n"
                           "    <port>") +
               port +
               "</port>\n"
               "    <txt-record>api_proto=http</txt-record>\n"
               "    <txt-record>api_ver=v1.2</txt-record>\n"
               "    <txt-record>ver_slf=" +
               self +
               "</txt-record>\n"
               "    <txt-record>ver_src=0</txt-record>\n"
               "    <txt-record>ver_flw=0</txt-record>\n"
               "    <txt-record>ver_dvc=" +
               devices +
               "</txt-record>\n"
               "    <txt-record>ver_snd=" +
               senders +
               "</txt-record>\n"
               "    <txt-record>ver_rcv=0</txt-record>\n"
               "  </service>\n"
               "</service-group>\n";
    };
    EXPECT_EQ(instrument_.service_text(), text("80", "0", "0", "0"));
    instrument_.move_to({"192.0.2.11", 8080});
    EXPECT_EQ(instrument_.service_text(), text("8080", "1", "1", "1"));
}

} // namespace
} // namespace nmos_instrument::host

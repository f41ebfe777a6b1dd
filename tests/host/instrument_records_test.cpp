// SPDX-License-Identifier: Apache-2.0
//
// Records that somebody else changes while the instrument runs, and an instrument that is made of
// records.

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "instrument/adopt_records.h"
#include "instrument/instrument.h"
#include "records/record_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Counters
{
    int self, sources, flows, devices, senders, receivers;

    bool operator==(const Counters&) const = default;
};

Counters counters_of(Instrument& instrument)
{
    const SavedCounters counters = instrument.saved_state().counters;
    return {counters.self,    counters.sources, counters.flows,
            counters.devices, counters.senders, counters.receivers};
}

/// "receivers[3] 2000:0" for each resource whose version is not 1000:0.
std::vector<std::string> advanced(Instrument& instrument)
{
    std::vector<std::string> found;
    instrument.read([&](Records& records) {
        const NMOS_IS04_ST& node = records.node;
        const auto look = [&](const std::string& name, std::string_view version) {
            if (version != "1000:0")
                found.push_back(name + ' ' + std::string(version));
        };
        look("node", text_of(node.version));
        const auto look_at = [&](const char* name, const auto& resources, int count) {
            for (int i = 0; i < count; ++i)
                look(std::string(name) + '[' + std::to_string(i) + ']',
                     text_of(resources[i].version));
        };
        look_at("sources", node.sources, node.sources_count);
        look_at("flows", node.flows, node.flows_count);
        look_at("devices", node.devices, node.devices_count);
        look_at("senders", node.senders, node.senders_count);
        look_at("receivers", node.receivers, node.receivers_count);
    });
    return found;
}

class InstrumentRecordsTest : public testing::Test
{
protected:
    InstrumentRecordsTest()
    {
        instrument_.listen({.changed = [this] { ++changes_; }, .scheduled = {}});
    }

    /// What an exception says, or "done".
    template <class Change>
    std::string refusal_of(Change&& change)
    {
        try {
            instrument_.change_records(change);
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "done";
    }

    std::string origin_of(std::size_t sender)
    {
        const std::string sdp = instrument_.sdp_file(sender);
        const std::size_t begin = sdp.find("\r\no=") + 2;
        return sdp.substr(begin, sdp.find("\r\n", begin) - begin);
    }

    std::string everything() { return write_saved_state(instrument_.saved_state()); }

    TaiTime now_{1000, 0};
    int changes_ = 0;
    Instrument instrument_{Configuration(), NodeAddress(), [this] { return now_; }, Log()};
};

TEST_F(InstrumentRecordsTest, ALabelGivesThatResourceAVersion)
{
    now_ = {2000, 5};
    instrument_.change_records(
        [](Records& records) { set_text(records.node.receivers[3].label, "Camera 4"); });
    EXPECT_THAT(advanced(instrument_), ElementsAre("receivers[3] 2000:5"));
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(instrument_.configuration().labels.receivers[3], "Camera 4");
    EXPECT_EQ(changes_, 1);
    instrument_.read([](Records& records) {
        EXPECT_STREQ(records.node.receivers[3].label, "Camera 4");
        EXPECT_EQ(records.node.version_seconds, 2000U);
        EXPECT_EQ(records.node.version_nanoseconds, 5);
    });
}

TEST_F(InstrumentRecordsTest, AKindIsCountedOnce)
{
    instrument_.change_records([](Records& records) {
        set_text(records.node.label, "Rack 7");
        for (RECEIVER_IS04_ST& receiver : records.node.receivers)
            set_text(receiver.description, "Spare");
    });
    EXPECT_EQ(counters_of(instrument_), (Counters{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(advanced(instrument_).size(), 25U);
    EXPECT_EQ(changes_, 1);
}

// The clock has not moved on: a version increases all the same.
TEST_F(InstrumentRecordsTest, VersionsAdvanceThoughTheClockStands)
{
    for (const char* const label : {"A", "B"})
        instrument_.change_records(
            [=](Records& records) { set_text(records.node.devices[0].label, label); });
    EXPECT_THAT(advanced(instrument_), ElementsAre("devices[0] 1000:2"));
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 0, 0, 2, 0, 0}));
}

TEST_F(InstrumentRecordsTest, WithoutAChangeNothingAdvances)
{
    const std::string before = everything();
    now_ = {2000, 0};
    instrument_.change_records([](Records&) {});
    instrument_.change_records([](Records& records) {
        const std::string label(text_of(records.node.label));
        set_text(records.node.label, "something else");
        set_text(records.node.label, label);
    });
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(changes_, 0);
}

// The node's clock, and the SDP files of all senders.
TEST_F(InstrumentRecordsTest, AnotherGrandmaster)
{
    ASSERT_EQ(origin_of(0), "o=HALDEN 3570764815171147306 1000 IN IP4 192.0.2.10");
    now_ = {2000, 0};
    instrument_.change_records([](Records& records) {
        set_text(records.node.clocks[0].gmid, "00-00-5e-ff-fe-00-53-01");
        set_text(records.connections.ptp_grandmaster_id, "00-00-5E-FF-FE-00-53-01");
    });
    EXPECT_THAT(advanced(instrument_),
                ElementsAre("node 2000:0", "senders[0] 2000:0", "senders[1] 2000:0",
                            "senders[2] 2000:0", "senders[3] 2000:0", "senders[4] 2000:0",
                            "senders[5] 2000:0"));
    EXPECT_EQ(counters_of(instrument_), (Counters{1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(origin_of(0), "o=HALDEN 3570764815171147306 2000 IN IP4 192.0.2.10");
    EXPECT_THAT(instrument_.sdp_file(5),
                HasSubstr("a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-01:127\r\n"));
    EXPECT_EQ(instrument_.configuration().clock.grandmaster, "00-00-5e-ff-fe-00-53-01");
}

void set_1080p50(Records& records)
{
    records.settings.sdp_video_frame_rate = 2;
    records.node.flows[0].grain_rate_numerator = 50;
    records.node.flows[0].grain_rate_denominator = 1;
}

// IS-04 shows the rate in the source too: the corrections are made anew.
TEST_F(InstrumentRecordsTest, AnotherFrameRate)
{
    now_ = {2000, 0};
    instrument_.change_records(set_1080p50);
    EXPECT_THAT(advanced(instrument_),
                ElementsAre("sources[0] 2000:0", "flows[0] 2000:0", "senders[0] 2000:0",
                            "senders[1] 2000:0", "senders[2] 2000:0", "senders[3] 2000:0"));
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 1, 1, 0, 1, 0}));
    EXPECT_THAT(instrument_.sdp_file(3), HasSubstr("exactframerate=50;"));
    EXPECT_THAT(origin_of(3), HasSubstr(" 2000 IN IP4 "));
    EXPECT_THAT(origin_of(4), HasSubstr(" 1000 IN IP4 "));
    const auto source = nlohmann::json::parse(instrument_.read_with_conformance(
        [](Records& records, const std::shared_ptr<const Conformance>& conformance) {
            return conformance->source(NodeApi().make_sourceid(&records.node, 0));
        }));
    EXPECT_EQ(source["grain_rate"], (nlohmann::json{{"numerator", 50}, {"denominator", 1}}));
    EXPECT_EQ(instrument_.configuration().video.frame_rate, FrameRate::fps_50);
}

// A receiver's limits follow the format: set to 4K and not allowed to switch, it refuses 2K.
TEST_F(InstrumentRecordsTest, AnotherPictureSize)
{
    EXPECT_EQ(instrument_.sdp_receiver(0).current_format, current_format_any);
    instrument_.change_records([](Records& records) {
        records.settings.sdp_video_system = 0;
        records.node.flows[0].frame_width = 3840;
        records.node.flows[0].frame_height = 2160;
    });
    EXPECT_EQ(instrument_.sdp_receiver(0).current_format, current_format_4k);
    const auto flow = nlohmann::json::parse(instrument_.read_with_conformance(
        [](Records& records, const std::shared_ptr<const Conformance>& conformance) {
            return conformance->flow(NodeApi().make_flowid(&records.node, 0));
        }));
    EXPECT_EQ(flow["components"][0]["width"], 3840);
    EXPECT_EQ(flow["components"][1]["width"], 1920);
}

TEST_F(InstrumentRecordsTest, AnotherAddressOfAnInterface)
{
    instrument_.change_records([](Records& records) {
        for (CONNECTION_IS05_ST& sender : records.connections.senders) {
            set_text(sender.staged.transport_params[0].source_ip, "192.0.2.99");
            set_text(sender.active.transport_params[0].source_ip, "192.0.2.99");
        }
        for (CONNECTION_IS05_ST& receiver : records.connections.receivers) {
            set_text(receiver.staged.transport_params[0].interface_ip, "192.0.2.99");
            set_text(receiver.active.transport_params[0].interface_ip, "192.0.2.99");
        }
    });
    EXPECT_EQ(instrument_.configuration().interfaces[0].address, "192.0.2.99");
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 0, 0, 0, 1, 1}));
    EXPECT_EQ(advanced(instrument_).size(), 30U);
    // A controller may now ask for this address, and for no other.
    ConnectionPatch patch;
    patch.legs[0].interface_ip = "192.0.2.99";
    EXPECT_EQ(instrument_.change({Side::receiver, 0}, patch).result, ChangeResult::done);
    patch.legs[0].interface_ip = "192.0.2.10";
    EXPECT_EQ(instrument_.change({Side::receiver, 0}, patch).result, ChangeResult::invalid);
}

// The hardware has lost its stream.
TEST_F(InstrumentRecordsTest, SubscriptionsFollowTheActiveHalves)
{
    ConnectionPatch patch;
    patch.master_enable = true;
    patch.peer_id = "0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11";
    patch.activation = ActivationRequest{ActivationMode::immediate, {}, ""};
    ASSERT_EQ(instrument_.change({Side::receiver, 2}, patch).result, ChangeResult::done);
    const auto subscription = [this] {
        return nlohmann::json::parse(instrument_.read([](Records& records) {
            return NodeApi().make_receiverid(&records.node, 2);
        }))["subscription"];
    };
    EXPECT_EQ(subscription(),
              nlohmann::json::parse(
                  R"({"active":true,"sender_id":"0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11"})"));

    now_ = {2000, 0};
    instrument_.change_records(
        [](Records& records) { records.connections.receivers[2].active.master_enable = 0; });
    EXPECT_EQ(subscription(), nlohmann::json::parse(R"({"active":false,"sender_id":null})"));
    EXPECT_THAT(advanced(instrument_), ElementsAre("receivers[2] 2000:0"));
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 0, 0, 0, 0, 2}));
}

// A controller sees it in "active" only, and learns of it by the version.
TEST_F(InstrumentRecordsTest, AnActiveHalfGivesItsResourceAVersion)
{
    now_ = {2000, 0};
    instrument_.change_records([](Records& records) {
        records.connections.receivers[0].active.transport_params[0].destination_port = 6000;
    });
    EXPECT_THAT(advanced(instrument_), ElementsAre("receivers[0] 2000:0"));
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 0, 0, 0, 0, 1}));
}

TEST_F(InstrumentRecordsTest, AStagedHalfGivesNoVersion)
{
    instrument_.change_records([](Records& records) {
        records.connections.receivers[0].staged.transport_params[0].destination_port = 6000;
    });
    EXPECT_THAT(advanced(instrument_), IsEmpty());
    EXPECT_EQ(counters_of(instrument_), (Counters{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(changes_, 1);
}

// "auto" is where it sent at the start, whatever has become active since.
TEST_F(InstrumentRecordsTest, TheStartAddressStays)
{
    ConnectionPatch patch;
    patch.legs[0].destination_ip = "239.1.1.1";
    patch.activation = ActivationRequest{ActivationMode::immediate, {}, ""};
    ASSERT_EQ(instrument_.change({Side::sender, 0}, patch).result, ChangeResult::done);
    instrument_.change_records([](Records& records) { set_text(records.node.label, "Rack 7"); });
    patch.legs[0].destination_ip = "auto";
    ASSERT_EQ(instrument_.change({Side::sender, 0}, patch).result, ChangeResult::done);
    instrument_.read([](Records& records) {
        EXPECT_STREQ(records.connections.senders[0].active.transport_params[0].destination_ip,
                     "233.252.0.11");
    });
}

TEST_F(InstrumentRecordsTest, WhatIsTheInstrumentsOwnStays)
{
    const std::string before = everything();
    instrument_.change_records([](Records& records) {
        set_text(records.node.version, "9:9");
        set_text(records.node.receivers[0].version, "not a version");
        records.node.version_seconds = 9;
        records.sdp_sessions[0] = {9, 9};
        set_text(records.connections.sdp_session_id, "9");
        set_text(records.connections.senders[0].staged.mode, "activate_immediate");
        records.node.senders[0].subscription[0].active = 0;
    });
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(changes_, 0);
    EXPECT_EQ(origin_of(0), "o=HALDEN 3570764815171147306 1000 IN IP4 192.0.2.10");
    instrument_.read([](Records& records) {
        EXPECT_STREQ(records.connections.senders[0].staged.mode, "null");
        EXPECT_EQ(records.node.senders[0].subscription[0].active, 1);
    });
}

TEST_F(InstrumentRecordsTest, WhatCannotChangeIsRefused)
{
    struct Row
    {
        void (*change)(Records&);
        const char* beginning;
    };
    const Row table[] = {
        {[](Records& r) { set_text(r.node.senders[2].id, "0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11"); },
         "records: node.senders[2].id is \"0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11\", allowed is \""},
        {[](Records& r) { set_text(r.node.id, ""); }, "records: node.id is \"\", allowed is \""},
        {[](Records& r) { r.node.receivers_count = 4; },
         "records: node.receivers_count is 4, allowed is 24, as at the start"},
        {[](Records& r) { r.selection.sender_filter = 0; },
         "records: selection.sender_filter is 0, allowed is 1, as at the start"},
        {[](Records& r) { set_text(r.node.href, "http://192.0.2.1/"); },
         "records: node.href is \"http://192.0.2.1/\", allowed is \"http://127.0.0.1:3000/\", as "
         "at the "
         "start"},
        {[](Records& r) { r.node.endpoints[r.node.endpoints_count++] = r.node.endpoints[0]; },
         "records: node.endpoints_count is 2, allowed is 1, as at the start"},
        {[](Records& r) { r.node.endpoints[0].port = 80; },
         "records: node.endpoints[0].port is 80, allowed is 3000, as at the start"},
        {[](Records& r) { set_text(r.node.devices[0].controls[0].href, "http://192.0.2.1/"); },
         "records: node.devices[0].controls[0].href is \"http://192.0.2.1/\", allowed is "
         "\"http://127.0.0.1:3000/x-nmos/connection/v1.0/\", as at the start"},
        {[](Records& r) { set_text(r.node.senders[0].manifest_href, "http://192.0.2.1/"); },
         "records: node.senders[0].manifest_href is \"http://192.0.2.1/\", allowed is "
         "\"http://127.0.0.1:3000/x-nmos/connection/v1.0/single/senders/"
         "318de7ae-40b\"... (110 bytes), as at the start"},
        {[](Records& r) { set_text(r.node.receivers[9].device_id, ""); },
         "records: node.receivers[9].device_id is \"\", allowed is \""},
        {[](Records& r) { set_text(r.node.devices[0].receivers[9], ""); },
         "records: node.devices[0].receivers[9] is \"\", allowed is \""},
        {[](Records& r) { set_text(r.node.flows[1].source_id, ""); },
         "records: node.flows[1].source_id is \"\", allowed is \""},
        {[](Records& r) { r.settings.sdp_video_system = 7; },
         "records: settings.sdp_video_system is 7, allowed are 0 (2160 lines), 2 (1080 lines), 4 "
         "(720 "
         "lines)"},
        {[](Records& r) { set_text(r.node.clocks[0].name, "clock"); },
         "records: node.clocks[0].name is \"clock\", "},
        {[](Records& r) { std::memset(r.node.label, 'x', sizeof r.node.label); },
         "records: node.label "},
        {[](Records& r) { r.node.devices[0].controls_count = 100; },
         "records: node.devices[0].controls_count is 100, allowed is 1 to 8"},
    };
    const std::string before = everything();
    for (const Row& row : table)
        EXPECT_THAT(refusal_of(row.change), testing::StartsWith(row.beginning));
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(changes_, 0);
}

TEST_F(InstrumentRecordsTest, AnExceptionChangesNothing)
{
    const std::string before = everything();
    try {
        instrument_.change_records([](Records& records) {
            set_text(records.node.label, "half a change");
            throw std::runtime_error("the hardware does not answer");
        });
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the hardware does not answer");
    }
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(changes_, 0);
}

TEST_F(InstrumentRecordsTest, AStagedHalfIsLockedWhileAnActivationIsScheduled)
{
    ConnectionPatch patch;
    patch.activation = ActivationRequest{ActivationMode::scheduled_absolute, {3000, 0}, "3000:0"};
    ASSERT_EQ(instrument_.change({Side::receiver, 1}, patch).result, ChangeResult::accepted);
    const auto change = [](Records& records) {
        records.connections.receivers[1].staged.master_enable = 1;
    };
    EXPECT_THAT(
        refusal_of(change),
        testing::StartsWith("records: connections.receivers[1].staged is changed, allowed is no "
                            "change: receivers/"));
    // Everything else may change, and the activation stays.
    instrument_.change_records([](Records& records) { set_text(records.node.label, "Rack 7"); });
    EXPECT_EQ(instrument_.status().pending.size(), 1U);
    instrument_.read([](Records& records) {
        EXPECT_STREQ(records.connections.receivers[1].staged.mode, "activate_scheduled_absolute");
    });
}

// Whoever changes records does so again after a restart, before the state is restored.
TEST_F(InstrumentRecordsTest, VersionsSurviveARestart)
{
    const auto change = [](Records& records) {
        set_text(records.node.receivers[3].label, "Camera 4");
        set_1080p50(records);
    };
    now_ = {2000, 0};
    instrument_.change_records(change);
    const SavedState saved = parse_saved_state(write_saved_state(instrument_.saved_state()));
    const std::string sdp = instrument_.sdp_file(0);

    now_ = {3000, 0};
    Instrument restarted(
        Configuration(), NodeAddress(), [this] { return now_; }, Log());
    restarted.change_records(change);
    EXPECT_THAT(restarted.restore(saved), IsEmpty());
    EXPECT_EQ(write_saved_state(restarted.saved_state()), write_saved_state(saved));
    EXPECT_EQ(restarted.sdp_file(0), sdp);

    // Without the change they read differently, and have later versions.
    Instrument other(
        Configuration(), NodeAddress(), [this] { return now_; }, Log());
    other.restore(saved);
    EXPECT_THAT(advanced(other), testing::IsSupersetOf({"receivers[3] 3000:0", "flows[0] 3000:0"}));
    EXPECT_THAT(other.sdp_file(0), HasSubstr(" 3000 IN IP4 "));
}

// As few as there can be: a sender of each kind, and four receivers of video.
std::unique_ptr<Records> own_records()
{
    auto records = make_records(Configuration(), {"203.0.113.9", 9}, {5, 0});
    records->selection = {1, 2, 0};
    NMOS_IS04_ST& node = records->node;
    set_text(node.id, "0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11");
    set_text(node.devices[0].node_id, "0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11");
    set_text(node.label, "Own");
    for (int i = 1; i < 4; ++i) {
        node.senders[i] = SENDER_IS04_ST();
        records->connections.senders[i] = CONNECTION_IS05_ST();
        set_text(node.devices[0].senders[i], "");
    }
    node.receivers_count = 4;
    node.devices[0].receiver_ids_count = 4;
    for (int i = 4; i < 24; ++i) {
        node.receivers[i] = RECEIVER_IS04_ST();
        records->connections.receivers[i] = CONNECTION_IS05_ST();
        set_text(node.devices[0].receivers[i], "");
    }
    set_text(records->connections.receivers[0].active.transport_params[1].interface_ip, "null");
    records->connections.senders[5].active.master_enable = 0;
    set_text(records->connections.sdp_session_id, "");
    return records;
}

FilledRecords adopted(const Records& records)
{
    Configuration rest;
    rest.serial_number = "own";
    return adopt_records(records.node, records.connections, records.settings, records.selection,
                         rest, {"192.0.2.10", 80}, {1000, 0});
}

TEST(AdoptedRecords, HaveTheirIdsAndTheHostsAddress)
{
    Instrument instrument(
        adopted(*own_records()), {"192.0.2.10", 80},
        [] {
            return TaiTime{1000, 0};
        },
        Log());
    EXPECT_EQ(instrument.shown_resources().size(), 15U); // 1 + 1 + 3 + 3 + 3 + 4
    EXPECT_EQ(instrument.shown_resources()[0].id, "0d4f4b1b-2c1a-4f3e-9b39-6c7a0e4b5d11");
    EXPECT_EQ(instrument.index().size(ResourceKind::sender), 3U);
    EXPECT_EQ(instrument.index().size(ResourceKind::receiver), 4U);
    EXPECT_EQ(instrument.configuration().node.label, "Own");
    EXPECT_EQ(instrument.configuration().serial_number, "own");
    instrument.read([](Records& records) {
        const NMOS_IS04_ST& node = records.node;
        EXPECT_STREQ(node.href, "http://192.0.2.10:80/");
        EXPECT_STREQ(node.endpoints[0].host, "192.0.2.10");
        EXPECT_STREQ(node.devices[0].controls[0].href,
                     "http://192.0.2.10:80/x-nmos/connection/v1.0/");
        EXPECT_STREQ(records.connections.receivers[0].active.transport_params[1].interface_ip,
                     "198.51.100.10");
        EXPECT_EQ(node.senders[5].subscription[0].active, 0);
        EXPECT_EQ(node.senders[4].subscription[0].active, 1);
    });
    EXPECT_THAT(instrument.sdp_file(0),
                HasSubstr("o=HALDEN 3570764815171147306 1000 IN IP4 192.0.2.10\r\n"));
}

TEST(AdoptedRecords, AreSavedAndRestored)
{
    TaiTime now = {1000, 0};
    const auto clock = [&] { return now; };
    Instrument instrument(adopted(*own_records()), {"192.0.2.10", 80}, clock, Log());
    ConnectionPatch patch;
    patch.master_enable = true;
    patch.activation = ActivationRequest{ActivationMode::immediate, {}, ""};
    now = {2000, 0};
    ASSERT_EQ(instrument.change({Side::receiver, 3}, patch).result, ChangeResult::done);
    const std::string saved = write_saved_state(instrument.saved_state());
    Instrument restarted(adopted(*own_records()), {"192.0.2.10", 80}, clock, Log());
    EXPECT_THAT(restarted.restore(parse_saved_state(saved)), IsEmpty());
    EXPECT_EQ(write_saved_state(restarted.saved_state()), saved);
}

TEST(AdoptedRecords, AreRefusedWithAllFindings)
{
    const auto records = own_records();
    records->selection.receiver_filter = 0;
    try {
        adopted(*records);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(),
                     "records: node.receivers_count is 4, allowed is 24 with these selectors");
    }
    const Records cleared{};
    EXPECT_THROW(adopted(cleared), std::invalid_argument);
}

// Readers see one state or the next, and what corrects it.
TEST(ChangedRecords, AreSeenWhole)
{
    constexpr int rounds = 1000;
    Instrument instrument(Configuration(), NodeAddress(), tai_now, Log());
    std::thread writer([&] {
        for (int i = 0; i < rounds; ++i)
            instrument.change_records([i](Records& records) {
                set_text(records.node.label, std::to_string(i));
                set_text(records.node.devices[0].label, std::to_string(i));
                records.settings.sdp_video_system = i % 2 == 0 ? 4 : 2;
                records.node.flows[0].frame_width = i % 2 == 0 ? 1280 : 1920;
                records.node.flows[0].frame_height = i % 2 == 0 ? 720 : 1080;
            });
    });
    std::thread reader([&] {
        for (int i = 0; i < rounds; ++i) {
            std::shared_ptr<const Conformance> conformance;
            bool whole = true;
            const auto flow = nlohmann::json::parse([&] {
                const std::string text =
                    instrument.read_with_conformance([&](Records& records, const auto& its) {
                        conformance = its;
                        const auto label = text_of(records.node.label);
                        whole = label == text_of(records.node.devices[0].label) ||
                                label == "QX3100/QX3300";
                        return NodeApi().make_flowid(&records.node, 0);
                    });
                return conformance->flow(text);
            }());
            EXPECT_TRUE(whole);
            const int width = flow["frame_width"];
            EXPECT_EQ(flow["components"][1]["width"], width / 2);
            EXPECT_THAT(instrument.configuration().labels.senders[0], Not(IsEmpty()));
            EXPECT_THAT(instrument.resource_name({Side::receiver, 0}),
                        testing::StartsWith("receivers/"));
            EXPECT_EQ(instrument.sdp_receiver(0).current_format, current_format_any);
        }
    });
    std::thread controller([&] {
        for (int i = 0; i < rounds; ++i) {
            ConnectionPatch patch;
            patch.master_enable = i % 2 == 0;
            patch.activation = ActivationRequest{ActivationMode::immediate, {}, ""};
            EXPECT_EQ(instrument.change({Side::receiver, 0}, patch).result, ChangeResult::done);
        }
    });
    writer.join();
    reader.join();
    controller.join();
    EXPECT_EQ(instrument.configuration().node.label, "999");
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
//
// The steps of a connection change, each alone. What a controller sees of them is tested over HTTP.

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "connection/activate_staged.h"
#include "connection/parse_patch.h"
#include "connection/read_transport_file.h"
#include "connection/stage_patch.h"
#include "connection/validate_patch.h"
#include "records/fill_records.h"
#include "records/record_text.h"
#include "support/same_bytes.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

class ConnectionSteps : public testing::Test
{
protected:
    ConnectionFacts facts(Side side, std::size_t index) const
    {
        return facts_about(Configuration(), records_->node, {side, index});
    }

    static ConnectionPatch parse(const json& document, Side side)
    {
        Findings findings;
        ConnectionPatch patch = parse_patch(document, side, findings);
        EXPECT_EQ(findings.text(), "");
        return patch;
    }

    const std::unique_ptr<Records> records_ = make_records(Configuration(), NodeAddress(), {1, 0});
};

TEST_F(ConnectionSteps, ParseNamesOnlyWhatIsThere)
{
    EXPECT_EQ(parse(json::object(), Side::sender), ConnectionPatch());
    EXPECT_EQ(parse({{"transport_params", {json::object(), json::object()}}}, Side::receiver),
              ConnectionPatch());

    ConnectionPatch expected;
    expected.peer_id = "null";
    expected.master_enable = false;
    expected.legs[1].destination_ip = "null";
    expected.legs[1].destination_port = 5004;
    EXPECT_EQ(parse({{"sender_id", nullptr},
                     {"master_enable", false},
                     {"transport_params",
                      {json::object(), {{"multicast_ip", nullptr}, {"destination_port", "auto"}}}}},
                    Side::receiver),
              expected);

    expected = {};
    expected.activation = ActivationRequest{ActivationMode::scheduled_absolute, {5, 7}, "05:7"};
    EXPECT_EQ(parse({{"activation",
                      {{"mode", "activate_scheduled_absolute"}, {"requested_time", "05:7"}}}},
                    Side::sender),
              expected);
}

TEST_F(ConnectionSteps, FindingsAreBounded)
{
    json document = json::object();
    for (int i = 0; i < 1000; ++i)
        document["unknown" + std::to_string(i)] = i;
    Findings findings;
    parse_patch(document, Side::sender, findings);
    EXPECT_FALSE(findings.empty());
    EXPECT_LT(findings.text().size(), 4000U);
}

TEST_F(ConnectionSteps, ValidateStageAndActivateLeaveTheirArgumentsAlone)
{
    const auto before = std::make_unique<NMOS_IS05_ST>(records_->connections);
    const ConnectionFacts receiver = facts(Side::receiver, 0);
    const CONNECTION_HALF_IS05_ST& staged = records_->connections.receivers[0].staged;
    ConnectionPatch patch = parse({{"master_enable", true}}, Side::receiver);
    patch.legs[0].interface_ip = "auto";
    Findings findings;
    const ConnectionPatch valid = validate_patch(patch, receiver, staged, findings);
    EXPECT_EQ(valid, patch);
    const CONNECTION_HALF_IS05_ST half = stage_patch(staged, valid);
    const CONNECTION_HALF_IS05_ST active =
        activate_staged(half, receiver, {"activate_immediate", "null", "3:4"});
    EXPECT_TRUE(same_bytes(*before, records_->connections));

    EXPECT_EQ(half.master_enable, 1);
    EXPECT_EQ(text_of(half.transport_params[0].interface_ip), "auto");
    EXPECT_EQ(text_of(half.mode), "null");
    EXPECT_EQ(text_of(active.transport_params[0].interface_ip), "192.0.2.10");
    EXPECT_EQ(text_of(active.mode), "activate_immediate");
    EXPECT_EQ(text_of(active.requested_time), "null");
    EXPECT_EQ(text_of(active.activation_time), "3:4");
}

TEST_F(ConnectionSteps, ASendersAutoIsResolved)
{
    CONNECTION_HALF_IS05_ST staged = records_->connections.senders[4].staged;
    for (CONNECTION_LEG_IS05_ST& leg : staged.transport_params) {
        set_text(leg.source_ip, "auto");
        set_text(leg.destination_ip, "auto");
    }
    const CONNECTION_HALF_IS05_ST active =
        activate_staged(staged, facts(Side::sender, 4), ActivationTexts());
    EXPECT_EQ(text_of(active.transport_params[0].source_ip), "192.0.2.10");
    EXPECT_EQ(text_of(active.transport_params[1].source_ip), "198.51.100.10");
    EXPECT_EQ(text_of(active.transport_params[0].destination_ip), "233.252.0.15");
    EXPECT_EQ(text_of(active.transport_params[1].destination_ip), "233.252.0.25");
}

TEST_F(ConnectionSteps, EveryActiveHalfPassesTheRecordCheck)
{
    for (CONNECTION_IS05_ST& receiver : records_->connections.receivers) {
        ConnectionPatch patch;
        patch.transport_file = TransportFilePatch{"m=video 5004 RTP/AVP 96\nc=IN IP4 233.252.0.1\n",
                                                  "application/sdp"};
        Findings findings;
        ConnectionFacts video = facts(Side::receiver, 0);
        receiver.staged =
            stage_patch(receiver.staged, validate_patch(patch, video, receiver.staged, findings));
        EXPECT_TRUE(findings.empty()) << findings.text();
        receiver.active = activate_staged(receiver.staged, video, ActivationTexts());
    }
    EXPECT_EQ(nmos_instrument::check_record(records_->connections), std::vector<std::string>());
}

} // namespace
} // namespace nmos_instrument::host

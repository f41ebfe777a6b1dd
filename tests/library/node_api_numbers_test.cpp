// SPDX-License-Identifier: Apache-2.0
//
// How the Node API writes numbers, and which of them it refuses.

#include "nmos_instrument/NodeApi.h"

#include <cfloat>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/body_parts.h"
#include "support/example_node.h"
#include "support/example_node_texts.h"

namespace {

using ::testing::HasSubstr;

struct NumberText
{
    double value;
    const char* text;
};

TEST(NodeApiNumbers, AreWrittenInFullOrWithSeventeenDigits)
{
    const NumberText table[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-1, "-1"},
        {25, "25"},
        {3212, "3212"},
        {8080, "8080"},
        {65535, "65535"},
        {4294967296.0, "4294967296"},
        {1e15, "1000000000000000"},
        {9007199254740991.0, "9007199254740991"},
        {-9007199254740991.0, "-9007199254740991"},
        {9007199254740992.0, "9007199254740992"},
        {-9007199254740992.0, "-9007199254740992"},
        {9007199254740994.0, "9007199254740994"},
        {1e16, "10000000000000000"},
        {12345678901234568.0, "12345678901234568"},
        {1e17, "1e+17"},
        {-1e22, "-1e+22"},
        {1e100, "1e+100"},
        {1e300, "1.0000000000000001e+300"},
        {DBL_MAX, "1.7976931348623157e+308"},
        {-DBL_MAX, "-1.7976931348623157e+308"},
        {0.5, "0.5"},
        {-0.5, "-0.5"},
        {2.25, "2.25"},
        {0.1, "0.10000000000000001"},
        {59.94, "59.939999999999998"},
        {1.0 / 3.0, "0.33333333333333331"},
        {4503599627370495.5, "4503599627370495.5"},
        {0.0001, "0.0001"},
        {0.00001, "1.0000000000000001e-05"},
        {1e-300, "1e-300"},
        {DBL_MIN, "2.2250738585072014e-308"},
        {5e-324, "4.9406564584124654e-324"},
        {-5e-324, "-4.9406564584124654e-324"},
        {1e-310, "9.9999999999999694e-311"},
    };
    const auto rec = empty_node();
    rec->endpoints_count = 1;
    rec->flows_count = 2;
    for (const auto& [value, text] : table) {
        SCOPED_TRACE(text);
        rec->endpoints[0].port = value;
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    HasSubstr(std::string(R"("port":)") + text + R"(,"protocol")"));
        rec->flows[1].sample_rate_numerator = value;
        EXPECT_THAT(NodeApi().make_flowid(rec.get(), 1),
                    HasSubstr(std::string(R"({"denominator":1,"numerator":)") + text + "}"));
    }
}

TEST(NodeApiNumbers, AnEndpointPortThatIsNotFiniteThrowsWithoutText)
{
    for (const double port : not_finite) {
        SCOPED_TRACE(port);
        const auto rec = example_node();
        rec->endpoints[0].port = port;
        EXPECT_EQ(overflow_text([&] { NodeApi().make_self(rec.get()); }), "");
    }
}

TEST(NodeApiNumbers, APortThatIsNotFiniteThrowsAlsoInAnEndpointThatIsNotShown)
{
    for (const double port : not_finite) {
        SCOPED_TRACE(port);
        const auto rec = example_node();
        rec->endpoints[2].port = port;
        EXPECT_EQ(overflow_text([&] { NodeApi().make_self(rec.get()); }), "");
        rec->endpoints_count = 2;
        EXPECT_THAT(NodeApi().make_self(rec.get()), HasSubstr(R"("port":3212,)"));
    }
}

TEST(NodeApiNumbers, NoPortIsReadWithoutEndpoints)
{
    const auto rec = example_node();
    rec->endpoints_count = 0;
    rec->endpoints[0].port = not_finite[0];
    EXPECT_NO_THROW(NodeApi().make_self(rec.get()));
}

TEST(NodeApiNumbers, AFlowNumberThatIsWrittenMustBeFinite)
{
    struct Case
    {
        int flow;
        const char* name;
        double FLOW_IS04_ST::*number;
    };
    const Case written[] = {
        {0, "frame_width", &FLOW_IS04_ST::frame_width},
        {0, "frame_height", &FLOW_IS04_ST::frame_height},
        {0, "bit_depth", &FLOW_IS04_ST::bit_depth},
        {0, "grain_rate_denominator", &FLOW_IS04_ST::grain_rate_denominator},
        {0, "grain_rate_numerator", &FLOW_IS04_ST::grain_rate_numerator},
        {1, "bit_depth", &FLOW_IS04_ST::bit_depth},
        {1, "grain_rate_denominator", &FLOW_IS04_ST::grain_rate_denominator},
        {1, "grain_rate_numerator", &FLOW_IS04_ST::grain_rate_numerator},
        {1, "sample_rate_numerator", &FLOW_IS04_ST::sample_rate_numerator},
    };
    for (const Case& one : written) {
        for (const double value : not_finite) {
            SCOPED_TRACE(testing::Message() << one.name << ' ' << one.flow << ' ' << value);
            const auto rec = example_node();
            rec->flows[one.flow].*one.number = value;
            EXPECT_EQ(overflow_text([&] { NodeApi().make_flowid(rec.get(), one.flow); }), "");
            EXPECT_EQ(overflow_text([&] { NodeApi().make_flows(rec.get()); }), "");
            EXPECT_NO_THROW(NodeApi().make_flowid(rec.get(), 1 - one.flow));
        }
    }
}

TEST(NodeApiNumbers, AFlowNumberThatIsNotWrittenMayBeAnything)
{
    for (const double value : not_finite) {
        SCOPED_TRACE(value);
        const auto rec = example_node();
        rec->flows[0].sample_rate_numerator = value;
        rec->flows[1].frame_width = value;
        rec->flows[1].frame_height = value;
        for (int flow : {2, 3}) {
            rec->flows[flow].frame_width = value;
            rec->flows[flow].frame_height = value;
            rec->flows[flow].bit_depth = value;
            rec->flows[flow].grain_rate_denominator = value;
            rec->flows[flow].grain_rate_numerator = value;
            rec->flows[flow].sample_rate_numerator = value;
        }
        EXPECT_EQ(NodeApi().make_flows(rec.get()), NodeApi().make_flows(example_node().get()));
    }
}

TEST(NodeApiNumbers, OfAFlowFromItsCountOnAreNotLookedAt)
{
    const auto rec = example_node();
    rec->flows_count = 1;
    rec->flows[1].bit_depth = not_finite[0];
    EXPECT_EQ(NodeApi().make_flows(rec.get()), "[" + example_texts::flow_0_plain + "]");
}

TEST(NodeApiNumbers, OfAFlowMayBeMinusZeroOrFractions)
{
    const auto rec = example_node();
    rec->flows[0].frame_width = -0.0;
    rec->flows[0].frame_height = 0.5;
    rec->flows[0].bit_depth = 0.1;
    rec->flows[0].grain_rate_denominator = 9007199254740992.0;
    rec->flows[0].grain_rate_numerator = 1e300;
    const std::string body = NodeApi().make_flowid(rec.get(), 0);
    EXPECT_THAT(body, HasSubstr(R"({"bit_depth":0.10000000000000001,"height":0.5,"name":"Y",)"
                                R"("width":-0},{"bit_depth":0.10000000000000001,"height":0.5,)"
                                R"("name":"Cb","width":-0},{"bit_depth":0.10000000000000001,)"
                                R"("height":0.5,"name":"Cr","width":-0}])"));
    EXPECT_THAT(body, HasSubstr(R"("frame_height":0.5,"frame_width":-0,"grain_rate":)"
                                R"({"denominator":9007199254740992,)"
                                R"("numerator":1.0000000000000001e+300},)"));
}

} // namespace

// SPDX-License-Identifier: Apache-2.0

#include "text/metrics_output.h"

#include <chrono>
#include <cstdint>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

TEST(MetricsOutput, AMetricOfEachType)
{
    MetricsOutput metrics;
    metrics.counter("parcels_total", "What was sent.");
    metrics.value(UINT64_MAX, {{"to", "here"}, {"by", "mail"}});
    metrics.value(0, {{"to", "there"}});
    metrics.gauge("parcels_waiting", "What was not.");
    metrics.value(7);
    metrics.gauge("walk_seconds", "The last one.");
    metrics.value(61'000'042us);
    metrics.summary("ride_seconds", "All together.", 999'999us, 3);
    metrics.counter("nothing_total", "Has not happened yet.");
    EXPECT_EQ(metrics.take(), "# HELP parcels_total What was sent.\n"
                              "# TYPE parcels_total counter\n"
                              "parcels_total{to=\"here\",by=\"mail\"} 18446744073709551615\n"
                              "parcels_total{to=\"there\"} 0\n"
                              "# HELP parcels_waiting What was not.\n"
                              "# TYPE parcels_waiting gauge\n"
                              "parcels_waiting 7\n"
                              "# HELP walk_seconds The last one.\n"
                              "# TYPE walk_seconds gauge\n"
                              "walk_seconds 61.000042\n"
                              "# HELP ride_seconds All together.\n"
                              "# TYPE ride_seconds summary\n"
                              "ride_seconds_sum 0.999999\n"
                              "ride_seconds_count 3\n"
                              "# HELP nothing_total Has not happened yet.\n"
                              "# TYPE nothing_total counter\n");
}

TEST(MetricsOutput, LabelsMayBeAnyText)
{
    MetricsOutput metrics;
    metrics.gauge("a", "b");
    metrics.value(1, {{"label", "\\ \" \n {}=, \xc3\xa4"}});
    EXPECT_EQ(metrics.take(), "# HELP a b\n"
                              "# TYPE a gauge\n"
                              "a{label=\"\\\\ \\\" \\n {}=, \xc3\xa4\"} 1\n");
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0

#include "routes/asks_for_html.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(AsksForHtml, Browsers)
{
    for (const char* const accept :
         {"text/html", "TEXT/HTML", " text/html ", "text/html;q=0.1", "text/html; q=0.001",
          "text/html;level=1", "application/xhtml+xml", "application/json, text/html",
          "text/html;q=0, application/xhtml+xml", "text/html;level=1;Q=1.000", "text/html;q=",
          "text/html,application/xhtml+xml,application/xml;q=0.9,image/webp,*/*;q=0.8"})
        EXPECT_TRUE(asks_for_html(accept)) << accept;
}

TEST(AsksForHtml, Others)
{
    EXPECT_FALSE(asks_for_html(std::nullopt));
    for (const char* const accept :
         {"", "*/*", "text/*", "application/json", "text/event-stream", "text/html;q=0",
          "text/html ; q=0.000", "text/html; level=1; q=0.", "text/htmlx", "text", "html", ",", ";",
          "x;text/html", "application/json;text/html", "text/html;q=0,*/*"})
        EXPECT_FALSE(asks_for_html(accept)) << accept;
}

} // namespace
} // namespace nmos_instrument::host

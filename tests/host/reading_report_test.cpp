// SPDX-License-Identifier: Apache-2.0

#include "sdp/reading_report.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

const Configuration configuration;

std::string report_of(const SdpReading& reading, const std::vector<std::string>& hints = {})
{
    return reading_report({reading, Essence::audio, configuration.interfaces, hints});
}

TEST(ReadingReport, OfAFileThatIsTaken)
{
    SdpReading reading;
    reading.findings.add(SdpCode::empty_line, 2, "empty line");
    reading.legs[0] = {"233.252.0.1", true, "203.0.113.1", 5004, 7};
    reading.legs[1] = {"198.51.100.10", false, "", 5006, 12};
    reading.format.rtp_payload_type = "97 ";
    reading.format.sampling = "YCbCr-4:2:2";
    reading.origin = "- 1 1 IN IP4 203.0.113.1";
    EXPECT_EQ(report_of(reading, {"one hint", "another"}), R"({
 "verdict": "taken",
 "receiver": "audio",
 "findings": [
  {
   "line": 2,
   "code": "SDP009",
   "title": "There is an empty line",
   "severity": "warning",
   "text": "empty line",
   "allowed": null
  }
 ],
 "more_findings": 0,
 "legs": [
  {
   "leg": 1,
   "address": "233.252.0.1",
   "multicast": true,
   "source": "203.0.113.1",
   "port": 5004,
   "line": 7,
   "interface": {
    "name": "media1",
    "address": "192.0.2.10"
   }
  },
  {
   "leg": 2,
   "address": "198.51.100.10",
   "multicast": false,
   "source": null,
   "port": 5006,
   "line": 12,
   "interface": {
    "name": "media2",
    "address": "198.51.100.10"
   }
  }
 ],
 "origin": "- 1 1 IN IP4 203.0.113.1",
 "format": {
  "payload_type": "97",
  "sampling": "YCbCr-4:2:2",
  "depth": null,
  "size": null,
  "frame_rate": null,
  "colorimetry": null,
  "transfer_characteristic": null,
  "packing_mode": null
 },
 "hints": [
  "one hint",
  "another"
 ]
})");
}

TEST(ReadingReport, OfAFileThatIsRefused)
{
    SdpReading reading;
    reading.findings.add(SdpCode::empty, 0, "nothing", "something");
    EXPECT_EQ(report_of(reading), R"({
 "verdict": "refused",
 "receiver": "audio",
 "findings": [
  {
   "line": null,
   "code": "SDP001",
   "title": "The file is empty",
   "severity": "error",
   "text": "nothing",
   "allowed": "something"
  }
 ],
 "more_findings": 0,
 "legs": [],
 "origin": null,
 "format": {
  "payload_type": null,
  "sampling": null,
  "depth": null,
  "size": null,
  "frame_rate": null,
  "colorimetry": null,
  "transfer_characteristic": null,
  "packing_mode": null
 },
 "hints": []
})");
}

TEST(ReadingReport, BytesThatAreNotUtf8AreReplaced)
{
    SdpReading reading;
    reading.origin = "caf\xc3\xa9 \xe9\xff \x1b";
    reading.format.colorimetry = std::string("BT\0\x80\"", 5);
    const std::string report = report_of(reading);
    EXPECT_NE(report.find("\"origin\": \"caf\xc3\xa9 \xef\xbf\xbd\xef\xbf\xbd \\u001b\",\n"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find("\"colorimetry\": \"BT\\u0000\xef\xbf\xbd\\\"\",\n"), std::string::npos)
        << report;
}

} // namespace
} // namespace nmos_instrument::host

// SPDX-License-Identifier: Apache-2.0
"use strict";
// SDP files that receivers are given.

// Line 10 has the format of the first medium.
function twoLegs({
  first = "233.252.0.101",
  second = "233.252.0.102",
  name = "test",
  rate = 50,
} = {}) {
  const medium = (address, mid) => [
    "m=video 5010 RTP/AVP 96",
    `c=IN IP4 ${address}/64`,
    `a=source-filter: incl IN IP4 ${address} 203.0.113.7`,
    "a=rtpmap:96 raw/90000",
    `a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; exactframerate=${rate}; ` +
      "colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; PM=2110GPM; ",
    `a=mid:${mid}`,
  ];
  return [
    "v=0",
    "o=- 1 1 IN IP4 203.0.113.7",
    `s=${name}`,
    "t=0 0",
    "a=group:DUP one two",
    ...medium(first, "one"),
    ...medium(second, "two"),
    "",
  ].join("\r\n");
}

module.exports = {twoLegs};

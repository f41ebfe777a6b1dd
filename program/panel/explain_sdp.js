// SPDX-License-Identifier: Apache-2.0
//
// What a line of a sender's SDP file means.

import {texts} from "./texts.js";

/// Lines, each with the name of its text, which gets what is in the brackets.
const forms = {
  version: /^v=0$/,
  origin: /^o=\S+ \S+ (\S+) IN IP4 (\S+)$/,
  session: /^s=(.*)$/,
  permanent: /^t=0 0$/,
  group: /^a=group:DUP (\S+) (\S+)$/,
  medium: /^m=(\S+) (\d+) \S+ (\d+)$/,
  multicast: /^c=IN IP4 ([^/]+)\/(\d+)$/,
  unicast: /^c=IN IP4 ([^/]+)$/,
  encoding: /^a=rtpmap:(\d+) ([^/]+)\/(\d+)(?:\/(\d+))?$/,
  format: /^a=fmtp:\d+ (.*?);? *$/,
  filter: /^a=source-filter: ?incl IN IP4 (\S+) (\S+)$/,
  ptp: /^a=ts-refclk:ptp=([^:]+):([^:]+):(\d+)$/,
  localMac: /^a=ts-refclk:localmac=(\S+)$/,
  mediaClock: /^a=mediaclk:direct=(\d+)$/,
  packetTime: /^a=ptime:(\S+)$/,
  mid: /^a=mid:(\S+)$/,
};

/// Empty if there is nothing to say.
export function explain(line) {
  for (const [name, form] of Object.entries(forms)) {
    const found = form.exec(line);
    if (found)
      return texts.sdp[name](...found.slice(1));
  }
  return "";
}

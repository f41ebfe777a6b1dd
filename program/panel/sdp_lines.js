// SPDX-License-Identifier: Apache-2.0
//
// An SDP file line by line, with something to say at each.

import {make} from "./dom.js";

/// `notesOf(line, number)` gives what stands at a line; 0 is the file as a whole.
export function sdpLines(sdp, notesOf) {
  const lines = sdp.replace(/\r?\n$/, "").split(/\r?\n/);
  const item = (line, number) => make("li", {"data-line": number}, make("span.number", String(number || "")),
      make("bdi", line), make("div.notes", notesOf(line, number)));
  return make("ol", {id: "sdp-lines"}, ["", ...lines].map(item));
}

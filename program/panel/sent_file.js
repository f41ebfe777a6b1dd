// SPDX-License-Identifier: Apache-2.0
//
// The SDP file that a sender offers, explained.

import {make, setText} from "./dom.js";
import {explain} from "./explain_sdp.js";
import {pathOf} from "./model.js";
import {request} from "./requests.js";
import {sdpLines} from "./sdp_lines.js";
import {texts} from "./texts.js";

/// Empty if there is no answer.
export async function fileOf(sender) {
  const answer = await request("GET", pathOf("senders", sender, "transportfile"));
  return answer.ok ? answer.body : "";
}

/// Pages of http have no clipboard, but what is selected can be copied.
async function copied(text, parent) {
  if (navigator.clipboard)
    return navigator.clipboard.writeText(text).then(() => true, () => false);
  const {activeElement} = document;
  const area = make("textarea.unseen");
  area.value = text;
  parent.append(area);
  area.select();
  const isDone = document.execCommand("copy");
  area.remove();
  activeElement.focus();
  return isDone;
}

export class SentFile {
  #id;
  #text = "";
  #version = "";
  #lines = make("div");
  #said = make("span", {role: "status"});
  element;

  constructor(id, label) {
    this.#id = id;
    this.element = make("div",
      make("div.actions",
        make("button", {type: "button", onclick: () => this.#copy()}, texts.copy),
        make("a.button", {href: pathOf("senders", id, "transportfile"), download: `${label.replace(/\W+/g, "_")}.sdp`},
            texts.download),
        this.#said),
      this.#lines);
  }

  /// A sender with another version may have another file.
  async update(version) {
    if (version === this.#version)
      return;
    this.#version = version;
    this.#text = await fileOf(this.#id);
    setText(this.#said, this.#text ? "" : texts.noAnswer);
    if (!this.#text)
      setTimeout(() => { this.#version = ""; }, 1000);
    this.#lines.replaceChildren(sdpLines(this.#text, line => make("p.explanation", explain(line))));
  }

  async #copy() {
    setText(this.#said, await copied(this.#text, this.element) ? texts.copied : texts.notCopied);
  }
}

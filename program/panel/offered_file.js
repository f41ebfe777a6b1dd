// SPDX-License-Identifier: Apache-2.0
//
// An SDP file that a receiver is offered: checked while it is typed, pasted or dropped, before anything
// changes.

import {legs} from "./connection.js";
import {make, setAttribute, setText} from "./dom.js";
import {request} from "./requests.js";
import {sdpLines} from "./sdp_lines.js";
import {fileOf} from "./sent_file.js";
import {texts} from "./texts.js";

const checkAfter = 250; // ms without a key

function shownFinding({code, severity, text, allowed, title}) {
  return make("p.finding", {"data-code": code, "data-severity": severity},
      make("b", texts.severity[severity]), " ", make("bdi", texts.finding(text, allowed)), " ",
      make("span.code", `${code}: ${title}`));
}

export class OfferedFile {
  #id;
  #onVerdict;
  #sender;
  #chosen = make("input", {type: "file", hidden: true, onchange: () => this.takeFile(this.#chosen.files[0])});
  #enable = make("input", {type: "checkbox", checked: true});
  #area = make("textarea", {"aria-label": texts.sdpFile, rows: 8, spellcheck: "false", placeholder: texts.pasteHere,
      oninput: () => this.#edited()});
  #verdict = make("p", {id: "sdp-verdict", role: "status"});
  #joined = make("ul", {id: "sdp-legs"});
  #lines = make("div");
  #timer;
  #text = ""; // what is checked, and then sent
  #checks = 0;
  #isTaken = false;
  element;

  /// `senders` are those of this instrument; `onVerdict` is called when `patch` has changed.
  constructor(id, senders, onVerdict) {
    this.#id = id;
    this.#onVerdict = onVerdict;
    this.#sender = make("select", {onchange: () => this.takeSender(this.#sender.value)},
      make("option", {value: ""}, texts.noSender), senders.map(one => make("option", {value: one.id}, one.label)));
    this.element = make("div",
      make("div.actions",
        make("label", texts.sender, " ", this.#sender),
        make("button", {type: "button", onclick: () => this.#chosen.click()}, texts.chooseFile), this.#chosen,
        make("label", this.#enable, texts.enableReceiver)),
      this.#area, this.#verdict, this.#joined, this.#lines);
  }

  /// The body of a PATCH; null while the file is refused or not checked.
  get patch() {
    if (!this.#isTaken)
      return null;
    const patch = {
      sender_id: this.#sender.value || null,
      transport_file: {data: this.#text, type: "application/sdp"},
    };
    return this.#enable.checked ? {...patch, master_enable: true} : patch;
  }

  takeFile(file) {
    this.#take("", file.text().catch(() => ""));
  }

  takeSender(id) {
    if (id !== "")
      this.#take(id, fileOf(id));
  }

  async #take(sender, coming) {
    this.#sender.value = sender;
    const number = this.#begin();
    const text = await coming;
    if (number !== this.#checks)
      return; // something else has been chosen
    this.#area.value = text;
    this.#check(text);
  }

  // A file that has been edited is not the sender's any more.
  #edited() {
    this.#sender.value = "";
    this.#begin();
    this.#timer = setTimeout(() => this.#check(this.#area.value), checkAfter);
  }

  // Whatever was judged before counts no more.
  #begin() {
    clearTimeout(this.#timer);
    this.#judge(false);
    return ++this.#checks;
  }

  #judge(isTaken) {
    this.#isTaken = isTaken;
    this.#onVerdict();
  }

  async #check(text) {
    const number = this.#begin();
    this.#text = text;
    const isEmpty = text.trim() === "";
    const answer = isEmpty ? null : await request("POST", `/check-sdp/${this.#id}`, text, "application/sdp");
    if (number !== this.#checks)
      return; // another check is under way
    if (answer?.ok)
      this.#report(answer.body);
    else
      this.#say(isEmpty ? null : "refused", isEmpty ? "" : texts.refusal(answer), [], []);
  }

  #report({verdict, findings, more_findings: more, legs: joined}) {
    const isTaken = verdict === "taken";
    const errors = findings.filter(one => one.severity === "error").length;
    const join = leg => make("li", {"data-leg": leg + 1}, make("b", texts.leg(leg + 1)), " ",
        texts.joins(joined.find(one => one.leg === leg + 1)));
    const lines = sdpLines(this.#text,
        (_, number) => findings.filter(one => (one.line ?? 0) === number).map(shownFinding));
    this.#say(verdict, isTaken ? texts.taken(findings.length) : texts.refused(errors, more),
        isTaken ? legs.map(join) : [], [lines]);
    if (document.activeElement !== this.#area)
      this.#lines.querySelector(".finding")?.scrollIntoView({block: "nearest"});
    this.#judge(isTaken);
  }

  #say(verdict, sentence, joined, lines) {
    setAttribute(this.#verdict, "data-verdict", verdict);
    setText(this.#verdict, sentence);
    this.#joined.replaceChildren(...joined);
    this.#lines.replaceChildren(...lines);
  }
}

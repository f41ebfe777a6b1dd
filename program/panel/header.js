// SPDX-License-Identifier: Apache-2.0
//
// The display: what the instrument is, its clock, its registration.

import {make, setAttribute, setText} from "./dom.js";
import {localTime, taiDateAndClock, taiOf} from "./tai.js";
import {texts} from "./texts.js";

class Fact {
  #lamp;
  #beside = make("span.beside");

  constructor(parent, term, attributes = {}) {
    this.#lamp = make("span.lamp", attributes, make("span"));
    parent.append(make("div", make("dt", term), make("dd", this.#lamp, this.#beside)));
  }

  /// `state`: "live", "lost", "waiting", "off", or "none" for a fact without a lamp.
  show(state, text, beside) {
    setAttribute(this.#lamp, "data-state", state);
    setText(this.#lamp.firstElementChild, text);
    setText(this.#beside, beside);
  }
}

export class Header {
  #label = make("h1", {dir: "auto"}, texts.instrument);
  #description = make("p", {dir: "auto"});
  #clock = make("span", {id: "tai"}, "--:--:--");
  #date = make("span.beside");
  #facts = make("dl");
  #connection = new Fact(this.#facts, texts.page, {id: "connection", role: "status"});
  #registration = new Fact(this.#facts, texts.registration, {id: "registration"});
  #reference = new Fact(this.#facts, texts.reference);
  #node = new Fact(this.#facts, texts.node);
  #device = new Fact(this.#facts, texts.device);
  #interfaces = new Fact(this.#facts, texts.interfaces);

  constructor(header) {
    header.replaceChildren(make("section", {"aria-label": texts.instrument},
      make("div.name", this.#label, this.#description),
      make("div.time", this.#clock, make("abbr", {title: texts.taiLong}, "TAI"), this.#date),
      this.#facts));
  }

  connectionIs(state) {
    this.#connection.show(state, texts.connection[state], "");
  }

  update(model) {
    const {self, status, layout, device} = model;
    const [clock] = self.clocks;
    document.title = self.label;
    setText(this.#label, self.label);
    setText(this.#description, self.description);
    this.#showRegistration(status.registration);
    if (clock.ref_type === "ptp")
      this.#reference.show(clock.locked ? "live" : "waiting", texts.ptp(clock.locked), clock.gmid);
    else
      this.#reference.show("live", texts.internalClock, clock.name);
    this.#node.show("none", self.href, self.id);
    this.#device.show("none", device.label, device.id);
    this.#interfaces.show("none", ...layout.interfaces.map(one => `${one.name} ${one.address}`));
  }

  #showRegistration(status) {
    if (!status) {
      this.#registration.show("off", texts.noRegistration, "");
      return;
    }
    const since = texts.since(localTime(taiOf(status.since)));
    this.#registration.show(status.registered ? "live" : "waiting", status.state,
        status.registry ? `${since} · ${new URL(status.registry).host}` : since);
  }

  showTime(tai) {
    const [date, clock] = taiDateAndClock(tai);
    setText(this.#clock, clock);
    setText(this.#date, `${date} · ${Math.floor(tai / 1000)} s · ${texts.local(localTime(tai))}`);
  }
}

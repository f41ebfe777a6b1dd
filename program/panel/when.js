// SPDX-License-Identifier: Apache-2.0
//
// When an activation shall happen: the "activation" object of IS-05.

import {make, setAttribute} from "./dom.js";
import {localDateAndClock, taiOfDate, taiText} from "./tai.js";
import {texts} from "./texts.js";

const modes = {now: "activate_immediate", in: "activate_scheduled_relative", at: "activate_scheduled_absolute"};

export class When {
  #radios = {};
  #fields = {
    in: make("input", {type: "number", min: 0, step: "any", value: 5, "aria-label": texts.seconds}),
    at: make("input", {type: "datetime-local", step: 1, "aria-label": texts.time}),
  };
  element = make("fieldset.when", make("legend", texts.when));

  constructor() {
    for (const word of Object.keys(modes)) {
      const radio = make("input", {type: "radio", name: "when"});
      const field = this.#fields[word];
      field?.addEventListener("input", () => this.#choose(word));
      this.#radios[word] = radio;
      this.element.append(make("div", make("label", radio, texts.whenWords[word]), field ?? null));
    }
  }

  #choose(word) {
    this.#radios[word].checked = true;
    for (const field of Object.values(this.#fields))
      setAttribute(field, "aria-invalid", null);
  }

  /// Now; for "at", the minute after next is proposed.
  reset() {
    const minute = 60_000;
    const [date, clock] = localDateAndClock(taiOfDate(new Date(Date.now() + 2 * minute)));
    this.#fields.at.value = `${date}T${clock.slice(0, 5)}:00`;
    this.#choose("now");
  }

  /// Throws an Error with the reason if a field cannot be used; that field has the focus then.
  get activation() {
    const word = Object.keys(modes).find(one => this.#radios[one].checked);
    return {mode: modes[word], requested_time: word === "now" ? null : this.#time(word)};
  }

  #time(word) {
    const field = this.#fields[word];
    const time = word === "in" ? field.valueAsNumber * 1000 : taiOfDate(new Date(field.value));
    if (time >= 0)
      return taiText(time);
    setAttribute(field, "aria-invalid", "true");
    field.focus();
    throw new Error(texts.badTime[word]);
  }
}

// SPDX-License-Identifier: Apache-2.0
//
// When an activation shall happen: the "activation" object of IS-05.

import {make} from "./dom.js";
import {localDateAndClock, taiOfDate, taiText} from "./tai.js";
import {texts} from "./texts.js";

const modes = {now: "activate_immediate", in: "activate_scheduled_relative", at: "activate_scheduled_absolute"};

export class When {
  #radios = {};
  #fields = {
    in: make("input", {type: "number", min: 0, step: "any", value: 5, required: true, "aria-label": texts.seconds}),
    at: make("input", {type: "datetime-local", step: 1, required: true, "aria-label": texts.time}),
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
  }

  /// Now; for "at", the minute after next is proposed.
  reset() {
    const minute = 60_000;
    const [date, clock] = localDateAndClock(taiOfDate(new Date(Date.now() + 2 * minute)));
    this.#fields.at.value = `${date}T${clock.slice(0, 5)}:00`;
    this.#choose("now");
  }

  /// Null if its field cannot be used; the browser says why.
  get activation() {
    const word = Object.keys(modes).find(one => this.#radios[one].checked);
    const field = this.#fields[word];
    if (!field)
      return {mode: modes[word], requested_time: null};
    const time = word === "in" ? field.valueAsNumber * 1000 : taiOfDate(new Date(field.value));
    return field.reportValidity() ? {mode: modes[word], requested_time: taiText(time)} : null;
  }
}

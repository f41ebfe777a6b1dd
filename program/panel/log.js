// SPDX-License-Identifier: Apache-2.0
//
// What is scheduled, and what has happened.

import {make, setText} from "./dom.js";
import {localTime, taiOf} from "./tai.js";
import {texts} from "./texts.js";

function happenings(status) {
  const of = (kind, list, time, what) => (list ?? []).map(one => ({...one, kind, time: one[time], what: one[what]}));
  return [
    ...of("activation", status.last_activations, "done", "resource"),
    ...of("failure", status.last_failures, "done", "resource"),
    ...of("refusal", status.last_refusals, "time", "what"),
  ].sort((left, right) => taiOf(right.time) - taiOf(left.time));
}

const times = tai => [make("time", localTime(taiOf(tai))), make("span.tai", texts.tai(tai))];

/// What the page calls "receivers/<id>".
const named = (model, resource) =>
  make("b", {dir: "auto"}, model.resource(...resource.split("/"))?.label ?? resource);

function happened(model, one) {
  const reasons = (one.debug ?? one.why)?.split(" | ") ?? [];
  return make("li", {"data-kind": one.kind}, times(one.time),
    make("div",
      make("p", make("span.lamp", texts.happened[one.kind]), " ", named(model, one.what), " ", texts.details[one.kind](one)),
      reasons.map(reason => make("p.reason", {dir: "auto"}, reason))));
}

export class Log {
  #scheduled = make("ul", {id: "scheduled"});
  #list = make("ol", {id: "log", tabindex: 0});
  #listed = "";
  #told;

  /// `told.cancel(side, id)` cancels what is scheduled.
  constructor(parent, told) {
    this.#told = told;
    const section = (heading, list, empty) =>
      make("section", {"aria-label": heading, tabindex: -1}, make("h2", heading), list, make("p.empty", empty));
    parent.append(section(texts.scheduledActivations, this.#scheduled, texts.nothingScheduled),
        section(texts.activationsAndRefusals, this.#list, texts.nothingHappened));
  }

  update(model, now) {
    const pending = model.status.pending_activations;
    const keys = pending.map(one => one.resource + one.due);
    const {children} = this.#scheduled;
    // What stays may have the focus. The order never changes.
    [...children].filter(child => !keys.includes(child.dataset.key)).forEach(child => child.remove());
    pending.forEach((one, i) => {
      if (children[i]?.dataset.key !== keys[i])
        this.#scheduled.insertBefore(this.#pending(model, one), children[i]);
      setText(children[i].firstElementChild, texts.inTime(taiOf(one.due) - now));
    });
    const all = happenings(model.status);
    const listed = JSON.stringify(all);
    if (listed !== this.#listed)
      this.#list.replaceChildren(...all.map(one => happened(model, one)));
    this.#listed = listed;
  }

  #pending(model, {resource, due}) {
    const name = named(model, resource);
    return make("li", {"data-key": resource + due}, make("span.countdown"), times(due), name,
      make("button", {
        type: "button",
        "aria-label": texts.cancelOf(name.textContent),
        onclick: () => {
          this.#scheduled.parentElement.focus(); // the button goes
          this.#told.cancel(...resource.split("/"));
        },
      }, texts.cancelActivation));
  }
}

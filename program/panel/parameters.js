// SPDX-License-Identifier: Apache-2.0
//
// The parameters of one connection: what is staged, to be edited, beside what is active.

import {differs, legs, parametersOf, peerOf} from "./connection.js";
import {make, setAttribute, setText} from "./dom.js";
import {texts} from "./texts.js";

// What an instrument never changes.
const fixed = {senders: "source_ip", receivers: "interface_ip"};

function shown(value) {
  if (typeof value === "boolean")
    return texts.onOff(value);
  return value === null ? texts.none : String(value);
}

/// One parameter. `pointer` is where it stands in a body of IS-05, and in its errors.
class Row {
  #input = make("input", {autocomplete: "off", spellcheck: "false", oninput: () => this.#explain("")});
  #fixed = make("span");
  #isFixed;
  #mark = make("span.mark");
  #error;
  #active = make("td");
  #known; // what was staged when it was last shown
  pointer;
  element;

  constructor(side, name, pointer, label, id) {
    this.pointer = pointer;
    this.#isFixed = fixed[side] === name;
    this.#error = make("p.error", {id: `${id}-error`});
    setAttribute(this.#input, "aria-label", label);
    this.#input.type = /_enabled?$/.test(name) ? "checkbox" : "text";
    this.element = make("tr", {"data-parameter": id}, make("th", {scope: "row"}, label),
      make("td.staged", this.#mark, this.#isFixed ? this.#fixed : this.#input, this.#error), this.#active);
  }

  get edited() {
    if (this.#input.type === "checkbox")
      return this.#input.checked;
    const text = this.#input.value.trim();
    // What is no number is sent as it is: the instrument says what is allowed.
    return this.pointer.endsWith("_port") && /^\d+$/.test(text) ? Number(text) : text || null;
  }

  get isEdited() {
    return !this.#isFixed && this.#known !== undefined && this.edited !== this.#known;
  }

  /// What somebody is editing stays.
  show(staged, active) {
    setText(this.#fixed, shown(staged));
    if (!this.isEdited) {
      this.#input.checked = staged === true;
      if (this.#input.type === "text")
        this.#input.value = staged ?? "";
    }
    this.#known = staged;
    const isOther = differs(staged, active);
    setAttribute(this.element, "class", isOther && "differs");
    setText(this.#mark, isOther ? "≠" : "");
    setText(this.#active, shown(active));
  }

  forget() {
    this.#known = undefined;
    this.#explain("");
  }

  /// Says what is wrong with the field; false if it is none.
  refuse(reason) {
    if (!this.#isFixed)
      this.#explain(reason);
    return !this.#isFixed;
  }

  #explain(reason) {
    setText(this.#error, reason);
    setAttribute(this.#input, "aria-invalid", reason !== "" && "true");
    setAttribute(this.#input, "aria-describedby", reason !== "" && this.#error.id);
  }

  focus() {
    this.#input.focus();
  }
}

/// Where a pointer such as "/transport_params/0/source_ip" leads.
const valueAt = (body, pointer) => pointer.slice(1).split("/").reduce((value, key) => value[key], body);

export class Parameters {
  #rows;
  element;

  constructor(side) {
    const label = name => texts.parameters[name];
    this.#rows = [
      new Row(side, "master_enable", "/master_enable", label("master_enable"), "master_enable"),
      new Row(side, peerOf[side], `/${peerOf[side]}`, label(peerOf[side]), "peer"),
      ...legs.flatMap(leg => parametersOf[side].map(name =>
        new Row(side, name, `/transport_params/${leg}/${name}`, `${texts.leg(leg + 1)} ${label(name)}`,
            `leg${leg + 1}.${name}`))),
    ];
    const head = [texts.parameter, texts.staged, texts.active].map(text => make("th", {scope: "col"}, text));
    this.element = make("table", make("thead", make("tr", head)),
        make("tbody", this.#rows.map(row => row.element)));
  }

  show(staged, active) {
    for (const row of this.#rows)
      row.show(valueAt(staged, row.pointer), valueAt(active, row.pointer));
  }

  forget() {
    this.#rows.forEach(row => row.forget());
  }

  /// What has been edited, as the body of a PATCH.
  get patch() {
    const patch = {};
    for (const row of this.#rows.filter(one => one.isEdited)) {
      const [name, leg, parameter] = row.pointer.slice(1).split("/");
      if (parameter === undefined)
        patch[name] = row.edited;
      else // all legs are named, whatever changes (IS-05 v1.0)
        (patch[name] ??= legs.map(() => ({})))[leg][parameter] = row.edited;
    }
    return patch;
  }

  /// Puts each line of an error's `debug` at its field. Returns the lines that have none.
  refuse(debug) {
    const refused = [];
    const rest = debug.split("\n").filter(line => {
      const row = this.#rows.find(one => line.startsWith(`${one.pointer}: `));
      const isSaid = row?.refuse(line.slice(row.pointer.length + 2)) ?? false;
      if (isSaid)
        refused.push(row);
      return !isSaid;
    });
    refused[0]?.focus();
    return rest.join("\n");
  }
}

// SPDX-License-Identifier: Apache-2.0
//
// The streams as columns: every sender and receiver, what is staged beside what is active.

import {differs, differsAnywhere, dueOf, legAddress, legDiffers, legs, otherSide, peerOf} from "./connection.js";
import {make, setAttribute, setText} from "./dom.js";
import {taiOf} from "./tai.js";
import {texts} from "./texts.js";

// What a drag carries: the id of a sender.
const senderType = "application/x-nmos-sender";

// In front of what is not active as it is staged.
const mark = isOther => isOther ? "≠\u00a0" : "";

class Signal {
  #side;
  #id;
  #state = make("span.state");
  #legs = legs.map(leg => ({staged: make("span.staged"), active: make("span.leg", {"data-leg": leg + 1})}));
  element;

  constructor(side, entry, told) {
    this.#side = side;
    this.#id = entry.id;
    this.element = make("li", {
      "data-id": entry.id,
      "data-side": side,
      draggable: String(side === "senders"),
      onclick: () => told.open(side, entry.id), // on the whole row; the button is for keys
    },
      make("button.open", {type: "button", "aria-haspopup": "dialog"},
          make("span.lamp"), make("span.kind", texts.kind(entry)), this.#state),
      this.#legs.map((leg, i) => make("div.paths", make("span", String(i + 1)), leg.staged, leg.active)));
    if (side === "senders")
      this.#canBeDragged();
    else
      this.#takesDrops(told);
  }

  #canBeDragged() {
    this.element.addEventListener("dragstart", event => event.dataTransfer.setData(senderType, this.#id));
  }

  #takesDrops(told) {
    const isOver = yes => this.element.classList.toggle("over", yes);
    const offer = data => told.open("receivers", this.#id, {
      sender: data.getData(senderType),
      file: data.files[0] ?? new Blob([data.getData("text")]),
    });
    this.element.addEventListener("dragover", () => isOver(true));
    this.element.addEventListener("dragleave", () => isOver(false));
    this.element.addEventListener("drop", ({dataTransfer}) => {
      isOver(false);
      offer(dataTransfer);
    });
    this.element.addEventListener("paste", ({clipboardData}) => offer(clipboardData));
  }

  update(model, now) {
    const [staged, active] = model.halves(this.#side, this.#id);
    if (!staged || !active)
      return;
    setAttribute(this.element, "data-enabled", String(active.master_enable));
    setAttribute(this.element, "data-differs", String(differsAnywhere(this.#side, staged, active)));
    setAttribute(this.element, "data-scheduled", dueOf(staged));
    setText(this.#state, this.#stateText(model, staged, active, now));
    for (const leg of legs)
      this.#showLeg(leg, staged, active);
  }

  #stateText(model, staged, active, now) {
    const due = dueOf(staged);
    if (due)
      return texts.activatesIn(taiOf(due) - now);
    const word = texts.onOff(active.master_enable);
    if (differs(staged.master_enable, active.master_enable))
      return texts.stagedToBe(word, texts.onOff(staged.master_enable));
    const name = peerOf[this.#side];
    const peer = active[name];
    return mark(differs(staged[name], peer))
      + (peer ? texts.withPeer[this.#side](word, model.labelOf(otherSide[this.#side], peer)) : word);
  }

  #showLeg(leg, staged, active) {
    const isOther = legDiffers(this.#side, staged, active, leg);
    const line = this.#legs[leg];
    setAttribute(line.staged.parentElement, "data-differs", isOther);
    setText(line.staged, mark(isOther) + (legAddress(this.#side, staged, leg) ?? texts.onOff(false)));
    setText(line.active, legAddress(this.#side, active, leg) ?? texts.onOff(false));
  }
}

function hiddenOne(side, entry) {
  return make("li.hidden", {"data-side": side, "data-id": entry.id, "data-hidden": entry.hidden},
    make("span.kind", texts.kind(entry)), make("span.reason", texts.hidden(entry.hidden)));
}

export class Streams {
  #main;
  #told;
  #layout = "";
  #signals = [];

  /// `told.open(side, id, {sender, file})` asks for the dialog.
  constructor(main, told) {
    this.#main = main;
    this.#told = told;
  }

  update(model, now) {
    const layout = JSON.stringify(model.layout);
    if (layout !== this.#layout) // another instrument, or another configuration
      this.#build(model.layout);
    this.#layout = layout;
    this.#signals.forEach(signal => signal.update(model, now));
  }

  #build(layout) {
    this.#signals = [];
    this.#main.replaceChildren(...layout.streams.map(stream => {
      const heading = `stream-${stream.stream}`;
      return make("section", {"data-stream": stream.stream, "aria-labelledby": heading},
        make("h2", {id: heading}, texts.stream(stream.stream)),
        ["receivers", "senders"].map(side => this.#list(side, stream[side])));
    }));
  }

  #list(side, entries) {
    return [
      make("div.side", make("h3", texts[side]), make("span.column", texts.staged), make("span", texts.active)),
      make("ul", entries.map(entry => entry.hidden ? hiddenOne(side, entry) : this.#signal(side, entry))),
    ];
  }

  #signal(side, entry) {
    const signal = new Signal(side, entry, this.#told);
    this.#signals.push(signal);
    return signal.element;
  }
}

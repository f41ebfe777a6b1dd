// SPDX-License-Identifier: Apache-2.0
//
// One sender or receiver, to look at and to operate. Whatever is done here is a request of IS-05.

import {dueOf} from "./connection.js";
import {make, setAttribute, setText} from "./dom.js";
import {pathOf} from "./model.js";
import {OfferedFile} from "./offered_file.js";
import {Parameters} from "./parameters.js";
import {request} from "./requests.js";
import {SentFile} from "./sent_file.js";
import {taiOf} from "./tai.js";
import {texts} from "./texts.js";
import {When} from "./when.js";

const button = (name, text, onclick, more) => make(name, {type: "button", onclick, ...more}, text);

export class ConnectionDialog {
  #model;
  #side;
  #id;
  #parameters;
  #file;
  #chosen = "parameters"; // or "file"
  #heading = make("h2", {id: "dialog-heading", dir: "auto"});
  #about = make("p.about");
  #due = make("span.countdown");
  #scheduled = make("p.scheduled", this.#due,
      button("button", texts.cancelActivation, () => this.cancel(this.#side, this.#id)));
  #tabs = {};
  #panels = {};
  #when = new When();
  #message = make("p", {id: "dialog-message", role: "status"});
  #stage = button("button", texts.stage, () => this.#send(false));
  #activate = button("button.primary", texts.activate, () => this.#send(true));
  #dialog;

  constructor(parent, model) {
    this.#model = model;
    for (const name of ["parameters", "file"]) {
      this.#tabs[name] = button("button", texts.tabs[name], () => this.#choose(name), {
        role: "tab",
        id: `tab-${name}`,
        "aria-controls": `panel-${name}`,
        onkeydown: event => this.#turn(event),
      });
      this.#panels[name] = make("div", {role: "tabpanel", id: `panel-${name}`, "aria-labelledby": `tab-${name}`, tabindex: 0});
    }
    this.#dialog = make("dialog", {
      id: "connection-dialog",
      "aria-labelledby": "dialog-heading",
      ondrop: event => this.#dropped(event),
    },
    make("header", make("div", this.#heading, this.#about),
        button("button.close", "×", () => this.#dialog.close(), {"aria-label": texts.close}), this.#scheduled,
        make("div", {role: "tablist", "aria-label": texts.parts}, Object.values(this.#tabs))),
    Object.values(this.#panels),
    make("footer", this.#message, this.#when.element, make("div.actions", this.#stage, this.#activate)));
    parent.append(this.#dialog);
  }

  /// For a receiver, a `sender` of this instrument or a `file` may be offered.
  open(side, id, {sender, file} = {}) {
    this.#side = side;
    this.#id = id;
    const label = this.#model.labelOf(side, id);
    setText(this.#heading, label);
    setText(this.#about, `${texts.essence(this.#model.entry(side, id))} · ${id}`);
    this.#parameters = new Parameters(side);
    this.#file = side === "senders" ? new SentFile(id, label)
      : new OfferedFile(id, this.#model.shownSenders, () => this.#allowSending());
    this.#panels.parameters.replaceChildren(this.#parameters.element);
    this.#panels.file.replaceChildren(this.#file.element);
    this.#when.reset();
    this.#say(null, "");
    this.#choose(sender || file ? "file" : "parameters");
    this.update(0);
    if (!this.#dialog.open)
      this.#dialog.showModal();
    if (sender)
      this.#file.takeSender(sender);
    else if (file)
      this.#file.takeFile(file);
  }

  update(now) {
    const [staged, active] = this.#id ? this.#model.halves(this.#side, this.#id) : [];
    if (!staged || !active)
      return;
    this.#parameters.show(staged, active);
    const due = dueOf(staged);
    this.#scheduled.hidden = due === null;
    if (due && now)
      setText(this.#due, `${texts.activatesIn(taiOf(due) - now)} · ${texts.tai(due)}`);
    if (this.#side === "senders")
      this.#file.update(this.#model.resource("senders", this.#id)?.version);
  }

  async cancel(side, id) {
    const answer = await request("PATCH", pathOf(side, id, "staged"), {activation: {mode: null}});
    this.#say(answer.ok ? "done" : "refused", answer.ok ? texts.canceled : texts.refusal(answer));
    this.#tabs[this.#chosen].focus(); // the button goes
  }

  #choose(chosen) {
    this.#chosen = chosen;
    for (const [name, tab] of Object.entries(this.#tabs)) {
      setAttribute(tab, "aria-selected", String(name === chosen));
      setAttribute(tab, "tabindex", name === chosen ? 0 : -1);
      this.#panels[name].hidden = name !== chosen;
    }
    this.#allowSending();
  }

  // The keys of a tab list (WAI-ARIA Authoring Practices).
  #turn(event) {
    if (event.key !== "ArrowLeft" && event.key !== "ArrowRight")
      return;
    this.#choose(this.#chosen === "file" ? "parameters" : "file");
    this.#tabs[this.#chosen].focus();
  }

  get #offersFile() {
    return this.#side === "receivers" && this.#chosen === "file";
  }

  // A file that is refused cannot be sent.
  #allowSending() {
    for (const one of [this.#stage, this.#activate])
      one.disabled = this.#offersFile && this.#file.patch === null;
  }

  #dropped({dataTransfer: {files: [file]}}) {
    if (!file || this.#side === "senders")
      return;
    this.#choose("file");
    this.#file.takeFile(file);
  }

  async #send(activates) {
    const patch = this.#offersFile ? this.#file.patch : this.#parameters.patch;
    if (activates)
      patch.activation = this.#when.activation;
    if (patch.activation === null)
      return;
    if (Object.keys(patch).length === 0) {
      this.#say(null, texts.nothingEdited);
      return;
    }
    const path = pathOf(this.#side, this.#id, "staged");
    const parameters = this.#parameters;
    const answer = await request("PATCH", path, patch);
    if (parameters !== this.#parameters)
      return; // another dialog is open by now
    if (!answer.ok) {
      this.#refused(answer);
      return;
    }
    // The event stream says it again a little later.
    this.#model.update({[path]: answer.body});
    this.#parameters.forget();
    this.update(0);
    this.#say("done", texts.sent(patch.activation?.mode, answer.body.activation.activation_time));
  }

  #refused({status, body: {error, debug}}) {
    const isAtField = debug && !this.#offersFile;
    if (isAtField)
      this.#choose("parameters");
    this.#say("refused", texts.refusal({status, body: {error, debug: isAtField ? this.#parameters.refuse(debug) : debug}}));
  }

  #say(state, text) {
    setAttribute(this.#message, "data-state", state);
    setText(this.#message, text);
  }
}

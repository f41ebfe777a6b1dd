// SPDX-License-Identifier: Apache-2.0
//
// What the instrument's paths say, and when one says something else: the event stream of /events.
// While nobody sees the page it is closed, so that the instrument has nothing to do for it.

const tryAgainAfter = 1000; // ms

export class Feed {
  #source = null;
  #timer = null;
  #last = 0;
  #told;

  /// `told.all(texts)` and `told.changes(texts)` get {path: body}; `told.state(word)` gets "live",
  /// "lost", or "waiting" before there has been a connection.
  constructor(told) {
    this.#told = told;
    document.addEventListener("visibilitychange", () => this.#look());
    setInterval(() => this.#expectLife(), tryAgainAfter);
    told.state("waiting");
    this.#look();
  }

  #look() {
    if (document.visibilityState === "hidden")
      this.#close();
    else if (!this.#source)
      this.#open();
  }

  #open() {
    clearTimeout(this.#timer);
    this.#source = new EventSource("/events");
    this.#last = performance.now();
    for (const kind of ["all", "changes"])
      this.#source.addEventListener(kind, event => this.#take(kind, event));
    this.#source.addEventListener("error", () => this.#failed());
  }

  #close() {
    clearTimeout(this.#timer);
    this.#source?.close();
    this.#source = null;
  }

  #take(kind, event) {
    this.#last = performance.now();
    this.#told[kind](JSON.parse(event.data));
    this.#told.state("live");
  }

  #failed() {
    this.#told.state("lost");
    // A browser tries again by itself, but not after an answer such as 503.
    this.#close();
    this.#timer = setTimeout(() => this.#look(), tryAgainAfter);
  }

  // The instrument says something every second. A pulled cable says nothing.
  #expectLife() {
    if (this.#source && performance.now() - this.#last > 5 * tryAgainAfter)
      this.#failed();
  }
}

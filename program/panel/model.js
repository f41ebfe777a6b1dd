// SPDX-License-Identifier: Apache-2.0
//
// What the instrument's paths say at the moment.

const node = "/x-nmos/node/v1.2/";

export const pathOf = (side, id, what) => `/x-nmos/connection/v1.0/single/${side}/${id}/${what}`;

export class Model {
  #bodies = {};

  // What the instrument could not read comes later.
  get isComplete() {
    return [this.layout, this.status, this.self, this.device].every(body => body !== undefined);
  }

  replace(bodies) {
    this.#bodies = bodies;
  }

  update(bodies) {
    Object.assign(this.#bodies, bodies);
  }

  get layout() {
    return this.#bodies["/layout"];
  }

  get status() {
    return this.#bodies["/status"];
  }

  get self() {
    return this.#bodies[`${node}self`];
  }

  get device() {
    return this.#bodies[`${node}devices`]?.[0];
  }

  /// What IS-04 says of one sender or receiver; undefined if it belongs to somebody else.
  resource(side, id) {
    return this.#bodies[node + side]?.find(one => one.id === id);
  }

  labelOf(side, id) {
    return this.resource(side, id)?.label ?? id;
  }

  halves(side, id) {
    return ["staged", "active"].map(half => this.#bodies[pathOf(side, id, half)]);
  }

  entry(side, id) {
    return this.layout.streams.flatMap(({stream, [side]: entries}) => entries.map(one => ({...one, stream})))
      .find(one => one.id === id);
  }

  get shownSenders() {
    return this.layout.streams.flatMap(stream => stream.senders).filter(entry => !entry.hidden);
  }
}

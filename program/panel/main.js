// SPDX-License-Identifier: Apache-2.0
//
// Brings what the instrument says to the parts of the page that show it.

import {ConnectionDialog} from "./connection_dialog.js";
import {Feed} from "./feed.js";
import {Header} from "./header.js";
import {Log} from "./log.js";
import {Model} from "./model.js";
import {showRequestsIn} from "./requests.js";
import {Streams} from "./streams.js";
import {TaiClock, taiOf} from "./tai.js";

const byId = id => document.getElementById(id);

const model = new Model();
const clock = new TaiClock();
const header = new Header(byId("display"));
const dialog = new ConnectionDialog(document.body, model);
const streams = new Streams(byId("streams"), dialog);
const log = new Log(byId("events"), dialog);
showRequestsIn(byId("requests"));

function show() {
  if (!model.isComplete)
    return;
  const now = clock.now();
  header.showTime(now);
  header.update(model);
  streams.update(model, now);
  log.update(model, now);
  dialog.update(now);
}

function take(bodies) {
  if (bodies["/status"])
    clock.set(taiOf(bodies["/status"].tai));
  show();
}

new Feed({
  all(bodies) {
    model.replace(bodies);
    take(bodies);
  },
  changes(bodies) {
    model.update(bodies);
    take(bodies);
  },
  state(word) {
    header.connectionIs(word);
    document.body.dataset.connection = word;
  },
});

setInterval(show, 200); // countdowns

// A file that is dropped beside a receiver must not take the place of the page.
for (const event of ["dragover", "drop"])
  document.addEventListener(event, happened => happened.preventDefault());

// SPDX-License-Identifier: Apache-2.0
"use strict";
// 24 receivers are changed a hundred times a second: the page still draws and answers.

const assert = require("node:assert/strict");
const http = require("node:http");
const {test} = require("node:test");
const {SINGLE} = require("./support/instrument");
const {closePanel, dialogOf, entryOf, eventually, openPanel, shared} = require("./support/panel");

const RATE = 100; // changes per second, altogether
const SECONDS = 30;
const SETTLED = 2000; // ms, after which loading is over

const it = shared();

// Activates another port of one receiver after the other. Resolves to how many changes were made.
async function storm(receivers) {
  const agent = new http.Agent({keepAlive: true, maxSockets: 20});
  const begin = Date.now();
  const waiting = new Set();
  let made = 0;
  while (Date.now() < begin + SECONDS * 1000) {
    const due = (Date.now() - begin) / 1000 * RATE;
    for (; made < due && waiting.size < 20; ++made) {
      const resource = `receivers/${receivers[made % receivers.length]}`;
      const change = {destination_port: 10000 + made, rtp_enabled: true};
      const answer = it.instrument.request("PATCH", `${SINGLE}/${resource}/staged`, {
        activation: {mode: "activate_immediate"}, transport_params: [change, change]}, agent)
        .then(({status}) => assert.equal(status, 200))
        .finally(() => waiting.delete(answer));
      waiting.add(answer);
    }
    await new Promise(resolve => setTimeout(resolve, 5));
  }
  await Promise.all(waiting);
  agent.destroy();
  return made;
}

// Notes what kept the page from drawing, and what moved on it.
function observe(page) {
  return page.evaluate(() => {
    window.longTasks = [];
    window.shifts = 0;
    new PerformanceObserver(list => window.longTasks.push(...list.getEntries().map(one => one.duration)))
      .observe({type: "longtask"});
    new PerformanceObserver(list => list.getEntries().forEach(one => { window.shifts += one.value; }))
      .observe({type: "layout-shift"});
  });
}

// How long the page takes, in milliseconds, to open the dialog of each receiver.
async function open(page, receivers) {
  const took = [];
  for (const receiver of receivers) {
    await page.waitForTimeout(4000);
    const begin = Date.now();
    await entryOf(page, `receivers/${receiver}`).locator("button.open").click();
    await dialogOf(page).waitFor();
    took.push(Date.now() - begin);
    await page.keyboard.press("Escape");
    await dialogOf(page).waitFor({state: "hidden"});
  }
  return took;
}

// The page shows in the end what is active.
async function isRight(page, receivers) {
  for (const receiver of receivers) {
    const [leg] = (await it.instrument.active(`receivers/${receiver}`)).transport_params;
    await eventually(() => entryOf(page, `receivers/${receiver}`).locator('.leg[data-leg="1"]').textContent(),
                     `${leg.multicast_ip ?? leg.interface_ip}:${leg.destination_port}`);
  }
}

// Resolves to the long tasks and the layout shift.
async function measured() {
  const page = await openPanel(it.browser, it.instrument);
  const receivers = await it.instrument.ids("receivers");
  await page.waitForTimeout(SETTLED);
  await observe(page);
  const [made, opened] = await Promise.all([storm(receivers), open(page, receivers.slice(0, 5))]);
  await isRight(page, receivers);
  const {longTasks, shifts} = await page.evaluate(() => ({longTasks: window.longTasks, shifts: window.shifts}));
  console.log(`${made} changes in ${SECONDS} s; tasks of 50 ms and more: ${longTasks.length} ` +
              `(longest ${Math.max(0, ...longTasks)} ms); layout shift ${shifts}; ` +
              `dialog opened in ${opened.join(", ")} ms`);
  assert.ok(made >= RATE * SECONDS * 0.9, `${made} changes`);
  await closePanel(page);
  return {longTasks, shifts};
}

test("a storm of changes", async () => {
  let outcome = await measured();
  // What else the machine does can hold up a task; a page that is slow itself is slow each time.
  for (let again = 0; again < 2 && outcome.longTasks.length > 0; ++again)
    outcome = await measured();
  assert.deepEqual(outcome.longTasks, []);
  assert.ok(outcome.shifts < 0.01, `layout shift ${outcome.shifts}`);
});

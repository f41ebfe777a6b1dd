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
async function storm(receivers, agent) {
  const end = Date.now() + SECONDS * 1000;
  const begin = Date.now();
  let made = 0;
  let refused = 0;
  const under_way = new Set();
  while (Date.now() < end) {
    const due = Math.floor((Date.now() - begin) / 1000 * RATE);
    while (made < due && under_way.size < 20) {
      const receiver = receivers[made % receivers.length];
      const port = 10000 + ++made;
      const one = it.instrument.request("PATCH", `${SINGLE}/receivers/${receiver}/staged`, {
        activation: {mode: "activate_immediate"},
        transport_params: [{destination_port: port, rtp_enabled: true}, {destination_port: port}],
      }, agent).then(answer => { refused += answer.status === 200 ? 0 : 1; })
        .finally(() => under_way.delete(one));
      under_way.add(one);
    }
    await new Promise(resolve => setTimeout(resolve, 5));
  }
  await Promise.all(under_way);
  assert.equal(refused, 0);
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

test("a storm of changes", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const receivers = await it.instrument.ids("receivers");
  await page.waitForTimeout(SETTLED);
  await observe(page);
  const agent = new http.Agent({keepAlive: true, maxSockets: 20});
  const done = storm(receivers, agent);
  const answered = [];
  for (let i = 0; i < 5; ++i) {
    await page.waitForTimeout(4000);
    const begin = Date.now();
    await entryOf(page, `receivers/${receivers[i]}`).locator("button.open").click();
    await dialogOf(page).waitFor();
    answered.push(Date.now() - begin);
    await page.keyboard.press("Escape");
    await dialogOf(page).waitFor({state: "hidden"});
  }
  const made = await done;
  agent.destroy();
  for (const receiver of receivers) {
    const [first] = (await it.instrument.active(`receivers/${receiver}`)).transport_params;
    const address = first.multicast_ip ?? first.interface_ip;
    await eventually(() => entryOf(page, `receivers/${receiver}`).locator('.leg[data-leg="1"]').textContent(),
                     `${address}:${first.destination_port}`);
  }
  const {longTasks, shifts} = await page.evaluate(() => ({longTasks: window.longTasks, shifts: window.shifts}));
  console.log(`${made} changes in ${SECONDS} s; tasks of 50 ms and more: ${longTasks.length} ` +
              `(longest ${Math.round(Math.max(0, ...longTasks))} ms); layout shift ${shifts}; ` +
              `clicks answered in ${answered.join(", ")} ms`);
  assert.ok(made >= RATE * SECONDS * 0.9, `${made} changes`);
  assert.deepEqual(longTasks, []);
  assert.ok(shifts < 0.01, `layout shift ${shifts}`);
  await closePanel(page);
});

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
    const due = ((Date.now() - begin) / 1000) * RATE;
    for (; made < due && waiting.size < 20; ++made) {
      const resource = `receivers/${receivers[made % receivers.length]}`;
      const change = {destination_port: 10000 + made, rtp_enabled: true};
      const answer = it.instrument
        .request(
          "PATCH",
          `${SINGLE}/${resource}/staged`,
          {
            activation: {mode: "activate_immediate"},
            transport_params: [change, change],
          },
          agent,
        )
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
async function observe(page) {
  await page.evaluate(() => {
    window.longTasks = [];
    window.shifts = 0;
    new PerformanceObserver(list =>
      window.longTasks.push(...list.getEntries().map(one => one.duration)),
    ).observe({type: "longtask"});
    new PerformanceObserver(list =>
      list.getEntries().forEach(one => {
        window.shifts += one.value;
      }),
    ).observe({type: "layout-shift"});
  });
  await it.browser.startTracing(page, {categories: ["disabled-by-default-devtools.timeline"]});
}

// The longest task of the page since then in milliseconds of the CPU: what else the machine did
// meanwhile is not in it.
async function longestTask() {
  const {traceEvents} = JSON.parse(await it.browser.stopTracing());
  const tasks = traceEvents.filter(one => one.name === "RunTask" && one.tdur > 0);
  assert.ok(tasks.length > SECONDS, `${tasks.length} tasks`);
  return tasks.reduce((longest, one) => Math.max(longest, one.tdur / 1000), 0);
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
    await eventually(
      () => entryOf(page, `receivers/${receiver}`).locator('.leg[data-leg="1"]').textContent(),
      `${leg.multicast_ip ?? leg.interface_ip}:${leg.destination_port}`,
    );
  }
}

test("a storm of changes", async () => {
  const page = await openPanel(it.browser, it.instrument, {width: 1440});
  const receivers = await it.instrument.ids("receivers");
  await page.waitForTimeout(SETTLED);
  await observe(page);
  const [made, opened] = await Promise.all([storm(receivers), open(page, receivers.slice(0, 5))]);
  const longest = await longestTask();
  await isRight(page, receivers);
  const {longTasks, shifts} = await page.evaluate(() => ({
    longTasks: window.longTasks,
    shifts: window.shifts,
  }));
  console.log(
    `${made} changes in ${SECONDS} s; longest task ${longest.toFixed(1)} ms of the CPU; ` +
      `by the clock ${longTasks.length} of 50 ms and more ` +
      `(longest ${Math.max(0, ...longTasks)} ms); ` +
      `layout shift ${shifts}; dialog opened in ${opened.join(", ")} ms`,
  );
  assert.ok(made >= RATE * SECONDS * 0.9, `${made} changes`);
  assert.ok(longest < 50, `${longest} ms`);
  assert.ok(shifts < 0.01, `layout shift ${shifts}`);
  await closePanel(page);
});

// SPDX-License-Identifier: Apache-2.0
"use strict";
// What is on the page when it has been loaded, what it may do, and how much it weighs.

const assert = require("node:assert/strict");
const {once} = require("node:events");
const fs = require("node:fs");
const http = require("node:http");
const path = require("node:path");
const {test} = require("node:test");
const {Instrument} = require("./support/instrument");
const {closePanel, eventually, openPanel, shared} = require("./support/panel");

const PAGE = path.join(__dirname, "../../program/panel");
const POLICY =
  "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; " +
  "img-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

const it = shared();

// Of the senders or receivers of a stream, in the order in which they stand there.
function idsOnPage(page, stream, side) {
  return page
    .locator(`section[data-stream="${stream}"] li[data-side="${side}"]`)
    .evaluateAll(all => all.map(one => one.dataset.id));
}

// The positions of the senders and receivers of each stream in the records.
const senders = {1: [0, 4, 5], 2: [1], 3: [2], 4: [3]};
const receivers = {
  1: [0, 4, 5, 6, 7, 20],
  2: [1, 8, 9, 10, 11, 21],
  3: [2, 12, 13, 14, 15, 22],
  4: [3, 16, 17, 18, 19, 23],
};

test("everything that the node shows is there", async () => {
  const page = await openPanel(it.browser, it.instrument);
  assert.equal(await page.locator("h1").textContent(), "QX3100/QX3300");
  for (const [side, streams] of Object.entries({senders, receivers})) {
    const ids = await it.instrument.ids(side);
    for (const [stream, positions] of Object.entries(streams)) {
      assert.equal(
        await page.locator(`section[data-stream="${stream}"] h2`).textContent(),
        `Stream ${stream}`,
      );
      assert.deepEqual(
        await idsOnPage(page, stream, side),
        positions.map(i => ids[i]),
      );
    }
  }
  const first = page.locator(`li[data-id="${(await it.instrument.ids("senders"))[0]}"]`);
  assert.equal(await first.locator('.leg[data-leg="1"]').textContent(), "233.252.0.11:5004");
  assert.equal(await first.locator('.leg[data-leg="2"]').textContent(), "233.252.0.21:5004");
  assert.equal(await page.locator("li.hidden").count(), 0);
  assert.equal(await page.locator("#connection").textContent(), "Live");
  await closePanel(page);
});

// What a registry answers to a node that comes, stays and leaves.
async function startRegistry() {
  const registry = http.createServer((request, response) => {
    request.resume();
    const isHeartbeat = request.url.includes("/health/");
    response.writeHead(request.method === "DELETE" ? 204 : isHeartbeat ? 200 : 201).end();
  });
  await once(registry.listen(0, "127.0.0.1"), "listening");
  return registry;
}

test("the registration is told in words, with the registry and since when", async () => {
  const registry = await startRegistry();
  const place = `127.0.0.1:${registry.address().port}`;
  const instrument = await Instrument.start({registry: `http://${place}`});
  try {
    const page = await openPanel(it.browser, instrument);
    const state = page.locator("#registration");
    await eventually(() => state.textContent(), "registered");
    assert.equal(await state.getAttribute("data-state"), "live");
    const beside = await page.locator("#registration + .beside").textContent();
    assert.match(beside, /^since \d\d:\d\d:\d\d · 127\.0\.0\.1:\d+$/);
    assert.ok(beside.endsWith(place), beside);
    await closePanel(page);
  } finally {
    await instrument.end();
    registry.close();
  }
});

test("a registry that does not answer is said too", async () => {
  const instrument = await Instrument.start({registry: "http://127.0.0.1:9"}); // nobody is there
  try {
    const page = await openPanel(it.browser, instrument);
    const state = page.locator("#registration");
    await eventually(() => state.textContent(), "looking for a registry");
    assert.equal(await state.getAttribute("data-state"), "waiting");
    await closePanel(page);
  } finally {
    await instrument.end();
  }
});

test("every region has its name", async () => {
  const page = await openPanel(it.browser, it.instrument);
  for (const name of ["Instrument", "Scheduled activations", "Activations and refusals"])
    await page.getByRole("region", {name, exact: true}).waitFor();
  for (const name of ["Stream 1", "Stream 2", "Stream 3", "Stream 4"])
    await page.getByRole("main").getByRole("region", {name, exact: true}).waitFor();
  await closePanel(page);
});

test("TAI is that of the instrument", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const secondsOfDay = text => text.split(":").reduce((sum, part) => 60 * sum + Number(part), 0);
  const shown = secondsOfDay((await page.locator("#tai").textContent()).match(/\d\d:\d\d:\d\d/)[0]);
  const told = parseInt((await it.instrument.json("/status")).tai) % 86400;
  const apart = Math.abs(shown - told);
  assert.ok(Math.min(apart, 86400 - apart) <= 10, `${shown} and ${told} seconds of the day`);
  await closePanel(page);
});

for (const [configuration, side, shown, hidden, reason] of [
  [{streams: {audio_groups: 1}}, "receivers", 12, 12, "streams.audio_groups is 1"],
  [
    {streams: {receiver_essences: "video only"}},
    "receivers",
    4,
    20,
    'streams.receiver_essences is "video only"',
  ],
  [{streams: {senders: "stream 1"}}, "senders", 3, 3, 'streams.senders is "stream 1"'],
  [
    {streams: {sender_essences: "video only"}},
    "senders",
    4,
    2,
    'streams.sender_essences is "video only"',
  ],
]) {
  test(`what is hidden says why: ${reason}`, async () => {
    const instrument = await Instrument.start({configuration});
    try {
      const page = await openPanel(it.browser, instrument);
      const entries = page.locator(`li[data-side="${side}"]`);
      assert.equal(await entries.locator("button.open").count(), shown);
      assert.equal(await page.locator(`li.hidden[data-side="${side}"]`).count(), hidden);
      for (const one of await page.locator("li.hidden").all()) {
        assert.ok(
          (await one.getAttribute("data-hidden")).includes(reason),
          await one.getAttribute("data-hidden"),
        );
        assert.ok((await one.textContent()).includes(reason), await one.textContent());
        assert.equal(await one.locator("button").count(), 0);
      }
      await closePanel(page);
    } finally {
      await instrument.end();
    }
  });
}

test("the longest address and port are never cut off", async () => {
  const sender = `senders/${(await it.instrument.ids("senders"))[0]}`;
  const leg = {destination_ip: "239.255.255.255", destination_port: 65535};
  await it.instrument.patch(sender, {transport_params: [leg, leg]});
  for (const width of [360, 800, 1280, 1440, 1920]) {
    const page = await openPanel(it.browser, it.instrument, {width});
    const staged = page.locator(`li[data-id="${sender.split("/")[1]}"] .staged`).first();
    await staged.filter({hasText: "239.255.255.255:65535"}).waitFor();
    assert.ok((await staged.textContent()).startsWith("≠"));
    const cut = await page
      .locator(".staged, .leg")
      .evaluateAll(all =>
        all.filter(one => one.scrollWidth > one.clientWidth).map(one => one.textContent),
      );
    assert.deepEqual(cut, [], `${width} pixels wide`);
    await closePanel(page);
  }
});

test("scripts that are not files of the page do not run", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const answer = await page.request.get(`${it.instrument.url}/`, {headers: {Accept: "text/html"}});
  assert.equal(answer.headers()["content-security-policy"], POLICY);
  assert.equal(answer.headers()["referrer-policy"], "no-referrer");
  const ran = () =>
    page.evaluate(() => {
      const script = document.createElement("script");
      script.textContent = "window.ranInline = true";
      document.body.append(script);
      return window.ranInline === true;
    });
  assert.equal(await ran(), false);
  assert.match(page.watched.errors.join("\n"), /Content Security Policy/);
  page.watched.errors = [];
  await closePanel(page);
});

test("the page asks for its own files alone, and they weigh 60 KB at most", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const loaded = await page.evaluate(() =>
    performance
      .getEntriesByType("resource")
      .map(one => new URL(one.name).pathname)
      .filter(name => name !== "/events"),
  );
  const files = fs.readdirSync(PAGE).filter(name => /\.(html|css|js|svg)$/.test(name));
  for (const name of loaded)
    assert.ok(files.includes(path.basename(name)) && path.dirname(name) === "/panel", name);
  const bytes = files.reduce((sum, name) => sum + fs.statSync(path.join(PAGE, name)).size, 0);
  const paint = await page.evaluate(
    () => performance.getEntriesByName("first-contentful-paint")[0]?.startTime,
  );
  console.log(
    `${files.length} files, ${bytes} bytes; first contentful paint after ${Math.round(paint)} ms`,
  );
  assert.ok(bytes <= 60000, `${bytes} bytes`);
  await closePanel(page);
});

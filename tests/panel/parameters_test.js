// SPDX-License-Identifier: Apache-2.0
"use strict";
// Parameters that are edited in the dialog.

const assert = require("node:assert/strict");
const {beforeEach, test} = require("node:test");
const {
  button,
  closePanel,
  entryOf,
  eventually,
  field,
  openDialog,
  openPanel,
  shared,
} = require("./support/panel");

const it = shared();
let sender;
let receiver;

// Each test finds the first sender and receiver enabled, at these addresses.
beforeEach(async () => {
  sender = `senders/${(await it.instrument.ids("senders"))[0]}`;
  receiver = `receivers/${(await it.instrument.ids("receivers"))[0]}`;
  const activation = {mode: "activate_immediate"};
  const [one, two] = [
    {destination_port: 5004, rtp_enabled: true},
    {destination_port: 5004, rtp_enabled: true},
  ];
  await it.instrument.patch(sender, {
    master_enable: true,
    activation,
    transport_params: [
      {...one, destination_ip: "233.252.0.11"},
      {...two, destination_ip: "233.252.0.21"},
    ],
  });
  await it.instrument.patch(receiver, {
    master_enable: true,
    activation,
    transport_params: [
      {...one, multicast_ip: "233.252.0.11", source_ip: "192.0.2.10"},
      {...two, multicast_ip: "233.252.0.21", source_ip: "198.51.100.10"},
    ],
  });
});

function isDifferent(dialog, parameter) {
  return dialog
    .locator(`tr[data-parameter="${parameter}"]`)
    .evaluate(row => row.classList.contains("differs") && row.textContent.includes("≠"));
}

async function legs(resource, half) {
  return (await it.instrument[half](resource)).transport_params;
}

test("the dialog shows both halves beside each other", async () => {
  await it.instrument.patch(receiver, {transport_params: [{destination_port: 6000}, {}]});
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, receiver);
  for (const column of ["Parameter", "Staged", "Active"])
    assert.equal(await dialog.getByRole("columnheader", {name: column}).count(), 1);
  for (const parameter of [
    "master_enable",
    "peer",
    "leg1.rtp_enabled",
    "leg1.multicast_ip",
    "leg1.destination_port",
    "leg1.source_ip",
    "leg1.interface_ip",
    "leg2.rtp_enabled",
    "leg2.multicast_ip",
    "leg2.destination_port",
    "leg2.source_ip",
    "leg2.interface_ip",
  ]) {
    assert.equal(await dialog.locator(`tr[data-parameter="${parameter}"]`).count(), 1, parameter);
    assert.equal(
      await isDifferent(dialog, parameter),
      parameter === "leg1.destination_port",
      parameter,
    );
  }
  assert.equal(await field(dialog, "Leg 1 port").inputValue(), "6000");
  assert.match(
    await dialog.locator('tr[data-parameter="leg1.destination_port"]').textContent(),
    /5004/,
  );
  assert.equal(await field(dialog, "Leg 2 address").inputValue(), "233.252.0.21");
  assert.equal(await field(dialog, "Leg 2 source").inputValue(), "198.51.100.10");
  await closePanel(page);
});

test("an address and a port are staged, and nothing is active before it is activated", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, sender);
  await field(dialog, "Leg 1 address").fill("233.252.0.77");
  await field(dialog, "Leg 2 port").fill("5077");
  await button(dialog, "Stage").click();
  await eventually(
    async () =>
      (await legs(sender, "staged")).map(leg => [leg.destination_ip, leg.destination_port]),
    [
      ["233.252.0.77", 5004],
      ["233.252.0.21", 5077],
    ],
  );
  assert.deepEqual(
    (await legs(sender, "active")).map(leg => [leg.destination_ip, leg.destination_port]),
    [
      ["233.252.0.11", 5004],
      ["233.252.0.21", 5004],
    ],
  );
  await eventually(() => isDifferent(dialog, "leg1.destination_ip"), true);
  await eventually(() => isDifferent(dialog, "leg2.destination_port"), true);
  assert.equal(await isDifferent(dialog, "leg1.destination_port"), false);
  await eventually(() => entryOf(page, sender).getAttribute("data-differs"), "true");
  await button(dialog, "Activate").click();
  await eventually(
    async () =>
      (await legs(sender, "active")).map(leg => [leg.destination_ip, leg.destination_port]),
    [
      ["233.252.0.77", 5004],
      ["233.252.0.21", 5077],
    ],
  );
  await eventually(() => isDifferent(dialog, "leg1.destination_ip"), false);
  await eventually(
    () => entryOf(page, sender).locator('.leg[data-leg="1"]').textContent(),
    "233.252.0.77:5004",
  );
  await closePanel(page);
});

test("Activate sends what is in the fields, staged or not", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, receiver);
  await field(dialog, "Leg 1 source").fill("203.0.113.5");
  await field(dialog, "Leg 2 enabled").uncheck();
  await button(dialog, "Activate").click();
  await eventually(
    async () => (await legs(receiver, "active")).map(leg => [leg.source_ip, leg.rtp_enabled]),
    [
      ["203.0.113.5", true],
      ["198.51.100.10", false],
    ],
  );
  await eventually(
    () => entryOf(page, receiver).locator('.leg[data-leg="2"]').textContent(),
    "off",
  );
  await closePanel(page);
});

for (const kind of ["sender", "receiver"]) {
  test(`a ${kind} is disabled and enabled again`, async () => {
    const resource = kind === "sender" ? sender : receiver;
    const page = await openPanel(it.browser, it.instrument);
    await eventually(() => entryOf(page, resource).getAttribute("data-enabled"), "true");
    const dialog = await openDialog(page, resource);
    for (const enabled of [false, true]) {
      await field(dialog, "Master enable").setChecked(enabled);
      await button(dialog, "Activate").click();
      await eventually(async () => (await it.instrument.active(resource)).master_enable, enabled);
      await eventually(() => entryOf(page, resource).getAttribute("data-enabled"), String(enabled));
    }
    await closePanel(page);
  });
}

// The text that describes a field that is wrong.
async function errorOf(page, input) {
  await eventually(() => input.getAttribute("aria-invalid"), "true");
  const ids = (await input.getAttribute("aria-describedby")).split(" ");
  return (await Promise.all(ids.map(id => page.locator(`[id="${id}"]`).textContent()))).join(" ");
}

for (const [kind, label, wrong, word] of [
  ["receiver", "Leg 1 port", "70000", "65535"],
  ["sender", "Leg 2 port", "70000", "65535"],
  ["receiver", "Leg 1 address", "10.0.0.1", "multicast"],
  ["receiver", "Leg 2 address", "somewhere", "address"],
  ["sender", "Leg 1 address", "300.1.1.1", "address"],
]) {
  test(`a wrong value is named at its field: ${label} ${wrong} of a ${kind}`, async () => {
    const resource = kind === "sender" ? sender : receiver;
    const page = await openPanel(it.browser, it.instrument);
    const before = await it.instrument.staged(resource);
    const dialog = await openDialog(page, resource);
    const input = field(dialog, label);
    const right = await input.inputValue();
    await input.fill(wrong);
    await button(dialog, "Stage").click();
    const said = await errorOf(page, input);
    assert.ok(said.includes(word), said);
    for (const other of ["Leg 1 port", "Leg 2 port", "Leg 1 address", "Leg 2 address"])
      if (other !== label)
        assert.notEqual(await field(dialog, other).getAttribute("aria-invalid"), "true", other);
    assert.deepEqual(await it.instrument.staged(resource), before);
    // Put right, the error is gone.
    await input.fill(right);
    await button(dialog, "Stage").click();
    await eventually(
      () => input.getAttribute("aria-invalid").then(value => value === "true"),
      false,
    );
    // Chromium's own message
    page.watched.errors = page.watched.errors.filter(one => !one.includes("status of 400"));
    await closePanel(page);
  });
}

test("a wrong value is named at its field, also when its tab was not to be seen", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, sender);
  const input = field(dialog, "Leg 1 port");
  await input.fill("70000");
  await dialog.getByRole("tab", {name: "SDP file"}).click();
  await button(dialog, "Activate").click();
  assert.ok((await errorOf(page, input)).includes("65535"));
  assert.equal(await input.isVisible(), true);
  assert.equal(await input.evaluate(element => element === document.activeElement), true);
  page.watched.errors = page.watched.errors.filter(one => !one.includes("status of 400")); // Chromium's own
  await closePanel(page);
});

test("on a telephone the longest usual address is seen as a whole", async () => {
  await it.instrument.patch(sender, {transport_params: [{destination_ip: "239.155.155.155"}, {}]});
  const page = await openPanel(it.browser, it.instrument, {width: 360});
  const input = field(await openDialog(page, sender), "Leg 1 address");
  await eventually(() => input.inputValue(), "239.155.155.155");
  assert.equal(await input.evaluate(element => element.scrollWidth > element.clientWidth), false);
  await closePanel(page);
});

test("a sender that is staged for a receiver is marked in its row", async () => {
  const [id] = await it.instrument.ids("senders");
  const page = await openPanel(it.browser, it.instrument);
  const state = entryOf(page, receiver).locator(".state");
  await eventually(() => state.textContent(), "on");
  await it.instrument.patch(receiver, {sender_id: id});
  await eventually(() => state.textContent(), "≠\u00a0on");
  await it.instrument.patch(receiver, {activation: {mode: "activate_immediate"}});
  await eventually(() => state.textContent(), "on, from IP Stream 1 Video Sender");
  await it.instrument.patch(receiver, {sender_id: null, activation: {mode: "activate_immediate"}});
  await closePanel(page);
});

test("a receiver is taken off its sender", async () => {
  const [id] = await it.instrument.ids("senders");
  await it.instrument.patch(receiver, {sender_id: id, activation: {mode: "activate_immediate"}});
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, receiver);
  await eventually(() => field(dialog, "Sender").inputValue(), id);
  await field(dialog, "Sender").fill("");
  await button(dialog, "Activate").click();
  await eventually(async () => (await it.instrument.active(receiver)).sender_id, null);
  await closePanel(page);
});

test("an answer that comes late leaves the edits of another dialog alone", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const first = await openDialog(page, sender);
  let goOn;
  const held = new Promise(resolve => { goOn = resolve; });
  await page.route("**/staged", async route => {
    await held;
    await route.continue();
  });
  await field(first, "Leg 1 port").fill("5066");
  await button(first, "Stage").click();
  await page.keyboard.press("Escape");
  const second = await openDialog(page, receiver);
  await field(second, "Leg 1 port").fill("5067");
  goOn();
  await eventually(async () => (await it.instrument.staged(sender)).transport_params[0].destination_port, 5066);
  await eventually(() => entryOf(page, sender).getAttribute("data-differs"), "true");
  assert.equal(await field(second, "Leg 1 port").inputValue(), "5067");
  assert.equal(await second.locator("#dialog-message").textContent(), "");
  await closePanel(page);
});

test("what somebody types stays while the instrument changes", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, sender);
  await field(dialog, "Leg 1 address").fill("233.252.0.88");
  await it.instrument.patch(sender, {transport_params: [{destination_port: 5099}, {}]});
  await eventually(() => field(dialog, "Leg 1 port").inputValue(), "5099");
  assert.equal(await field(dialog, "Leg 1 address").inputValue(), "233.252.0.88");
  assert.equal(
    await field(dialog, "Leg 1 address").evaluate(input => input === document.activeElement),
    true,
  );
  await button(dialog, "Stage").click();
  await eventually(
    async () =>
      (await legs(sender, "staged")).map(leg => [leg.destination_ip, leg.destination_port]),
    [
      ["233.252.0.88", 5099],
      ["233.252.0.21", 5004],
    ],
  );
  await closePanel(page);
});

// SPDX-License-Identifier: Apache-2.0
"use strict";
// Activations now, in some seconds and at a time; what is scheduled, and what has happened.

const assert = require("node:assert/strict");
const {beforeEach, test} = require("node:test");
const {SINGLE} = require("./support/instrument");
const {
  button,
  closePanel,
  dialogOf,
  entryOf,
  eventually,
  field,
  openDialog,
  openPanel,
  shared,
} = require("./support/panel");

const it = shared();
let sender;

beforeEach(async () => {
  sender = `senders/${(await it.instrument.ids("senders"))[0]}`;
  await it.instrument.patch(sender, {activation: {mode: null}}); // what a test that failed has left
  await it.instrument.patch(sender, {
    master_enable: false,
    activation: {mode: "activate_immediate"},
  });
});

function masterEnable(half) {
  return it.instrument[half](sender).then(body => body.master_enable);
}

async function choose(dialog, when) {
  await dialog.getByRole("radio", {name: when, exact: true}).check();
}

async function enable(page) {
  const dialog = await openDialog(page, sender);
  await field(dialog, "Master enable").check();
  return dialog;
}

test("now", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await enable(page);
  await choose(dialog, "now");
  await button(dialog, "Activate").click();
  await eventually(() => masterEnable("active"), true);
  const {activation} = await it.instrument.active(sender);
  assert.equal(activation.mode, "activate_immediate");
  await page.locator('#log li[data-kind="activation"]').first().waitFor();
  assert.match(
    await page.locator('#log li[data-kind="activation"]').first().textContent(),
    /IP Stream 1 Video Sender/,
  );
  await closePanel(page);
});

test("in two seconds", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await enable(page);
  await choose(dialog, "in seconds");
  await field(dialog, "Seconds").fill("2");
  await button(dialog, "Activate").click();
  await eventually(
    () =>
      entryOf(page, sender)
        .getAttribute("data-scheduled")
        .then(due => due !== null),
    true,
  );
  const {activation} = await it.instrument.staged(sender);
  assert.equal(activation.mode, "activate_scheduled_relative");
  assert.equal(activation.requested_time, "2:000000000");
  await eventually(() => masterEnable("active"), true);
  await eventually(() => entryOf(page, sender).getAttribute("data-scheduled"), null);
  await eventually(() => page.locator("#scheduled li").count(), 0);
  await eventually(() => entryOf(page, sender).getAttribute("data-enabled"), "true");
  await closePanel(page);
});

test("at a time of this machine's clock", async () => {
  // In a zone that is not UTC: the field has the time of the person.
  const page = await openPanel(it.browser, it.instrument, {timezoneId: "Asia/Tokyo"});
  const dialog = await enable(page);
  await choose(dialog, "at");
  let due = Math.ceil(Date.now() / 1000) + 3;
  due += due % 60 === 0 ? 1 : 0; // the field leaves out ":00", which Playwright takes for an error
  const inTokyo = new Date((due + 9 * 3600) * 1000).toISOString().slice(0, 19);
  await dialog.getByLabel("Time", {exact: true}).fill(inTokyo);
  await button(dialog, "Activate").click();
  await eventually(async () => (await it.instrument.staged(sender)).activation, {
    mode: "activate_scheduled_absolute",
    requested_time: `${due + 37}:000000000`,
    activation_time: `${due + 37}:0`,
  });
  await eventually(() => masterEnable("active"), true);
  assert.ok(Date.now() / 1000 >= due - 0.1, "too early");
  await closePanel(page);
});

test("what is scheduled counts down, and is cancelled in the list", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await enable(page);
  await choose(dialog, "in seconds");
  await field(dialog, "Seconds").fill("300");
  await button(dialog, "Activate").click();
  await eventually(() => page.locator("#scheduled li").count(), 1);
  await page.keyboard.press("Escape");
  await dialogOf(page).waitFor({state: "hidden"});
  const countdown = page.locator("#scheduled li .countdown");
  const first = await countdown.textContent();
  await eventually(async () => await countdown.textContent() !== first, true);
  await button(page, "Cancel activation of IP Stream 1 Video Sender").focus();
  await page.keyboard.press("Enter");
  await eventually(async () => (await it.instrument.staged(sender)).activation,
                   {mode: null, requested_time: null, activation_time: null});
  await eventually(() => page.locator("#scheduled li").count(), 0);
  assert.equal(await masterEnable("active"), false);
  // The button is gone, the focus is not.
  assert.equal(await page.evaluate(() => document.activeElement.getAttribute("aria-label")), "Scheduled activations");
  await closePanel(page);
});

test("what is scheduled is cancelled in the dialog", async () => {
  await it.instrument.patch(sender, {
    master_enable: true,
    activation: {
      mode: "activate_scheduled_relative",
      requested_time: "300:0",
    },
  });
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, sender);
  await button(dialog, "Cancel activation").focus();
  await page.keyboard.press("Enter");
  await eventually(async () => (await it.instrument.staged(sender)).activation.mode, null);
  await eventually(() => button(dialog, "Cancel activation").isVisible(), false);
  await dialog.getByRole("status").filter({hasText: "The activation was cancelled."}).waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "Parameters");
  assert.equal(await masterEnable("active"), false);
  await closePanel(page);
});

test("of two that are scheduled, one that is cancelled elsewhere leaves the focus at the other", async () => {
  const other = `senders/${(await it.instrument.ids("senders"))[1]}`;
  const soon = {activation: {mode: "activate_scheduled_relative", requested_time: "300:0"}};
  await it.instrument.patch(sender, soon);
  await it.instrument.patch(other, soon);
  const page = await openPanel(it.browser, it.instrument);
  const cancel = button(page, "Cancel activation of IP Stream 2 Video Sender");
  await cancel.focus();
  await it.instrument.patch(sender, {activation: {mode: null}});
  await eventually(() => page.locator("#scheduled li").count(), 1);
  assert.equal(await cancel.evaluate(element => element === document.activeElement), true);
  await it.instrument.patch(sender, soon); // it comes before the other again
  await eventually(() => page.locator("#scheduled li b").allTextContents(),
                   ["IP Stream 1 Video Sender", "IP Stream 2 Video Sender"]);
  assert.equal(await cancel.evaluate(element => element === document.activeElement), true);
  await it.instrument.patch(other, {activation: {mode: null}});
  await closePanel(page);
});

test("while one is scheduled a change is refused, and the page says so", async () => {
  await it.instrument.patch(sender, {
    master_enable: true,
    activation: {
      mode: "activate_scheduled_relative",
      requested_time: "300:0",
    },
  });
  const refused = await it.instrument.request("PATCH", `${SINGLE}/${sender}/staged`, {
    master_enable: false,
  });
  assert.equal(refused.status, 423);
  const page = await openPanel(it.browser, it.instrument);
  const line = page.locator('#log li[data-kind="refusal"]').first();
  await line.waitFor();
  assert.match(await line.textContent(), /IP Stream 1 Video Sender/);
  assert.match(await line.textContent(), /423/);
  await it.instrument.patch(sender, {activation: {mode: null}});
  await closePanel(page);
});

test("a number of seconds that is none is said at its field, and nothing is sent", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await enable(page);
  await choose(dialog, "in seconds");
  const seconds = field(dialog, "Seconds");
  await seconds.fill("-1");
  await button(dialog, "Activate").click();
  assert.equal(await seconds.evaluate(input => input.validity.rangeUnderflow), true);
  assert.equal(await seconds.evaluate(input => input === document.activeElement), true);
  assert.equal((await it.instrument.staged(sender)).activation.mode, null);
  await closePanel(page);
});

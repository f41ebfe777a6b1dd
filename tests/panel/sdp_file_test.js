// SPDX-License-Identifier: Apache-2.0
"use strict";
// An SDP file that is given to a receiver on the page.

const assert = require("node:assert/strict");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const {test} = require("node:test");
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
const {twoLegs} = require("./support/sdp_files");

const it = shared();

// What the receiver joins of twoLegs().
const LEGS = [
  {
    multicast_ip: "233.252.0.101",
    destination_port: 5010,
    source_ip: "203.0.113.7",
    interface_ip: "auto",
    rtp_enabled: true,
  },
  {
    multicast_ip: "233.252.0.102",
    destination_port: 5010,
    source_ip: "203.0.113.7",
    interface_ip: "auto",
    rtp_enabled: true,
  },
];

async function receiver(position) {
  return `receivers/${(await it.instrument.ids("receivers"))[position]}`;
}

function verdictOf(dialog) {
  return dialog.locator("#sdp-verdict").getAttribute("data-verdict");
}

async function isTaken(dialog) {
  await dialog.locator('#sdp-verdict[data-verdict="taken"]').waitFor();
  assert.match(await dialog.locator('#sdp-legs [data-leg="1"]').textContent(), /233\.252\.0\.101/);
  assert.match(await dialog.locator('#sdp-legs [data-leg="1"]').textContent(), /5010/);
  assert.match(await dialog.locator('#sdp-legs [data-leg="2"]').textContent(), /233\.252\.0\.102/);
}

// A file as the desktop hands it to the page.
async function drop(page, target, name, text) {
  const dropped = await page.evaluateHandle(
    ([name, text]) => {
      const transfer = new DataTransfer();
      transfer.items.add(new File([text], name, {type: "application/sdp"}));
      return transfer;
    },
    [name, text],
  );
  for (const type of ["dragenter", "dragover", "drop"])
    await target.dispatchEvent(type, {dataTransfer: dropped});
}

test("a file that is pasted is checked, then activated", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const resource = await receiver(0);
  const dialog = await openDialog(page, resource, "SDP file");
  await field(dialog, "SDP file").fill(twoLegs());
  await isTaken(dialog);
  assert.equal((await it.instrument.staged(resource)).transport_file.data, null);
  await button(dialog, "Activate").click();
  await eventually(
    async () => (await it.instrument.active(resource)).transport_params,
    LEGS.map((leg, i) => ({...leg, interface_ip: ["192.0.2.10", "198.51.100.10"][i]})),
  );
  // A text area knows no CR.
  assert.equal(
    (await it.instrument.active(resource)).transport_file.data,
    twoLegs().replaceAll("\r\n", "\n"),
  );
  await closePanel(page);
});

test("a file that is dropped on a receiver opens its dialog, and is staged", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const resource = await receiver(1);
  const before = await it.instrument.active(resource);
  await drop(page, entryOf(page, resource), "camera.sdp", twoLegs());
  const dialog = dialogOf(page);
  await isTaken(dialog);
  await button(dialog, "Stage").click();
  await eventually(async () => (await it.instrument.staged(resource)).transport_params, LEGS);
  assert.deepEqual(await it.instrument.active(resource), before);
  await eventually(() => entryOf(page, resource).getAttribute("data-differs"), "true");
  await closePanel(page);
});

test("a file that is pasted on a receiver opens its dialog", async () => {
  const page = await openPanel(it.browser, it.instrument, {permissions: ["clipboard-read", "clipboard-write"]});
  const resource = await receiver(2);
  await page.evaluate(text => navigator.clipboard.writeText(text), twoLegs());
  await entryOf(page, resource).locator("button.open").focus();
  await page.keyboard.press("Control+V");
  await isTaken(dialogOf(page));
  assert.equal(await dialogOf(page).getByRole("tab", {name: "SDP file"}).getAttribute("aria-selected"), "true");
  assert.equal((await it.instrument.staged(resource)).transport_file.data, null);
  await closePanel(page);
});

test("a file that is dropped on the dialog is checked", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, await receiver(2), "SDP file");
  await drop(page, dialog, "camera.sdp", twoLegs());
  await isTaken(dialog);
  await eventually(
    () => field(dialog, "SDP file").inputValue(),
    twoLegs().replaceAll("\r\n", "\n"),
  );
  await closePanel(page);
});

test("a file of this machine is checked", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), "panel-test-"));
  try {
    fs.writeFileSync(path.join(folder, "camera.sdp"), twoLegs());
    const dialog = await openDialog(page, await receiver(2), "SDP file");
    const [chooser] = await Promise.all([
      page.waitForEvent("filechooser"),
      button(dialog, "Choose file").click(),
    ]);
    await chooser.setFiles(path.join(folder, "camera.sdp"));
    await isTaken(dialog);
  } finally {
    fs.rmSync(folder, {recursive: true});
  }
  await closePanel(page);
});

test("the file of a sender of the instrument is taken, and names that sender", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [, sender] = await it.instrument.ids("senders");
  const resource = await receiver(3);
  const dialog = await openDialog(page, resource, "SDP file");
  await field(dialog, "Sender").selectOption(sender);
  await dialog.locator('#sdp-verdict[data-verdict="taken"]').waitFor();
  await button(dialog, "Activate").click();
  await eventually(async () => (await it.instrument.active(resource)).sender_id, sender);
  const active = await it.instrument.active(resource);
  assert.deepEqual(
    active.transport_params.map(leg => leg.multicast_ip),
    ["233.252.0.12", "233.252.0.22"],
  );
  assert.equal(active.transport_file.data, await it.instrument.sdp(sender));
  await closePanel(page);
});

test("a refused file shows what is wrong and what is allowed, and changes nothing", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const resource = await receiver(2);
  const before = await it.instrument.staged(resource);
  const dialog = await openDialog(page, resource, "SDP file");
  await field(dialog, "SDP file").fill(twoLegs({rate: "24"}));
  await eventually(() => verdictOf(dialog), "refused");
  const finding = dialog.locator('#sdp-lines li[data-line="10"] .finding[data-code="SDP048"]');
  assert.equal(await finding.getAttribute("data-severity"), "error");
  const said = await finding.textContent();
  for (const word of ["SDP048", "The frame rate is not supported", "24", "25", "60000/1001"])
    assert.ok(said.includes(word), `${word} is not in: ${said}`);
  assert.equal(await dialog.locator("#sdp-legs [data-leg]").count(), 0);
  assert.equal(await button(dialog, "Stage").isDisabled(), true);
  assert.equal(await button(dialog, "Activate").isDisabled(), true);
  assert.deepEqual(await it.instrument.staged(resource), before);
  // Put right, it is taken.
  await field(dialog, "SDP file").fill(twoLegs());
  await isTaken(dialog);
  assert.equal(await button(dialog, "Activate").isEnabled(), true);
  await closePanel(page);
});

test("a file with a warning is taken, and the warning is at its line", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, await receiver(2), "SDP file");
  await field(dialog, "SDP file").fill(twoLegs().replace("m=video 5010 RTP", "m=video 5010/2 RTP"));
  await isTaken(dialog);
  const finding = dialog.locator('#sdp-lines li[data-line="6"] .finding[data-code="SDP032"]');
  assert.equal(await finding.getAttribute("data-severity"), "warning");
  await closePanel(page);
});

test("what is typed fast is judged as it stands at the end", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, await receiver(2), "SDP file");
  const text = field(dialog, "SDP file");
  for (const rate of [24, 50, 24, 50, 24]) await text.fill(twoLegs({rate}));
  await text.fill(twoLegs());
  await isTaken(dialog);
  // Nothing that was asked before comes later.
  await new Promise(resolve => setTimeout(resolve, 1500));
  assert.equal(await verdictOf(dialog), "taken");
  await closePanel(page);
});

test("what has been edited since it was checked cannot be sent", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, await receiver(2), "SDP file");
  const held = [];
  await page.route("**/check-sdp/*", route => held.push(route));
  await field(dialog, "SDP file").fill(twoLegs());
  await eventually(() => held.length, 1);
  await button(dialog, "Activate").evaluate(activate => {
    window.wasEnabled = false;
    new MutationObserver(() => {
      window.wasEnabled ||= !activate.disabled;
    }).observe(activate, {attributes: true});
  });
  await field(dialog, "SDP file").fill(twoLegs({rate: 24}));
  await held[0].continue();
  await eventually(() => held.length, 2);
  await held[1].continue();
  await eventually(() => verdictOf(dialog), "refused");
  assert.equal(await page.evaluate(() => window.wasEnabled), false);
  await closePanel(page);
});

test("with a sender that has been chosen only its own file is sent", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [one, two] = await it.instrument.ids("senders");
  const resource = await receiver(2);
  const dialog = await openDialog(page, resource, "SDP file");
  await field(dialog, "SDP file").fill(twoLegs());
  await isTaken(dialog);
  // The first file comes after the second.
  const held = [];
  await page.route("**/transportfile", route => held.push(route));
  await field(dialog, "Sender").selectOption(one);
  await eventually(() => held.length, 1);
  assert.equal(await button(dialog, "Activate").isDisabled(), true);
  await field(dialog, "Sender").selectOption(two);
  await eventually(() => held.length, 2);
  await held[1].continue();
  await dialog.locator('#sdp-legs [data-leg="1"]').filter({hasText: "233.252.0.12"}).waitFor();
  const late = page.waitForResponse(answer => answer.url().includes(one));
  await held[0].continue();
  await late;
  await new Promise(resolve => setTimeout(resolve, 500)); // for the page to fall for it
  await button(dialog, "Stage").click();
  await eventually(async () => (await it.instrument.staged(resource)).sender_id, two);
  assert.equal(
    (await it.instrument.staged(resource)).transport_file.data,
    await it.instrument.sdp(two),
  );
  await closePanel(page);
});

test("a file that is too large is refused, and says so", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, await receiver(2), "SDP file");
  await field(dialog, "SDP file").fill(twoLegs() + "a=x-filler:" + "x".repeat(5000) + "\r\n");
  await eventually(() => verdictOf(dialog), "refused");
  assert.equal(await dialog.locator('.finding[data-code="SDP004"]').count(), 1);
  await closePanel(page);
});

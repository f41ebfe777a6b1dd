// SPDX-License-Identifier: Apache-2.0
"use strict";
// The SDP file of a sender on the page.

const assert = require("node:assert/strict");
const fs = require("node:fs");
const {test} = require("node:test");
const {button, closePanel, eventually, openDialog, openPanel, shared} = require("./support/panel");

const it = shared();

async function open(page, position) {
  const id = (await it.instrument.ids("senders"))[position];
  const dialog = await openDialog(page, `senders/${id}`, "SDP file");
  await dialog.locator('#sdp-lines li[data-line="1"]').waitFor();
  return {dialog, sdp: await it.instrument.sdp(id)};
}

for (const position of [0, 4, 5]) {
  test(`every line is there, with an explanation: sender ${position}`, async () => {
    const page = await openPanel(it.browser, it.instrument);
    const {dialog, sdp} = await open(page, position);
    const lines = sdp.split("\r\n").slice(0, -1);
    for (const [i, line] of lines.entries()) {
      const item = dialog.locator(`#sdp-lines li[data-line="${i + 1}"]`);
      assert.ok((await item.textContent()).includes(line), line);
      assert.notEqual((await item.locator(".explanation").textContent()).trim(), "", line);
    }
    assert.equal(await dialog.locator(`#sdp-lines li[data-line="${lines.length + 1}"]`).count(), 0);
    await closePanel(page);
  });
}

test("no two kinds of lines have the same explanation", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const {dialog} = await open(page, 0);
  const said = await dialog
    .locator('#sdp-lines li:not([data-line="0"])')
    .evaluateAll(items =>
      items.map(item => [
        item.textContent.match(/([a-z]=(?:[a-z-]+(?=:))?)/)[1],
        item.querySelector(".explanation").textContent,
      ]),
    );
  const kinds = new Map();
  for (const [kind, explanation] of said)
    kinds.set(explanation, new Set([...(kinds.get(explanation) ?? []), kind]));
  for (const [explanation, of] of kinds) assert.equal(of.size, 1, `${[...of]}: ${explanation}`);
  await closePanel(page);
});

test("Copy", async () => {
  const page = await openPanel(it.browser, it.instrument, {
    permissions: ["clipboard-read", "clipboard-write"],
  });
  const {dialog, sdp} = await open(page, 0);
  await button(dialog, "Copy").click();
  await eventually(() => page.evaluate(() => navigator.clipboard.readText()), sdp);
  await closePanel(page);
});

test("Copy where the browser has no clipboard for pages of http", async () => {
  const page = await openPanel(it.browser, it.instrument, {permissions: ["clipboard-read", "clipboard-write"]});
  const {dialog, sdp} = await open(page, 0);
  const read = await page.evaluateHandle(() => navigator.clipboard);
  await page.evaluate(() => Object.defineProperty(navigator, "clipboard", {value: undefined}));
  await button(dialog, "Copy").focus();
  await page.keyboard.press("Enter");
  await dialog.getByRole("status").filter({hasText: "Copied."}).waitFor();
  assert.equal((await read.evaluate(clipboard => clipboard.readText())).replaceAll("\r\n", "\n"),
               sdp.replaceAll("\r\n", "\n"));
  assert.equal(await button(dialog, "Copy").evaluate(element => element === document.activeElement), true);
  await closePanel(page);
});

test("Download", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const {dialog, sdp} = await open(page, 0);
  const download = page.waitForEvent("download");
  await dialog.getByText("Download", {exact: true}).click();
  const file = await download;
  assert.match(file.suggestedFilename(), /\.sdp$/);
  assert.equal(fs.readFileSync(await file.path(), "utf8"), sdp);
  await closePanel(page);
});

test("a file that changes is shown as it is then", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const id = (await it.instrument.ids("senders"))[1];
  const dialog = await openDialog(page, `senders/${id}`, "SDP file");
  const lines = dialog.locator("#sdp-lines");
  await lines.getByText("233.252.0.12").first().waitFor();
  await it.instrument.patch(`senders/${id}`, {
    activation: {mode: "activate_immediate"},
    transport_params: [{destination_ip: "233.252.0.99"}, {}],
  });
  await lines.getByText("233.252.0.99").first().waitFor();
  await closePanel(page);
});

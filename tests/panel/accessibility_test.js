// SPDX-License-Identifier: Apache-2.0
"use strict";
// The rules of WCAG that a program can check, in each state of the page, light and dark, on a
// telephone and on a large screen.

const assert = require("node:assert/strict");
const {test} = require("node:test");
const axe = require("axe-core");
const {SINGLE} = require("./support/instrument");
const {
  closePanel,
  dialogOf,
  entryOf,
  field,
  openDialog,
  openPanel,
  shared,
} = require("./support/panel");
const {twoLegs} = require("./support/sdp_files");

const it = shared({configuration: {streams: {audio_groups: 2}}});

async function violations(page) {
  if (!(await page.evaluate(() => "axe" in window))) await page.evaluate(axe.source);
  const found = await page.evaluate(() =>
    window.axe.run(document, {
      resultTypes: ["violations"],
      runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"],
    }),
  );
  return found.violations.map(
    one =>
      `${one.id}: ${one.help}\n  ` +
      one.nodes
        .slice(0, 5)
        .map(node => `${node.target}: ${node.failureSummary}`)
        .join("\n  "),
  );
}

async function looksRight(page, state) {
  assert.deepEqual(await violations(page), [], state);
  for (const box of [page.locator("html"), dialogOf(page)])
    if (await box.isVisible())
      assert.equal(
        await box.evaluate(element => element.scrollWidth > element.clientWidth),
        false,
        `${state}: something is wider than the ${await box.evaluate(element => element.localName)}`,
      );
}

async function close(page) {
  await page.keyboard.press("Escape");
  await dialogOf(page).waitFor({state: "hidden"});
}

for (const colorScheme of ["light", "dark"]) {
  for (const width of [360, 1920]) {
    test(`${colorScheme}, ${width} pixels wide`, async () => {
      const [sender] = await it.instrument.ids("senders");
      const [receiver, other] = await it.instrument.ids("receivers");
      const soon = {mode: "activate_scheduled_relative", requested_time: "600:0"};
      await it.instrument.patch(`receivers/${receiver}`, {
        transport_params: [{destination_port: 6000}, {}],
      });
      await it.instrument.patch(`receivers/${other}`, {activation: {mode: null}});
      await it.instrument.patch(`receivers/${other}`, {master_enable: true, activation: soon});
      await it.instrument.request("PATCH", `${SINGLE}/senders/${sender}/staged`, "[]");
      const page = await openPanel(it.browser, it.instrument, {
        width,
        colorScheme,
        reducedMotion: "reduce",
      });
      await page.locator('#log li[data-kind="refusal"]').first().waitFor();
      await page.locator("#scheduled li").first().waitFor();
      await looksRight(page, "overview");

      const dialog = await openDialog(page, `receivers/${receiver}`);
      await looksRight(page, "parameters of a receiver");
      await dialog.getByRole("tab", {name: "SDP file"}).click();
      await looksRight(page, "no SDP file yet");
      await field(dialog, "SDP file").fill(twoLegs({rate: 24}).replace("5010 RTP", "5010/2 RTP"));
      await dialog.locator('#sdp-verdict[data-verdict="refused"]').waitFor();
      await looksRight(page, "findings");
      await field(dialog, "SDP file").fill(twoLegs());
      await dialog.locator('#sdp-verdict[data-verdict="taken"]').waitFor();
      await looksRight(page, "a file that is taken");
      await close(page);

      await openDialog(page, `receivers/${other}`);
      await looksRight(page, "a scheduled activation");
      await close(page);
      await openDialog(page, `senders/${sender}`);
      await looksRight(page, "parameters of a sender");
      await dialog.getByRole("tab", {name: "SDP file"}).click();
      await dialog.locator('#sdp-lines li[data-line="1"]').waitFor();
      await looksRight(page, "SDP file of a sender");
      await close(page);

      await page.getByLabel("Show requests").check();
      await looksRight(page, "requests");
      await closePanel(page);
    });
  }
}

test("the check finds what is wrong", async () => {
  const page = await openPanel(it.browser, it.instrument);
  await page.evaluate(() =>
    document.querySelector("main").append(document.createElement("button")),
  );
  const found = await violations(page);
  assert.equal(found.length, 1, found.join("\n"));
  assert.match(found[0], /^button-name: /);
  await closePanel(page);
});

test("in forced colours a lamp that is on differs from one that is off", async () => {
  const page = await openPanel(it.browser, it.instrument, {forcedColors: "active"});
  const [receiver] = await it.instrument.ids("receivers");
  const background = locator => locator.evaluate(element => getComputedStyle(element, "::before").backgroundColor);
  const on = await background(page.locator("#connection"));
  const off = await background(entryOf(page, `receivers/${receiver}`).locator(".lamp"));
  assert.equal(on, "rgb(0, 0, 0)");
  assert.equal(off, "rgba(0, 0, 0, 0)");
  await closePanel(page);
});

test("in a low window the dialog scrolls as a whole", async () => {
  const page = await openPanel(it.browser, it.instrument, {width: 640, height: 300});
  const dialog = await openDialog(page, `receivers/${(await it.instrument.ids("receivers"))[0]}`);
  const panel = dialog.getByRole("tabpanel");
  assert.equal(await panel.evaluate(element => element.scrollHeight > element.clientHeight), false);
  await dialog.getByRole("button", {name: "Activate"}).scrollIntoViewIfNeeded();
  await closePanel(page);
});

test("with the keyboard the focus is always seen, and the dialog keeps it", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [receiver] = await it.instrument.ids("receivers");
  const open = entryOf(page, `receivers/${receiver}`).locator("button.open");
  await open.focus();
  await page.keyboard.press("Shift+Tab");
  await page.keyboard.press("Tab");
  const outline = await open.evaluate(element => getComputedStyle(element).outlineStyle);
  assert.notEqual(outline, "none");
  await page.keyboard.press("Enter");
  await dialogOf(page).waitFor();
  for (let i = 0; i < 60; ++i) {
    await page.keyboard.press("Tab");
    assert.equal(
      await page.evaluate(
        () =>
          document.activeElement === document.body ||
          document.querySelector("dialog").contains(document.activeElement),
      ),
      true,
    );
  }
  await page.keyboard.press("Escape");
  assert.equal(await open.evaluate(element => element === document.activeElement), true);
  await closePanel(page);
});

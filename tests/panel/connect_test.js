// SPDX-License-Identifier: Apache-2.0
"use strict";
// A receiver connected to a sender of the instrument: by dragging, and with the keyboard alone.
// What the page asks for can be repeated in a shell.

const assert = require("node:assert/strict");
const {execFileSync} = require("node:child_process");
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

const it = shared();

async function resource(side, position) {
  return `${side}/${(await it.instrument.ids(side))[position]}`;
}

async function isConnected(receiver, sender, groups) {
  await eventually(async () => {
    const active = await it.instrument.active(receiver);
    return [
      active.master_enable,
      active.sender_id,
      active.transport_params.map(leg => leg.multicast_ip),
    ];
  }, [true, sender.split("/")[1], groups]);
}

test("a sender is dragged onto a receiver", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [sender, receiver] = [await resource("senders", 0), await resource("receivers", 1)];
  const before = await it.instrument.staged(receiver);
  await entryOf(page, sender).dragTo(entryOf(page, receiver));
  const dialog = dialogOf(page);
  await dialog.locator('#sdp-verdict[data-verdict="taken"]').waitFor();
  assert.equal(
    await dialog.getByRole("tab", {name: "SDP file"}).getAttribute("aria-selected"),
    "true",
  );
  assert.deepEqual(await it.instrument.staged(receiver), before);
  await button(dialog, "Activate").click();
  await isConnected(receiver, sender, ["233.252.0.11", "233.252.0.21"]);
  await closePanel(page);
});

test("a sender that does not fit is dragged onto a receiver", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [sender, receiver] = [await resource("senders", 4), await resource("receivers", 2)];
  await entryOf(page, sender).dragTo(entryOf(page, receiver));
  await dialogOf(page).locator('#sdp-verdict[data-verdict="refused"]').waitFor();
  assert.ok((await dialogOf(page).locator('.finding[data-code="SDP020"]').count()) > 0);
  assert.equal(await button(dialogOf(page), "Activate").isDisabled(), true);
  await closePanel(page);
});

// Presses the key until the element has the focus.
async function press(page, key, target, times = 200) {
  for (let i = 0; i < times; ++i) {
    if (await target.evaluate(element => element === document.activeElement)) return;
    await page.keyboard.press(key);
  }
  assert.fail(`${times} times ${key}, and the focus is not at ${target}`);
}

test("the keyboard alone does it too", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [sender, receiver] = [await resource("senders", 1), await resource("receivers", 3)];
  const open = entryOf(page, receiver).locator("button.open");
  await press(page, "Tab", open);
  await page.keyboard.press("Enter");
  const dialog = dialogOf(page);
  await dialog.waitFor();
  const tab = dialog.getByRole("tab", {name: "SDP file"});
  await press(page, "Tab", dialog.getByRole("tab", {selected: true}));
  await press(page, "ArrowRight", tab, 3);
  if ((await tab.getAttribute("aria-selected")) !== "true") await page.keyboard.press("Enter");
  const select = field(dialog, "Sender");
  await press(page, "Tab", select);
  for (let i = 0; i < 10 && (await select.inputValue()) !== sender.split("/")[1]; ++i)
    await page.keyboard.press("ArrowDown");
  await dialog.locator('#sdp-verdict[data-verdict="taken"]').waitFor();
  await press(page, "Tab", button(dialog, "Activate"));
  await page.keyboard.press("Enter");
  await isConnected(receiver, sender, ["233.252.0.12", "233.252.0.22"]);
  // Back to where it came from.
  await page.keyboard.press("Escape");
  await dialog.waitFor({state: "hidden"});
  assert.equal(await open.evaluate(element => element === document.activeElement), true);
  await closePanel(page);
});

test("the requests that the page makes do the same in a shell", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const sender = await resource("senders", 2);
  await page.getByLabel("Show requests").check();
  const region = page.getByRole("region", {name: "Requests", exact: true});
  await region.waitFor();
  const dialog = await openDialog(page, sender);
  await field(dialog, "Leg 1 address").fill("233.252.0.66");
  await button(dialog, "Activate").click();
  const address = async () =>
    (await it.instrument.active(sender)).transport_params[0].destination_ip;
  await eventually(address, "233.252.0.66");
  // The file of the sender may have been asked for since.
  const line = await region.locator("li code").filter({hasText: "PATCH"}).last().textContent();
  assert.ok(line.startsWith("curl "), line);
  await it.instrument.patch(sender, {
    activation: {mode: "activate_immediate"},
    transport_params: [{destination_ip: "233.252.0.13"}, {}],
  });
  assert.equal(await address(), "233.252.0.13");
  const answer = execFileSync("sh", ["-c", line], {
    encoding: "utf8",
    stdio: ["ignore", "pipe", "ignore"],
  });
  assert.equal(JSON.parse(answer).transport_params[0].destination_ip, "233.252.0.66");
  assert.equal(await address(), "233.252.0.66");
  await closePanel(page);
});

test("the latest of many requests is seen at once", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialog = await openDialog(page, await resource("receivers", 0), "SDP file");
  const lines = page.locator("#requests li code");
  for (let i = 2; i < 14; ++i) {
    await field(dialog, "SDP file").fill(`s=${i}\n\n`);
    await eventually(() => lines.count(), i);
  }
  await page.keyboard.press("Escape");
  const isSeen = () => lines.last().evaluate(line => {
    const box = document.querySelector("#requests section").getBoundingClientRect();
    return line.getBoundingClientRect().bottom <= box.bottom;
  });
  await page.getByLabel("Show requests").check();
  assert.equal(await isSeen(), true);
  await openDialog(page, await resource("senders", 0), "SDP file");
  await eventually(() => lines.count(), 14);
  assert.equal(await isSeen(), true);
  await closePanel(page);
});

test("a text that begins with @ is no name of a file in a shell", async () => {
  const page = await openPanel(it.browser, it.instrument);
  await page.getByLabel("Show requests").check();
  const dialog = await openDialog(page, await resource("receivers", 0), "SDP file");
  await field(dialog, "SDP file").fill("@/etc/hostname  two blanks");
  await dialog.locator('#sdp-verdict[data-verdict="refused"]').waitFor();
  const code = page.getByRole("region", {name: "Requests", exact: true}).locator("li code").last();
  const said = execFileSync("sh", ["-c", await code.textContent()], {encoding: "utf8", stdio: ["ignore", "pipe", "ignore"]});
  assert.match(JSON.parse(said).findings.map(one => one.text).join("\n"), /@/);
  // It can be copied as it is shown.
  assert.match(await code.innerText(), /@\/etc\/hostname  two blanks/);
  await closePanel(page);
});

test("an SDP file with quotes and line ends is the same in a shell", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const receiver = await resource("receivers", 0);
  const {twoLegs} = require("./support/sdp_files");
  await page.getByLabel("Show requests").check();
  const dialog = await openDialog(page, receiver, "SDP file");
  await field(dialog, "SDP file").fill(twoLegs({name: 'it\'s "$(here)" \\n `x`'}));
  await dialog.locator('#sdp-verdict[data-verdict="taken"]').waitFor();
  await button(dialog, "Stage").click();
  await eventually(
    async () => (await it.instrument.staged(receiver)).transport_file.data !== null,
    true,
  );
  const {transport_file} = await it.instrument.staged(receiver);
  assert.match(transport_file.data, /\ns=it's "\$\(here\)" \\n `x`\r?\n/);
  await it.instrument.patch(receiver, {transport_file: {data: null, type: null}});
  const line = await page
    .getByRole("region", {name: "Requests", exact: true})
    .locator("li code")
    .last()
    .textContent();
  execFileSync("sh", ["-c", line], {stdio: ["ignore", "pipe", "ignore"]});
  assert.deepEqual((await it.instrument.staged(receiver)).transport_file, transport_file);
  await closePanel(page);
});

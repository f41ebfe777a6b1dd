// SPDX-License-Identifier: Apache-2.0
"use strict";
// Texts of others are shown as texts, whatever they contain, and stay in their place.

const assert = require("node:assert/strict");
const {execFileSync} = require("node:child_process");
const {test} = require("node:test");
const {Instrument, SINGLE} = require("./support/instrument");
const {
  closePanel,
  entryOf,
  eventually,
  field,
  openDialog,
  openPanel,
  shared,
} = require("./support/panel");
const {twoLegs} = require("./support/sdp_files");

const SCRIPT = "<script>alert(1)</script>";
const IMAGE = "<img src=x onerror=alert(1)>";
const REVERSED = "a\u202Egnp.exe"; // right to left from its second character on
const WIDE = "\u7DB2".repeat(42); // 126 bytes
const UNBROKEN = "W".repeat(63);

// Instruments whose every text is such a one.
function configurationWith(label, description) {
  return {
    node: {label, description},
    labels: {device: label, senders: Array(6).fill(label), receivers: Array(24).fill(label)},
  };
}

const it = shared();

async function overflows(page) {
  return page.evaluate(
    () => document.documentElement.scrollWidth > document.documentElement.clientWidth,
  );
}

async function nothingRan(page, dialogs) {
  assert.deepEqual(dialogs, []);
  assert.equal(await page.locator("img, h1 script, li script, dialog script").count(), 0);
}

for (const [what, label, description] of [
  ["markup", SCRIPT, IMAGE],
  ["a change of the writing direction", REVERSED, `${REVERSED} ${REVERSED}`],
  ["wide characters to the limit", WIDE.slice(0, 21), WIDE],
  ["a word without an end", UNBROKEN, "W".repeat(127)],
  ["combining marks", "Z" + "\u0351\u036B\u0343".repeat(10), "e" + "\u0301".repeat(60)],
  ["names of members of objects", "__proto__", "constructor"],
]) {
  for (const width of [360, 1280]) {
    test(`labels with ${what}, ${width} pixels wide`, async () => {
      const instrument = await Instrument.start({
        configuration: configurationWith(label, description),
      });
      try {
        const page = await openPanel(it.browser, instrument, {width});
        const dialogs = [];
        page.on("dialog", dialog => dialogs.push(dialog.message()));
        await eventually(() => page.locator("h1").textContent(), label);
        assert.ok(
          (await page.getByRole("region", {name: "Instrument"}).textContent()).includes(
            description,
          ),
        );
        assert.equal(await overflows(page), false);
        // What is beside a reversed text is not reversed with it.
        assert.notEqual(
          await page.locator("h1").evaluate(element => getComputedStyle(element).unicodeBidi),
          "normal",
        );
        const [sender] = await instrument.ids("senders");
        await instrument.patch(`senders/${sender}`, {activation: {mode: "activate_immediate"}});
        await eventually(
          async () => (await page.locator("#log li").first().textContent()).includes(label),
          true,
        );
        const dialog = await openDialog(page, `senders/${sender}`);
        assert.ok((await dialog.textContent()).includes(label));
        assert.equal(await overflows(page), false);
        assert.equal(
          await dialog.evaluate(element => element.scrollWidth > element.clientWidth),
          false,
        );
        await nothingRan(page, dialogs);
        await closePanel(page);
      } finally {
        await instrument.end();
      }
    });
  }
}

test("an SDP file with markup", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialogs = [];
  page.on("dialog", dialog => dialogs.push(dialog.message()));
  const [receiver] = await it.instrument.ids("receivers");
  const dialog = await openDialog(page, `receivers/${receiver}`, "SDP file");
  await field(dialog, "SDP file").fill(
    twoLegs({name: "<img src=x onerror=alert(1)>", rate: SCRIPT}),
  );
  await dialog.locator('#sdp-verdict[data-verdict="refused"]').waitFor();
  assert.ok(
    (await dialog.locator('#sdp-lines li[data-line="3"]').textContent()).includes(
      "s=<img src=x onerror=alert(1)>",
    ),
  );
  assert.ok((await dialog.locator('#sdp-lines li[data-line="10"]').textContent()).includes(SCRIPT));
  await nothingRan(page, dialogs);
  await closePanel(page);
});

test("an SDP file with lines without an end stays in the dialog", async () => {
  const page = await openPanel(it.browser, it.instrument, {width: 360});
  const [receiver] = await it.instrument.ids("receivers");
  const dialog = await openDialog(page, `receivers/${receiver}`, "SDP file");
  await field(dialog, "SDP file").fill(twoLegs({name: "W".repeat(2000)}));
  await dialog.locator("#sdp-verdict[data-verdict]").waitFor();
  assert.equal(await overflows(page), false);
  assert.equal(await dialog.evaluate(element => element.scrollWidth > element.clientWidth), false);
  await closePanel(page);
});

test("a refusal that quotes markup is shown as text in the log", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const dialogs = [];
  page.on("dialog", dialog => dialogs.push(dialog.message()));
  const [receiver] = await it.instrument.ids("receivers");
  const answer = await it.instrument.request("PATCH", `${SINGLE}/receivers/${receiver}/staged`, {
    sender_id: IMAGE,
  });
  assert.equal(answer.status, 400);
  const line = page.locator('#log li[data-kind="refusal"]').first();
  await eventually(async () => (await line.textContent()).includes(IMAGE), true);
  await nothingRan(page, dialogs);
  await entryOf(page, `receivers/${receiver}`).waitFor();
  await closePanel(page);
});

for (const mode of ["activate_scheduled_absolute", "activate_scheduled_relative"]) {
  test(`${mode} as late as can be: the page goes on`, async () => {
    const page = await openPanel(it.browser, it.instrument);
    const [first, second] = await it.instrument.ids("receivers");
    // TAI has 48 bits of seconds; a Date ends in the year 275760.
    const requested_time = mode === "activate_scheduled_absolute" ? "281474976710655:0" : "281473000000000:0";
    await it.instrument.patch(`receivers/${first}`, {activation: {mode, requested_time}});
    try {
      await eventually(() => page.locator("#scheduled li .countdown").count(), 1);
      assert.match(await page.locator("#scheduled li .countdown").textContent(), /^in \d{10} d \d\d:\d\d:\d\d$/);
      assert.ok((await page.locator("#scheduled li").textContent()).includes("+275760-09-1"));
      await openDialog(page, `receivers/${first}`);
      await page.keyboard.press("Escape");
      await it.instrument.patch(`receivers/${second}`, {activation: {mode: "activate_immediate"},
                                                        transport_params: [{destination_port: 4321}, {}]});
      const leg = entryOf(page, `receivers/${second}`).locator('.leg[data-leg="1"]');
      await eventually(async () => (await leg.textContent()).endsWith(":4321"), true);
    } finally {
      await it.instrument.patch(`receivers/${first}`, {activation: {mode: null}});
    }
    await closePanel(page);
  });
}

test("a request can be pasted into a terminal, whatever the SDP file has in it", async () => {
  const page = await openPanel(it.browser, it.instrument);
  const [receiver] = await it.instrument.ids("receivers");
  await page.getByLabel("Show requests").check();
  const line = page.getByRole("region", {name: "Requests", exact: true}).locator("li code").last();
  // The end of what a terminal takes for pasted, an interrupt, a line; as two bytes of UTF-8 another.
  for (const file of ["v=0\r\ns=\u001B[201~\u0003\ntouch 'x' \\101 %s %d \u00E9\u007F\r\n", "-v x\t\n", "@/etc/passwd",
                      "a  b"]) {
    const dialog = await openDialog(page, `receivers/${receiver}`, "SDP file");
    await dialog.locator("input[type=file]").setInputFiles(
      {name: "a.sdp", mimeType: "application/sdp", buffer: Buffer.from(file)});
    await dialog.locator('#sdp-verdict[data-verdict="refused"]').waitFor();
    await page.keyboard.press("Escape"); // nothing outside it can be selected
    await dialog.waitFor({state: "hidden"});
    // As it is copied: what is selected, not what is in the document.
    const text = await line.evaluate(element => {
      getSelection().selectAllChildren(element);
      return getSelection().toString();
    });
    assert.doesNotMatch(text, /[^\P{Cc}\n]/u);
    const sent = 'curl() { [ "$5" = --data-raw ] && printf %s "$6" || cat; }\n' + text;
    assert.equal(execFileSync("sh", ["-c", sent], {encoding: "utf8"}), file, text);
    const checked = execFileSync("sh", ["-c", text], {encoding: "utf8", stdio: ["ignore", "pipe", "ignore"]});
    assert.equal(checked, (await it.instrument.request("POST", `/check-sdp/${receiver}`, file)).text);
  }
  await closePanel(page);
});

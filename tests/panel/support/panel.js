// SPDX-License-Identifier: Apache-2.0
"use strict";
// The page in a browser: how it is opened, and where on it things are.

const assert = require("node:assert/strict");
const {after, afterEach, before} = require("node:test");
const {chromium} = require("playwright-core");
const {Instrument} = require("./instrument");

const WAIT = 20000; // ms; much more than anything takes, for machines that are busy

// The browser and the instrument that the tests of a file share.
function shared(options) {
  const both = {};
  before(async () => {
    both.instrument = await Instrument.start(options);
    both.browser = await launch();
  });
  // A page that a test has left when it failed would go on asking.
  afterEach(() => Promise.all(both.browser.contexts().map(context => context.close())));
  after(async () => {
    await both.browser?.close();
    await both.instrument?.end();
  });
  return both;
}

// Has a profile of its own, and no business of its own with other machines.
function launch() {
  return chromium.launch({
    executablePath: process.env.NMOS_CHROMIUM || "/usr/bin/chromium",
    headless: true,
    args: [
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
      ...(process.getuid() === 0 ? ["--no-sandbox"] : []),
    ],
  });
}

// A page that shows the instrument, in a context of its own. `watched` has what must not happen:
// messages of errors, and the URLs of requests to others.
async function openPanel(browser, instrument, {width = 1280, height = 900, ...options} = {}) {
  const context = await browser.newContext({viewport: {width, height}, ...options});
  context.setDefaultTimeout(WAIT);
  const page = await context.newPage();
  page.watched = {errors: [], elsewhere: []};
  page.on("pageerror", error => page.watched.errors.push(`${error}`));
  page.on("console", message => {
    if (["error", "warning"].includes(message.type()))
      page.watched.errors.push(`${message.text()} (${message.location().url})`);
  });
  page.on("request", request => {
    if (!request.url().startsWith(`${instrument.url}/`) && !/^(data|blob):/.test(request.url()))
      page.watched.elsewhere.push(request.url());
  });
  await page.goto(`${instrument.url}/`);
  await isLive(page);
  return page;
}

async function closePanel(page) {
  assert.deepEqual(page.watched, {errors: [], elsewhere: []});
  await page.context().close();
}

function isLive(page) {
  return page.locator('#connection[data-state="live"]').waitFor();
}

// `resource` like "receivers/<id>".
function entryOf(page, resource) {
  const [side, id] = resource.split("/");
  return page.locator(`li[data-side="${side}"][data-id="${id}"]`);
}

function dialogOf(page) {
  return page.locator("dialog#connection-dialog");
}

// Its dialog, with the tab "Parameters" or "SDP file".
async function openDialog(page, resource, tab = "Parameters") {
  await entryOf(page, resource).locator("button.open").click();
  const dialog = dialogOf(page);
  await dialog.waitFor();
  await dialog.getByRole("tab", {name: tab}).click();
  return dialog;
}

// An input of any kind, by what a screen reader calls it.
function field(dialog, label) {
  return ["textbox", "checkbox", "combobox", "spinbutton"]
    .map(role => dialog.getByRole(role, {name: label, exact: true}))
    .reduce((either, other) => either.or(other));
}

function button(parent, name) {
  return parent.getByRole("button", {name, exact: true});
}

// The same until it is so, or until it has not become so in all that time.
async function eventually(read, expected, what = "") {
  const end = Date.now() + WAIT;
  for (;;) {
    const value = await read();
    try {
      assert.deepEqual(value, expected, what);
      return value;
    } catch (error) {
      if (Date.now() > end) throw error;
    }
    await new Promise(resolve => setTimeout(resolve, 50));
  }
}

module.exports = {
  WAIT,
  shared,
  launch,
  openPanel,
  closePanel,
  isLive,
  entryOf,
  dialogOf,
  openDialog,
  field,
  button,
  eventually,
};

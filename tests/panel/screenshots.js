// SPDX-License-Identifier: Apache-2.0
"use strict";
// Makes the pictures of scripts/screenshots.
// Usage: screenshots.js DIRECTORY

const path = require("node:path");
const {Instrument, SINGLE} = require("./support/instrument");
const {closePanel, field, launch, openDialog, openPanel} = require("./support/panel");
const {twoLegs} = require("./support/sdp_files");

const directory = process.argv[2];
const NOW = {mode: "activate_immediate"};

// Two receivers that get something, one that will, one that is prepared, one that was refused.
async function work(instrument) {
  const senders = await instrument.ids("senders");
  const receivers = await instrument.ids("receivers");
  const fileOf = async sender => ({type: "application/sdp", data: await instrument.sdp(sender)});
  for (const sender of [senders[0], senders[4]])
    await instrument.patch(`senders/${sender}`, {master_enable: true, activation: NOW});
  for (const [position, sender] of [
    [0, senders[0]],
    [4, senders[4]],
  ])
    await instrument.patch(`receivers/${receivers[position]}`, {
      master_enable: true,
      sender_id: sender,
      activation: NOW,
      transport_file: await fileOf(sender),
    });
  await instrument.patch(`receivers/${receivers[1]}`, {
    master_enable: true,
    transport_file: {type: "application/sdp", data: twoLegs()},
    activation: {mode: "activate_scheduled_relative", requested_time: "754:0"},
  });
  await instrument.patch(`receivers/${receivers[2]}`, {
    master_enable: true,
    transport_file: {type: "application/sdp", data: twoLegs({first: "233.252.0.111"})},
  });
  await instrument.request("PATCH", `${SINGLE}/receivers/${receivers[5]}/staged`, {
    transport_params: [{destination_port: 70000}, {}],
  });
  return receivers;
}

// What the page says of a file that is refused.
async function refusal(page, receiver) {
  const dialog = await openDialog(page, `receivers/${receiver}`, "SDP file");
  await field(dialog, "SDP file").fill(twoLegs({rate: 24}));
  await dialog.locator('#sdp-verdict[data-verdict="refused"]').waitFor();
  await dialog.screenshot({path: path.join(directory, "panel-refused-dark.png")});
}

async function main() {
  const instrument = await Instrument.start();
  const browser = await launch();
  try {
    const receivers = await work(instrument);
    for (const colorScheme of ["light", "dark"]) {
      for (const width of [1440, 390]) {
        const page = await openPanel(browser, instrument, {
          width,
          height: 900,
          colorScheme,
          reducedMotion: "reduce",
        });
        await page.locator("#log li").first().waitFor();
        await page.screenshot({
          path: path.join(directory, `panel-${colorScheme}-${width}.png`),
          fullPage: width === 1440,
        });
        if (colorScheme === "dark" && width === 1440) await refusal(page, receivers[3]);
        await closePanel(page);
      }
    }
  } finally {
    await browser.close();
    await instrument.end();
  }
}

main().catch(error => {
  console.error(error);
  process.exitCode = 1;
});

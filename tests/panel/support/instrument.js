// SPDX-License-Identifier: Apache-2.0
"use strict";
// A running virtual instrument, and HTTP requests to it.

const {spawn} = require("node:child_process");
const {once} = require("node:events");
const fs = require("node:fs");
const http = require("node:http");
const os = require("node:os");
const path = require("node:path");
const readline = require("node:readline");

const PROGRAM = process.env.NMOS_INSTRUMENT || "nmos-instrument";
const FIRST_PORT = 29000; // the tests of serve use those below
const NODE = "/x-nmos/node/v1.2";
const SINGLE = "/x-nmos/connection/v1.0/single";

class Instrument {
  // `configuration`: an object with what differs from the default one. `registry`: its URL; whoever runs
  // the tests may have one in the network, which must not hear of them.
  static async start({options = [], configuration = {}, registry = null} = {}) {
    const instrument = new Instrument();
    instrument.folder = fs.mkdtempSync(path.join(os.tmpdir(), "panel-test-"));
    instrument.logFile = path.join(instrument.folder, "log");
    instrument.arguments = [
      ...(registry === null ? ["--no-registration"] : ["--registry", registry]),
      ...options,
      "--config",
      path.join(instrument.folder, "configuration.json"),
    ];
    fs.writeFileSync(instrument.arguments.at(-1), JSON.stringify(configuration));
    await instrument.run(["--first-free-port", "--port", FIRST_PORT]);
    return instrument;
  }

  async run(where) {
    const log = fs.openSync(this.logFile, "a");
    this.process = spawn(PROGRAM, ["serve", ...where, ...this.arguments], {
      stdio: ["ignore", "pipe", log],
    });
    fs.closeSync(log);
    this.ended = once(this.process, "exit");
    const lines = readline.createInterface({input: this.process.stdout});
    const [line] = await Promise.race([once(lines, "line"), this.ended.then(() => [null])]);
    if (line === null)
      throw new Error(`it did not start: ${fs.readFileSync(this.logFile, "utf8")}`);
    this.url = line.replace(/\/$/, "");
    this.port = Number(new URL(this.url).port);
  }

  // After stop(): as it was started, at the same port.
  runAgain() {
    return this.run(["--port", this.port]);
  }

  async stop() {
    this.process.kill("SIGTERM");
    const [status] = await this.ended;
    return status;
  }

  async end() {
    const status = this.process.exitCode ?? (await this.stop());
    fs.rmSync(this.folder, {recursive: true});
    if (status !== 0) throw new Error(`the program ended with status ${status}`);
  }

  // `body` as it is when it is text, else as JSON. Without `agent` the connection is used once: the
  // program may have been started again meanwhile.
  request(method, path, body, agent = false) {
    const text = body === undefined || typeof body === "string" ? body : JSON.stringify(body);
    const headers =
      text === undefined
        ? {}
        : {
            "Content-Type": "application/json",
            "Content-Length": Buffer.byteLength(text),
          };
    return new Promise((resolve, reject) => {
      const request = http.request(this.url + path, {method, headers, agent}, async answer => {
        try {
          const pieces = await answer.toArray();
          resolve({
            status: answer.statusCode,
            headers: answer.headers,
            text: Buffer.concat(pieces).toString(),
          });
        } catch (error) {
          reject(error);
        }
      });
      request.on("error", reject);
      request.end(text);
    });
  }

  async json(path) {
    const answer = await this.request("GET", path);
    if (answer.status !== 200) throw new Error(`GET ${path}: ${answer.status} ${answer.text}`);
    return JSON.parse(answer.text);
  }

  // `resource` like "receivers/<id>".
  async patch(resource, body) {
    const answer = await this.request("PATCH", `${SINGLE}/${resource}/staged`, body);
    if (answer.status >= 300) throw new Error(`PATCH ${resource}: ${answer.status} ${answer.text}`);
    return JSON.parse(answer.text);
  }

  staged(resource) {
    return this.json(`${SINGLE}/${resource}/staged`);
  }

  active(resource) {
    return this.json(`${SINGLE}/${resource}/active`);
  }

  node(resource) {
    return this.json(`${NODE}/${resource}`);
  }

  // Of all that are shown, in the order of the records.
  async ids(side) {
    return (await this.node(side)).map(entry => entry.id);
  }

  async sdp(sender) {
    return (await this.request("GET", `${SINGLE}/senders/${sender}/transportfile`)).text;
  }
}

module.exports = {Instrument, NODE, SINGLE};

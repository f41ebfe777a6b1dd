// SPDX-License-Identifier: Apache-2.0
//
// The page's requests to the instrument, each of which can be shown as a line for a shell.

import {make, setAttribute} from "./dom.js";
import {texts} from "./texts.js";

const most = 50; // that are shown
const list = make("ol");

/// In single quotes everything stands for itself but the quote.
const quoted = text => `'${text.replaceAll("'", "'\\''")}'`;

// They could work the terminal of who pastes a line.
const control = /[\0-\t\v-\x1f\x7f]/g;
const octal = sign => `\\${sign.charCodeAt().toString(8).padStart(3, 0)}`; // for printf

function curlLine(method, path, type, body) {
  const url = quoted(location.origin + path);
  if (method === "GET")
    return `curl ${url}`;
  const curl = `curl -X ${method} -H ${quoted(`Content-Type: ${type}`)}`;
  if (body.search(control) < 0)
    return `${curl} --data-raw ${quoted(body)} ${url}`;
  const format = body.replace(/[\\%]/g, "$&$&").replace(control, octal);
  return `printf -- ${quoted(format)} | ${curl} --data-binary @- ${url}`;
}

function note(line) {
  list.append(make("li", make("code", line)));
  if (list.children.length > most)
    list.firstElementChild.remove();
}

/// {ok, status, body}: the body as JSON, or as text if it is none. An instrument that does not answer
/// has the status 0.
export async function request(method, path, body, type = "application/json") {
  const text = typeof body === "object" ? JSON.stringify(body) : body;
  note(curlLine(method, path, type, text));
  try {
    const headers = text === undefined ? {} : {"Content-Type": type};
    const answer = await fetch(path, {method, body: text, headers});
    const isJson = answer.headers.get("Content-Type") === "application/json";
    return {ok: answer.ok, status: answer.status, body: await (isJson ? answer.json() : answer.text())};
  } catch {
    return {ok: false, status: 0, body: {error: texts.noAnswer, debug: null}};
  }
}

export function showRequestsIn(footer) {
  const region = make("section", {"aria-label": texts.requests, hidden: true, tabindex: 0}, list);
  const toggle = make("input", {type: "checkbox", onchange: () => setAttribute(region, "hidden", !toggle.checked)});
  footer.append(make("label", toggle, texts.showRequests), region);
  note(`curl -N ${quoted(`${location.origin}/events`)}`);
}

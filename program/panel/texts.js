// SPDX-License-Identifier: Apache-2.0
//
// All that the page says in English. Labels, findings and errors are the instrument's.

const essences = {video: "Video", audio: "Audio", ancillary: "Ancillary"};

const counted = (count, word) => `${count} ${word}${count === 1 ? "" : "s"}`;

/// "1:02:03", "2:03" or "3.4 s"
function span(ms) {
  if (ms < 60_000)
    return `${Math.max(0, ms / 1000).toFixed(1)} s`;
  const seconds = Math.ceil(ms / 1000);
  const clock = new Date(seconds % 86_400 * 1000).toISOString().slice(11, 19);
  return seconds < 86_400 ? clock.replace(/^0(0:0?)?/, "") : `${Math.floor(seconds / 86_400)} d ${clock}`;
}

export const texts = {
  instrument: "Instrument",
  page: "This page",
  connection: {live: "Live", lost: "Connection lost", waiting: "Connecting"},
  registration: "Registration",
  noRegistration: "switched off",
  since: time => `since ${time}`,
  reference: "Clock",
  ptp: isLocked => isLocked ? "PTP, locked" : "PTP, not locked",
  internalClock: "internal",
  node: "Node",
  device: "Device",
  interfaces: "Media",
  taiLong: "International Atomic Time",
  local: time => `${time} local`,
  tai: text => `TAI ${text}`,

  stream: number => `Stream ${number}`,
  receivers: "Receives",
  senders: "Sends",
  staged: "Staged",
  active: "Active",
  kind: ({essence, group}) => essences[essence] + (group ? ` ${group}` : ""),
  essence: entry => `${texts.kind(entry)}, stream ${entry.stream}`,
  hidden: reason => `hidden: ${reason}`,
  leg: number => `Leg ${number}`,
  onOff: isOn => isOn ? "on" : "off",
  none: "none",
  stagedToBe: (now, then) => `${now}, staged ${then}`,
  withPeer: {receivers: (word, peer) => `${word}, from ${peer}`, senders: (word, peer) => `${word}, to ${peer}`},
  activatesIn: ms => `activates in ${span(ms)}`,
  inTime: ms => `in ${span(ms)}`,

  scheduledActivations: "Scheduled activations",
  nothingScheduled: "Nothing is scheduled.",
  activationsAndRefusals: "Activations and refusals",
  nothingHappened: "Nothing yet.",
  happened: {activation: "activated", failure: "failed", refusal: "refused"},
  details: {
    activation: one => `${one.mode}, ${(one.late_us / 1000).toFixed(1)} ms late`,
    failure: one => one.mode,
    refusal: one => `${one.status} ${one.error}, asked by ${one.client}`,
  },
  cancelActivation: "Cancel activation",
  cancelOf: label => `Cancel activation of ${label}`,

  close: "Close",
  parts: "Parts",
  tabs: {parameters: "Parameters", file: "SDP file"},
  parameter: "Parameter",
  parameters: {
    master_enable: "Master enable",
    receiver_id: "Receiver",
    sender_id: "Sender",
    rtp_enabled: "enabled",
    destination_ip: "address",
    multicast_ip: "address",
    destination_port: "port",
    source_ip: "source",
    interface_ip: "interface",
  },

  sender: "Sender",
  noSender: "none: a file of others",
  chooseFile: "Choose file",
  sdpFile: "SDP file",
  pasteHere: "Paste or drop an SDP file. It is only checked, until you stage or activate it.",
  enableReceiver: "Enable the receiver",
  taken: warnings => `The receiver takes this file${warnings ? `, with ${counted(warnings, "warning")}` : ""}.`,
  refused: (errors, more) => `The receiver refuses this file: ${counted(errors, "error")}`
    + `${more ? `, and ${counted(more, "further finding")}` : ""}.`,
  severity: {error: "Refused:", warning: "Warning:"},
  finding: (text, allowed) => allowed ? `${text}; allowed: ${allowed}` : text,
  joins: leg => leg ? `joins ${leg.address}, port ${leg.port}, from ${leg.source ?? "any source"},`
    + ` at ${leg.interface.name} (${leg.interface.address})` : "is switched off",
  copy: "Copy",
  copied: "Copied.",
  notCopied: "The browser refused.",
  download: "Download",

  when: "When",
  whenWords: {now: "now", in: "in seconds", at: "at"},
  seconds: "Seconds",
  time: "Time",
  stage: "Stage",
  activate: "Activate",
  nothingEdited: "Nothing has been edited.",
  canceled: "The activation was cancelled.",
  sent(mode, time) {
    if (mode === undefined)
      return "Staged.";
    return mode === "activate_immediate" ? "Activated." : `Scheduled for TAI ${time}.`;
  },
  refusal: ({status, body: {error, debug}}) =>
    `Refused${status ? ` (${status})` : ""}: ${error}.${debug ? `\n${debug}` : ""}`,
  noAnswer: "The instrument does not answer",

  requests: "Requests",
  showRequests: "Show requests",

  sdp: {
    version: () => "The version of SDP.",
    origin: (version, address) => `Written by ${address}. ${version} rises with every change.`,
    session: name => `The session is called ${name}.`,
    permanent: () => "It lasts for ever.",
    group: (first, second) => `Both paths carry the same packets (SMPTE ST 2022-7): ${first} and ${second}.`,
    medium: (kind, port, type) => Number(port) === 0 ? `A path for ${kind}, switched off.`
      : `A path for ${kind}: UDP port ${port}, RTP payload type ${type}.`,
    multicast: (group, ttl) => `The multicast group ${group}, at most ${ttl} hops away.`,
    unicast: address => `Sent to ${address} alone.`,
    encoding: (type, name, rate, channels) =>
      `Payload type ${type} is ${name}, with a clock of ${rate} Hz${channels ? ` and ${channels} channels` : ""}.`,
    format: parameters => `The format: ${parameters.replaceAll("; ", ", ")}.`,
    filter: (group, source) => `Only what ${source} sends to ${group}.`,
    ptp: (version, id, domain) => `Timed by PTP (${version}): grandmaster ${id}, domain ${domain}.`,
    localMac: mac => `Timed by the device's own clock, at ${mac}.`,
    mediaClock: offset => `RTP time counts from the epoch of that clock, plus ${offset}.`,
    packetTime: ms => `A packet has ${ms} ms of sound.`,
    mid: name => `In the group, this path is ${name}.`,
  },
};

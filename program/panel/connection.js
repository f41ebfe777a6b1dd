// SPDX-License-Identifier: Apache-2.0
//
// The two halves of a connection beside each other. A side is "senders" or "receivers", as in a path.

export const legs = [0, 1];

export const otherSide = {senders: "receivers", receivers: "senders"};

/// The parameters of a leg, in the order in which they are shown.
export const parametersOf = {
  senders: ["rtp_enabled", "destination_ip", "destination_port", "source_ip"],
  receivers: ["rtp_enabled", "multicast_ip", "destination_port", "source_ip", "interface_ip"],
};

export const peerOf = {senders: "receiver_id", receivers: "sender_id"};

/// "auto" is resolved by the activation, so it differs from nothing.
export function differs(staged, active) {
  return staged !== "auto" && staged !== active;
}

export function legDiffers(side, staged, active, leg) {
  return parametersOf[side].some(name => differs(staged.transport_params[leg][name],
      active.transport_params[leg][name]));
}

export function differsAnywhere(side, staged, active) {
  return ["master_enable", peerOf[side]].some(name => differs(staged[name], active[name]))
    || legs.some(leg => legDiffers(side, staged, active, leg));
}

/// "233.252.0.11:5004"; null if the leg is off. A receiver without a group has its own address.
export function legAddress(side, half, leg) {
  const parameters = half.transport_params[leg];
  const address = side === "senders" ? parameters.destination_ip
    : parameters.multicast_ip ?? parameters.interface_ip;
  return parameters.rtp_enabled ? `${address}:${parameters.destination_port}` : null;
}

/// When a scheduled activation is due, as TAI text; null if there is none.
export function dueOf({activation}) {
  return activation.mode?.startsWith("activate_scheduled") ? activation.activation_time : null;
}

# SPDX-License-Identifier: Apache-2.0
"""Somebody on the network who sends any mDNS message: each line of standard input is one, in
hexadecimal. It is sent from the address that is the first argument.
"""

import socket
import sys
import time

GROUP = ("224.0.0.251", 5353)


def name(*labels):
    """Labels are bytes."""
    return b"".join(bytes([len(label)]) + label for label in labels) + b"\0"


def record(owner, kind, data, ttl=120):
    return owner + b"".join((kind.to_bytes(2, "big"), (1).to_bytes(2, "big"),
                             ttl.to_bytes(4, "big"), len(data).to_bytes(2, "big"), data))


def response(*records):
    return bytes.fromhex("00008400 0000") + len(records).to_bytes(2, "big") + bytes(4) \
        + b"".join(records)


SERVICE = (b"_nmos-registration", b"_tcp", b"local")


def registry(instance, txt, host=(b"stranger", b"local"), port=8080, address=(192, 0, 2, 20)):
    """All that a resolver asks for. `txt`: the bytes of the strings of the TXT record."""
    full = name(instance, *SERVICE)
    srv = bytes(4) + port.to_bytes(2, "big") + name(*host)
    strings = b"".join(bytes([len(string)]) + string for string in txt)
    return response(record(name(*SERVICE), 12, full), record(full, 33, srv),
                    record(full, 16, strings or b"\0"), record(name(*host), 1, bytes(address)))


def withdrawn(instance):
    """RFC 6762 10.1"""
    return response(record(name(*SERVICE), 12, name(instance, *SERVICE), ttl=0))


def main():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        sender.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_TTL, 255)
        sender.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(sys.argv[1]))
        sender.bind(("", GROUP[1]))
        for line in sys.stdin:
            sender.sendto(bytes.fromhex(line), GROUP)
            time.sleep(0.002)  # or the receiver loses some


if __name__ == "__main__":
    main()
